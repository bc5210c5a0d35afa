// --map and --map-file: accounts that take the place of others.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/command.h"
#include "platform/nt/account_exchange.h"
#include "saved/account_pairs.h"
#include "saved/saved_list.h"

namespace permora {

class MapOptions {
  public:
    // The command is borrowed.
    explicit MapOptions(Command& owner);

    // Finds all accounts. Returns what is wrong, or an empty text. One that is given by its SID need not be
    // known here, since it may be another machine's. Server() of the command is asked for the others.
    std::string Interpret();
    nt::AccountExchange& Exchange() { return exchange; }
    // The accounts in this object, before anything is exchanged.
    void LookFor(const SavedObject& object);
    // One more pair, which was given by another option. False when OLD has got another account before.
    bool Add(const nt::Sid& old, const nt::Sid& other, AccountPair typed);
    // Prints what the user should know: accounts that come and go,
    void TellChains(ConsoleMessages& messages) const;
    // and those that are nowhere in `place`, as far as that was looked through.
    void TellUnused(const std::string& place, ConsoleMessages& messages) const;

  private:
    struct Mapped {
        nt::Sid old;
        nt::Sid other;
        AccountPair typed;
    };
    std::string ReadPairs(std::vector<AccountPair>& pairs) const;
    std::string PlaceOf(const AccountPair& pair) const;

    const Command& command;
    std::vector<std::string> typedPairs;
    std::optional<std::string> tableFile;
    std::vector<Mapped> mapped;
    nt::AccountExchange exchange;
    std::shared_ptr<const SavedDescriptor> lookedThrough;  // most objects have that of the one before
};

}  // namespace permora
