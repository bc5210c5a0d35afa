// Accounts by SID and by name. Rules: docs/platform.md, "Accounts".
#pragma once

#include <array>
#include <chrono>
#include <string_view>

#include "platform/accounts.h"
#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/linux/accounts/account_source.h"
#include "platform/nt/sid.h"

namespace permora::host {

class MountedServer;

using Account = AccountName;

// The places where accounts come from, in the order in which they are asked: the system, this machine, the
// domain, servers whose shares are mounted.
std::array<AccountSource*, 4> AccountSources();

// ERROR_NONE_MAPPED when no account has the SID, with `use` SidTypeDeletedAccount and the domain where that
// is certain; kNameNotYet and kDomainOffline for accounts of a domain, which is waited for until then;
// another code when the name service failed. What the name service says is believed for a few seconds, so
// that a listing of many objects asks it once an account.
DWORD FindAccountOfSid(const nt::Sid& sid, Account& account, std::chrono::milliseconds wait = kLookupTime);

// The same among the well-known accounts and this machine's alone.
DWORD FindAccountHere(const nt::Sid& sid, Account& account);

// The SID that `text` names: NAME, DOMAIN\NAME, NAME@DNS.DOMAIN or a SID's text form. A bare name is looked
// for among the well-known accounts first, then on this machine and in its domain: kAmbiguousName where both
// have one. What nobody here is called, `server` is asked for.
DWORD FindAccountSid(std::string_view text, nt::Sid& sid, MountedServer* server = nullptr);

// As FindAccountGroups (platform/accounts.h).
DWORD FindGroupsOfAccount(const nt::Sid& account, GroupsRequest request, AccountGroups& groups);

// True for a name of this machine, with or without leading backslashes, in any letter case.
bool IsThisMachine(std::string_view system);
// The same for a server that a service is asked about; none named is this machine too.
bool IsThisServer(LPCWSTR server);

}  // namespace permora::host
