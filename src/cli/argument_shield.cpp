#include "cli/argument_shield.h"

namespace permora {
namespace {

constexpr char kShield = '\x01';

// The start of an option's value in the same argument ("--option=value"); 0 in any other argument.
std::size_t ValueStart(const std::string& argument) {
    return argument.starts_with("--") ? argument.find('=') + 1 : 0;
}

}  // namespace

std::string Shielded(std::string argument, ArgumentPlace place) {
    const std::size_t start = place == ArgumentPlace::kBehindDashes ? 0 : ValueStart(argument);
    const bool needsShield = argument == "++" || (start < argument.size() &&
                                                  (argument[start] == '[' || argument[start] == kShield));
    if (needsShield) argument.insert(start, 1, kShield);
    return argument;
}

std::string Unshielded(const std::string& value) {
    return !value.empty() && value.front() == kShield ? value.substr(1) : value;
}

std::string WithoutShields(std::string_view text) {
    std::string typed;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == kShield && i + 1 < text.size()) ++i;
        typed += text[i];
    }
    return typed;
}

}  // namespace permora
