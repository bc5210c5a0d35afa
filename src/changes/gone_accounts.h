// Accounts in the lists of trees that no longer exist.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string_view>
#include <vector>

#include "platform/held_object.h"
#include "platform/nt/sid.h"
#include "survey/account_standing.h"

namespace permora {

class GoneAccounts {
  public:
    enum class Kinds : std::uint8_t {
        // Of this machine, or of a domain that is known here: it is certain that they are gone.
        kDeleted,
        // Those of machines and domains that are not known here as well, and what can be no account.
        kForeignToo,
    };
    explicit GoneAccounts(Kinds which) : kinds(which) {}

    // Asks about every account that has an entry of its own on the object or below it. What cannot be read is
    // left out. `begin` comes before each object; false ends it with ERROR_OPERATION_ABORTED.
    DWORD LookThrough(const HeldObject& top, const std::function<bool(std::string_view path)>& begin);

    // Those about which nobody could be asked. Nothing may be removed as long as there are any.
    const std::vector<nt::Sid>& Unasked() const { return unasked; }
    // Of the accounts that LookThrough has met, in its order. Service accounts, programs and groups of the
    // system are never gone: another installation of the system knows more of them than this one.
    const std::vector<nt::Sid>& Gone() const { return gone; }
    bool IsGone(const nt::Sid& sid) const;
    // Those that kForeignToo would count among them.
    const std::vector<nt::Sid>& Foreign() const { return foreign; }

  private:
    friend class AccountsInLists;
    struct ByBytes {
        bool operator()(const nt::Sid& one, const nt::Sid& other) const;
    };
    void Ask(const nt::Sid& sid);

    const Kinds kinds;
    SurveyedAccounts accounts;
    std::map<nt::Sid, bool, ByBytes> met;  // whether it is gone
    std::vector<nt::Sid> gone;
    std::vector<nt::Sid> foreign;
    std::vector<nt::Sid> unasked;
};

}  // namespace permora
