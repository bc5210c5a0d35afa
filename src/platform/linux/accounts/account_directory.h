// Accounts by SID and by name. Rules: docs/platform.md, "Accounts".
#pragma once

#include <string_view>

#include "platform/accounts.h"
#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/nt/sid.h"

namespace permora::host {

using Account = AccountName;

// ERROR_NONE_MAPPED when no account has the SID; another code when the name service failed. What the name
// service says is believed for a few seconds, so that a listing of many objects asks it once an account.
DWORD FindAccountOfSid(const nt::Sid& sid, Account& account);

// The SID that `text` names: NAME, DOMAIN\NAME or a SID's text form.
DWORD FindAccountSid(std::string_view text, nt::Sid& sid);

// True for a name of this machine, with or without leading backslashes, in any letter case.
bool IsThisMachine(std::string_view system);
// The same for a server that a service is asked about; none named is this machine too.
bool IsThisServer(LPCWSTR server);

}  // namespace permora::host
