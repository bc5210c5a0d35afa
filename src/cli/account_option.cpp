#include "cli/account_option.h"

#include "security/account_lookup.h"

namespace permora {

AccountOption::AccountOption(Command& command)
    : AccountOption(command, "--account", R"(The account: a name, DOMAIN\name or a SID like S-1-1-0)",
                    Presence::kRequired) {}

AccountOption::AccountOption(Command& command, const char* optionName, const char* description,
                             Presence presence)
    : TextOption(command, optionName, "NAME", description, presence), name(optionName) {}

std::string AccountOption::Interpret(const std::string& text) {
    return text.empty() ? std::string(name) + ": the name is empty" : FindTypedAccount(text, account);
}

}  // namespace permora
