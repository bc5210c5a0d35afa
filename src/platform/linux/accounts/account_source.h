// Where accounts come from: the system itself, this machine with its file server, the domain. Each source
// answers for its own accounts only and leaves all others to the next one. Rules: docs/platform.md,
// "Accounts".
#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>

#include "platform/accounts.h"
#include "platform/found_rows.h"
#include "platform/linux/accounts/account_names.h"

namespace permora::host {

// A typed name.
struct NameText {
    std::string_view domain;
    std::string_view name;
    bool isQualified = false;  // whether `domain` was there, perhaps empty
};

// Any thread. Sources live as long as the process. In all functions ERROR_NONE_MAPPED means that the account
// is not of this source.
class AccountSource {
  public:
    virtual ~AccountSource() = default;

    // Waits for a domain for `wait` at most: kNameNotYet, kDomainOffline. For a SID of this source that
    // nobody has (any more) ERROR_NONE_MAPPED, with `use` SidTypeDeletedAccount and its domain where that is
    // certain.
    virtual DWORD FindName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account) = 0;

    // A source that looks at letter case finds the name in exactly that one first; one that does not finds it
    // with kIgnored alone.
    virtual DWORD FindSid(const NameText& text, LetterCase letterCase, nt::Sid& sid) = 0;

    // The account with its groups: errors as FindAccountGroups.
    virtual DWORD FindGroups(const nt::Sid& account, GroupsRequest request, AccountGroups& groups) = 0;

    // Adds all accounts, as SearchAccounts does. 0, ERROR_OPERATION_ABORTED, or why some are missing.
    virtual DWORD Search(const std::atomic<bool>& isStopped, FoundRows& rows) = 0;

    // "EXAMPLE"; what SearchOutcome::source says.
    virtual std::string Name() = 0;
};

}  // namespace permora::host
