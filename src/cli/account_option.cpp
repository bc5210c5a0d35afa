#include "cli/account_option.h"

#include <CLI/CLI.hpp>
#include <utility>

#include "cli/argument_shield.h"
#include "security/account_lookup.h"

namespace permora {

namespace {

constexpr const char* kAccountHelp = R"(The account: a name, DOMAIN\name or a SID like S-1-1-0)";

}  // namespace

AccountOption::AccountOption(Command& owner)
    : AccountOption(owner, "--account", kAccountHelp, Presence::kRequired) {}

AccountOption::AccountOption(Command& owner, const char* optionName, const char* description,
                             Presence presence)
    : TextOption(owner, optionName, "NAME", description, presence), command(owner), name(optionName) {
    Describe({.kind = ValueKind::kAccount});
}

std::string AccountOption::Interpret(const std::string& text) {
    return text.empty() ? std::string(name) + ": the name is empty"
                        : FindTypedAccount(text, account, command.Server());
}

AccountsOption::AccountsOption(Command& owner) : command(owner) {
    CLI::Option& option =
        *owner.Parser()
             .add_option("--account", typed, std::string(kAccountHelp) + ";\nmay be given several times")
             ->type_name("NAME")
             ->required()
             ->allow_extra_args(false);
    DescribeValue(option, {.kind = ValueKind::kAccount});
}

std::string AccountsOption::Interpret() {
    for (const std::string& shielded : typed) {
        const std::string text = Unshielded(shielded);
        AccountRecord account;
        std::string problem =
            text.empty() ? "--account: the name is empty" : FindTypedAccount(text, account, command.Server());
        if (!problem.empty()) return problem;
        accounts.push_back(std::move(account));
    }
    return {};
}

}  // namespace permora
