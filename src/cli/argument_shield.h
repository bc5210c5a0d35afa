// Keeps the parser from reading a name as something of its own.
//
// A path such as "[x]" would be taken for a list of values, with its brackets stripped: another object. "++"
// would be taken for the end of a command and left out. So every argument that begins like the one or is the
// other goes through the parser behind a character that no argument needs.
#pragma once

#include <string>
#include <string_view>

namespace permora {

// The argument as the parser gets it. What stands behind "--" is no option.
enum class ArgumentPlace { kAmongOptions, kBehindDashes };
std::string Shielded(std::string argument, ArgumentPlace place);
// A value as it was typed.
std::string Unshielded(const std::string& value);
// What the parser says, in which arguments stand as it got them, with the arguments as they were typed.
std::string WithoutShields(std::string_view text);

}  // namespace permora
