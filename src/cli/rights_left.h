// The output about the rights that a list grants to an account.
#pragma once

#include <string>

#include "cli/known_groups.h"
#include "platform/api/security.h"
#include "platform/held_object.h"
#include "security/account_record.h"

namespace permora {

// The remark about everything that effective rights do not consider.
inline constexpr const char* kNotConsidered =
    "Not considered: permissions of a share through which someone comes, privileges, what an owner may do "
    "anyway";

// Indented lines with the rights of `account` by the list of an object and the entries that grant them, or
// that it has none, or why they are not known. `dacl` is not null; `groups` are those of `account`.
std::string RightsLeftText(const HeldObject& object, PACL dacl, AccountRecord& account, KnownGroups& groups);

}  // namespace permora
