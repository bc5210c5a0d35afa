#include "cli/command.h"

#include <CLI/CLI.hpp>

#include "cli/argument_shield.h"

namespace permora {

Command::Command(const CommandParent& parent, const char* name, const char* description)
    : messages(parent.messages),
      parser(*parent.parser.add_subcommand(name, description)),
      chosen(parent.chosen) {
    // A command's own commands come before it.
    parser.callback([this] {
        if (chosen == nullptr) chosen = this;
    });
}

std::string Command::Interpret() {
    for (TextOption* option : options) {
        const std::optional<std::string> text = option->Text();
        if (!text) continue;
        if (std::string problem = option->Interpret(*text); !problem.empty()) return problem;
    }
    return {};
}

std::string Command::Name() const {
    const CLI::App* const above = parser.get_parent();
    const bool isBelowCommand = above->get_parent() != nullptr;
    return (isBelowCommand ? above->get_name() + ' ' : "") + parser.get_name();
}

Choice::Choice(Command& owner) : OptionPlace(owner, *owner.Parser().add_option_group("choice", "One of:")) {
    parser.require_option(1);
}

Flag::Flag(OptionPlace place, const char* name, const char* description)
    : option(*place.parser.add_flag(name, isSet, description)) {}

void Flag::Needs(const Flag& other) {
    option.needs(&other.option);
}

void Flag::Needs(const TextOption& other) {
    option.needs(&other.option);
}

void Flag::Excludes(const Flag& other) {
    option.excludes(&other.option);
}

TextOption::TextOption(OptionPlace place, const char* name, const char* type, const std::string& description,
                       Presence presence)
    : option(*place.parser.add_option(name, shielded, description)) {
    option.type_name(type);
    option.required(presence == Presence::kRequired);
    place.command.Add(*this);
}

std::optional<std::string> TextOption::Text() const {
    if (!shielded) return std::nullopt;
    return Unshielded(*shielded);
}

}  // namespace permora
