// What is known of the accounts that a survey comes across.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "platform/accounts.h"
#include "platform/nt/sid.h"
#include "survey/remark.h"

namespace permora {

enum class AccountStanding : std::uint8_t {
    kKnown,
    kDeleted,  // of this machine, or of a domain that is known and has it no more
    kUnknown,  // of another machine, or of a domain that is not known here
    kBroken,   // no account can have this SID
    kUnasked,  // its domain, or who else knows, has not answered: nothing may be said about it
};

// Nothing for kKnown.
std::optional<Remark> RemarkOf(AccountStanding standing);

// Whether some account can have this SID at all: its authority hands SIDs out, and those of machines and
// domains have as many parts as an account needs.
bool IsPossibleAccount(const nt::Sid& sid);

// Whether it stands for the creators or owners of objects, and for nobody in particular.
bool IsPlaceholder(const nt::Sid& sid);

// Each SID is asked for once. A domain that has kept one question waiting for its whole time is not waited
// for again, so a tree with accounts of a domain that is away costs one wait and not one for each. One thread
// at a time.
class SurveyedAccounts {
  public:
    struct Account {
        AccountStanding standing = AccountStanding::kUnasked;
        AccountName name;  // the domain's name also for a deleted account of one
    };
    // Lives as long as this.
    const Account& Find(const nt::Sid& sid);
    // DOMAIN\name, or the SID's text where no account is known.
    std::string NameOf(const nt::Sid& sid);

  private:
    struct Hash {
        std::size_t operator()(const nt::Sid& sid) const;
    };

    Account Ask(const nt::Sid& sid);
    bool IsOfThisMachine(const nt::Sid& sid);

    std::unordered_map<nt::Sid, Account, Hash> accounts;
    std::chrono::milliseconds wait = kLookupTime;
    std::optional<nt::Sid> machine;  // the SID of an account of this machine
    bool isMachineAsked = false;
};

}  // namespace permora
