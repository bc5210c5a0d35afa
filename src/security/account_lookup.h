// Look-ups between account names and security identifiers on this machine. Results are system error codes.
#pragma once

#include "platform/api/security.h"
#include "platform/resources.h"

namespace permora {

// The SID of an account given as name, DOMAIN\name or MACHINE\name. `sid` is untouched on failure.
DWORD LookupSidByName(LPCSTR name, UniqueLocal<void>& sid);

// Name, domain and type of an account; `use` may be null. On failure `name` and `domain` are null and `use`
// is untouched.
DWORD LookupNameBySid(PSID sid, UniqueLocal<char>& name, UniqueLocal<char>& domain, PSID_NAME_USE use);

}  // namespace permora
