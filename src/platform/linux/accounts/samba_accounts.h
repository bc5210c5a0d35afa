// The users and groups in Samba's databases.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/api/errors.h"
#include "platform/linux/accounts/account_names.h"
#include "platform/linux/accounts/samba_output.h"
#include "platform/linux/accounts/sid_hash.h"

namespace permora::host {

// Relative ids of two accounts that Samba has without listing them.
inline constexpr std::uint32_t kGuestId = 501;
inline constexpr std::uint32_t kNoneId = 513;  // the group of all users of a machine without a domain

class SambaAccounts {
  public:
    // Of several accounts with the same id or SID the first one is found. `whyUnknown` is the error by which
    // a list without accounts came to be so.
    explicit SambaAccounts(std::vector<SambaAccount> accounts, DWORD whyUnknown = ERROR_SUCCESS);

    // Why they are not known; then there are none here.
    DWORD Error() const { return error; }
    // ERROR_NONE_MAPPED where it is known that there is no further account, else Error().
    DWORD NotFound() const { return error == ERROR_SUCCESS ? ERROR_NONE_MAPPED : error; }
    const std::vector<SambaAccount>& All() const { return accounts; }
    // Null when there is none; else valid as long as this object.
    const SambaAccount* Find(id_t id) const;
    const SambaAccount* Find(const nt::Sid& sid) const;
    const SambaAccount* Find(std::string_view name, LetterCase letterCase) const;

  private:
    std::vector<SambaAccount> accounts;
    DWORD error;
    std::unordered_map<id_t, std::size_t> byId;
    std::unordered_map<nt::Sid, std::size_t, SidHash> bySid;
};

// All users or groups that Samba knows. Its tools are run at the first call for each kind and their answer is
// kept for the life of the process, a failure as well. Only for a machine whose accounts come from Samba.
const SambaAccounts& AllSambaAccounts(AccountKind kind);

// A local group of Samba and the SIDs that belong to it, groups among them.
struct SambaAlias {
    nt::Sid sid;
    std::vector<nt::Sid> members;
};

struct SambaAliases {
    DWORD error = ERROR_SUCCESS;   // why not all of them are known
    std::vector<SambaAlias> list;  // those that have members
};

// As above: asked once, and only for a machine whose accounts come from Samba.
const SambaAliases& AllSambaAliases();

}  // namespace permora::host
