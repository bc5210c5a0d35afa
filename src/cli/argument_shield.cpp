#include "cli/argument_shield.h"

#include <algorithm>

#include "platform/host_path.h"

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

std::string ShieldArguments(std::span<const char* const> arguments, std::vector<std::string>& shielded) {
    ArgumentPlace place = ArgumentPlace::kAmongOptions;
    for (const char* const text : arguments) {
        const std::string argument = text;
        if (place == ArgumentPlace::kAmongOptions && argument.starts_with('-') && IsNameHere(text)) {
            return argument +
                   ": a file here is called so: write ./ before the name for the file; as an option it can "
                   "be "
                   "given in another folder";
        }
        shielded.push_back(Shielded(argument, place));
        if (argument == "--") place = ArgumentPlace::kBehindDashes;
    }
    std::ranges::reverse(shielded);
    return {};
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
