// The account that a command is about.
#pragma once

#include <string>
#include <vector>

#include "cli/command.h"
#include "security/account_record.h"

namespace permora {

class AccountOption final : public TextOption {
  public:
    // --account, which must be given.
    explicit AccountOption(Command& owner);
    // Another option that names one.
    AccountOption(Command& owner, const char* name, const char* description, Presence presence);

    // Finds the account that was named: by a name, DOMAIN\name or the text of a SID.
    std::string Interpret(const std::string& text) override;

    bool IsGiven() const { return account.sid.has_value(); }
    // Looks up the account's names when they are asked for.
    AccountRecord& Account() { return account; }

  private:
    const Command& command;
    const char* name;
    AccountRecord account;
};

// --account, once or several times; it must be given.
class AccountsOption {
  public:
    explicit AccountsOption(Command& owner);

    // Finds all of them. Returns what is wrong, or an empty text.
    std::string Interpret();
    const std::vector<AccountRecord>& Accounts() const { return accounts; }

  private:
    const Command& command;
    std::vector<std::string> typed;
    std::vector<AccountRecord> accounts;
};

}  // namespace permora
