// From the name of an account to the account.
#pragma once

#include <string>

#include "platform/accounts.h"
#include "security/account_record.h"

namespace permora {

// Gives `account` the SID of the account of this machine or its domain that is called so: name, DOMAIN\name,
// MACHINE\name or name@domain; the server "\\server" (platform/server_accounts.h), which may be empty, is
// asked for what nobody here is called. A system error code; `account` is untouched on failure.
DWORD LookupAccountByName(LPCSTR name, AccountRecord& account, const std::string& server = {});

// Finds the account that someone has typed: a name as above or the text of a SID, which need not be known
// here. Returns what is wrong with the text, or an empty one; `account` is untouched then.
std::string FindTypedAccount(const std::string& text, AccountRecord& account, const std::string& server = {});

// Why a name could not be looked up, in half a sentence: several accounts have it, or the domain that knows
// does not answer. Empty for other errors.
std::string NotLookedUpText(DWORD error);

// "The domain EXAMPLE does not answer..."; empty unless it is offline.
std::string OfflineText(const DomainState& state);

}  // namespace permora
