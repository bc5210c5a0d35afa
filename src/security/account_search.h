// Finds the accounts that can be named: this machine's, then those of its domain.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "platform/accounts.h"
#include "security/account_record.h"
#include "security/outcome.h"

namespace permora {

// Appends the accounts, their names looked up: the well-known SIDs that need no domain, in the order of their
// type; then the local groups and the local users that are not among those before them, in the order in which
// the system enumerates them. A SID without a name is left out. An enumeration that fails ends with what it
// gave. Fails where "Advapi32.dll" cannot be loaded (Step::kLoadLibrary), and nothing is appended then.
Outcome FindLocalAccounts(std::vector<AccountRecord>& accounts);

// Whether `text` stands in the account's qualified name, its SID or the text of its type; the letter case of
// ASCII does not matter.
bool IsFoundBy(const std::string& text, const AccountRecord& account);

// Hands out the accounts of the machine's domain that IsFoundBy `text`, without those of `local`. Works and
// ends as SearchAccounts does (platform/accounts.h), and takes as long; at once where there is no domain.
SearchOutcome FindDomainAccounts(const std::string& text, const std::vector<AccountRecord>& local,
                                 const std::atomic<bool>& isStopped,
                                 const std::function<void(std::vector<AccountRecord> accounts)>& take);

// "The accounts of EXAMPLE are missing: ..."; empty for a search that came to its end or was stopped.
std::string MissingAccountsText(const SearchOutcome& outcome);

// "User", "Alias", "Well-known account"...; empty for a value that has no name.
const char* AccountTypeText(SID_NAME_USE use);

}  // namespace permora
