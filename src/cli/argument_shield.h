// Keeps the parser from giving names a meaning of its own.
//
// The parser would read a path such as "[x]" as a list of values and strip its brackets, which names another
// object. It would read "++" as the end of a command and drop it. So every such argument gets a prefix
// character, which no argument needs, on its way through the parser.
#pragma once

#include <string>
#include <string_view>

namespace permora {

// The argument as the parser gets it. Arguments after "--" are not options.
enum class ArgumentPlace { kAmongOptions, kBehindDashes };
std::string Shielded(std::string argument, ArgumentPlace place);
// A value as it was typed.
std::string Unshielded(const std::string& value);
// A message of the parser, with its arguments as the user typed them.
std::string WithoutShields(std::string_view text);

}  // namespace permora
