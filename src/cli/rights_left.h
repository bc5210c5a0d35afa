// What is told of the rights that a list leaves to an account.
#pragma once

#include <string>

#include "platform/api/security.h"
#include "security/account_record.h"

namespace permora {

// What no answer about rights takes into account.
inline constexpr const char* kNotConsidered =
    "Not considered: permissions of a share through which someone comes, privileges, what an owner may do "
    "anyway";

// Indented lines that say what `account` may do by the list of an object and through which of its entries, or
// that it may do nothing, or why that cannot be told. A null list lets everyone do everything.
std::string RightsLeftText(PACL dacl, AccountRecord& account);

}  // namespace permora
