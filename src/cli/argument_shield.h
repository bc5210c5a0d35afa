// Keeps the parser from giving names a meaning of its own.
//
// The parser would read a path such as "[x]" as a list of values and strip its brackets, which names another
// object. It would read "++" as the end of a command and drop it. So every such argument gets a prefix
// character, which no argument needs, on its way through the parser.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace permora {

// The argument as the parser gets it. Arguments after "--" are not options.
enum class ArgumentPlace { kAmongOptions, kBehindDashes };
std::string Shielded(std::string argument, ArgumentPlace place);
// The arguments of a program in the parser's order, from the last. Returns what is wrong with them, or an
// empty text: an argument that looks like an option is refused while a file in the current directory is
// called so.
std::string ShieldArguments(std::span<const char* const> arguments, std::vector<std::string>& shielded);
// A value as it was typed.
std::string Unshielded(const std::string& value);
// A message of the parser, with its arguments as the user typed them.
std::string WithoutShields(std::string_view text);

}  // namespace permora
