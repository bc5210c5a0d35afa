// --word: whom the words of a list saved by icacls mean.
#pragma once

#include <string>
#include <vector>

#include "cli/command.h"
#include "platform/nt/sddl_sid.h"

namespace permora {

class WordOption {
  public:
    explicit WordOption(Command& command);

    // Finds all accounts. Returns what is wrong, or an empty text. One that is given by its SID need not be
    // known here.
    std::string Interpret();
    const nt::SddlAccounts& Accounts() const { return accounts; }

  private:
    std::vector<std::string> typed;
    nt::SddlAccounts accounts;
};

}  // namespace permora
