// Patterns for paths below a folder.
#pragma once

#include <string>
#include <string_view>

namespace permora {

// Whether the pattern is for the path, which has backslashes between its names. In the pattern slashes stand
// between names, "*" for any part of a name, "?" for one character of it, and "**" as a whole name for any
// number of names, none too. Everything else, and the case of letters, is as it is. Takes time that grows
// with the product of both lengths, and no memory to speak of.
bool MatchesPattern(std::string_view pattern, std::string_view path);

// Whether there may be a path below the folder that the pattern is for. The same costs.
bool MayMatchBelow(std::string_view pattern, std::string_view folder);

// What is wrong with the pattern, of which a name is none that this system shows, so that nothing can ever
// have it; an empty text: nothing.
std::string PatternProblem(std::string_view pattern);

}  // namespace permora
