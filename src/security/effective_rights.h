// What an access list leaves to one account.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/accounts.h"
#include "security/access_rights.h"
#include "security/account_record.h"

namespace permora {

struct EffectiveRights {
    DWORD rights = 0;
    GroupsOrigin origin = GroupsOrigin::kThisMachine;  // what is known of the account's groups
};

// The rights of the account with its groups, denials taken off. A list that is null has no answer: everyone
// may do everything. 0 or an error code of FindAccountGroups, ERROR_NONE_MAPPED for an account whose groups
// are not known on this machine; `effective` is then untouched.
DWORD FindEffectiveRights(PACL dacl, const AccountRecord& account, GroupsRequest request,
                          EffectiveRights& effective);

// The rights that an allow entry adds to those that earlier entries decide, for the account itself or as a
// member of a group.
struct Grant {
    std::size_t index;  // of the entry in the list
    DWORD rights;       // never 0
};

// The rights of an account with these groups. ERROR_INVALID_ACL for a damaged or null list; `effective` is
// then untouched.
DWORD FindEffectiveRights(PACL dacl, const AccountGroups& groups, EffectiveRights& effective);

// The grants that make up these rights, in the list's order. ERROR_INVALID_ACL as above; `grants` is then
// untouched.
DWORD FindGrants(PACL dacl, const AccountGroups& groups, std::vector<Grant>& grants);

// Why the rights of the account are not known: "the groups of HOST\\anna are not known here". Half a
// sentence; empty for errors that are not about its groups.
std::string UnknownGroupsText(DWORD error, GroupsRequest request, AccountRecord& account);
// The same, or the system's text.
std::string NoRightsText(DWORD error, GroupsRequest request, AccountRecord& account);

// On what the account's groups rest, and that it is a group itself, in half sentences. Looks up the account's
// names.
std::vector<std::string> RemarksOnAccount(GroupsOrigin origin, AccountRecord& account);
// Remarks to show with these rights, in half sentences. Looks up the account's names.
std::vector<std::string> RemarksOnRights(PACL dacl, AccountRecord& account, const EffectiveRights& effective);

// Half a sentence as a whole one. Not for an empty text.
std::string AsSentence(std::string remark);

// Whether the row of a right is to be marked. "Full control" needs every bit of RIGHTS_DISPLAY_MASK, which
// is more than the rights of files.
bool IsEffective(const AccessRight& right, DWORD rights);

}  // namespace permora
