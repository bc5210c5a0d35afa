// --word: whom the words of a list saved by icacls mean.
#pragma once

#include <string>
#include <vector>

#include "cli/command.h"
#include "platform/nt/sddl_sid.h"

namespace permora {

class WordOption {
  public:
    // The command is borrowed.
    explicit WordOption(Command& owner);

    // Finds all accounts. Returns what is wrong, or an empty text. One that is given by its SID need not be
    // known here. Server() of the command is asked for the others.
    std::string Interpret();
    const nt::SddlAccounts& Accounts() const { return accounts; }

  private:
    const Command& command;
    std::vector<std::string> typed;
    nt::SddlAccounts accounts;
};

}  // namespace permora
