// What an access list leaves to one account.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "security/access_rights.h"
#include "security/account_record.h"

namespace permora {

// The rights of the account with its groups, denials taken off. A list that is null has no answer: everyone
// may do everything. 0 or a system error code, ERROR_NONE_MAPPED for an account whose groups are not known on
// this machine; `rights` is then untouched.
DWORD FindEffectiveRights(PACL dacl, PSID account, DWORD& rights);

// What an allow entry gives the account, directly or as a member of a group, of what no entry before it
// decides.
struct Grant {
    std::size_t index;  // of the entry in the list
    DWORD rights;       // never 0
};

// The grants that make up the effective rights, in the list's order; none without a list. Errors as above;
// `grants` is then untouched.
DWORD FindGrants(PACL dacl, PSID account, std::vector<Grant>& grants);

// "the groups of HOST\\anna are not known here"
std::string UnknownGroupsText(AccountRecord& account);

// Remarks to show with these rights, in half sentences. Looks up the account's names.
std::vector<std::string> RemarksOnRights(PACL dacl, AccountRecord& account, DWORD rights);

// Whether the row of a right is to be marked. "Full control" needs every bit of RIGHTS_DISPLAY_MASK, which
// is more than the rights of files.
bool IsEffective(const AccessRight& right, DWORD rights);

}  // namespace permora
