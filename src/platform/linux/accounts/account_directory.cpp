#include "platform/linux/accounts/account_directory.h"

#include <array>
#include <chrono>
#include <mutex>
#include <unordered_map>

#include "platform/ascii.h"
#include "platform/linux/accounts/account_names.h"
#include "platform/linux/accounts/machine.h"
#include "platform/linux/accounts/name_service.h"
#include "platform/linux/accounts/samba_accounts.h"
#include "platform/linux/accounts/sid_hash.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/accounts/unix_sids.h"
#include "platform/linux/base/wide_text.h"
#include "platform/nt/well_known_sids.h"

namespace permora::host {

namespace {

constexpr std::array kKinds = {AccountKind::kUser, AccountKind::kGroup};

SID_NAME_USE UseOf(nt::SidUse use) {
    return static_cast<SID_NAME_USE>(use);
}

// --- By SID.

DWORD DescribeHostAccount(AccountKind kind, id_t id, std::string_view domain, SID_NAME_USE use,
                          Account& account) {
    std::string name;
    const DWORD error = FindHostName(kind, id, name);
    if (error == ERROR_SUCCESS) account = {name, std::string(domain), use};
    return error;
}

DWORD DescribeComputed(const Machine& machine, const nt::Sid& sid, Account& account) {
    for (const AccountKind kind : kKinds) {
        const std::optional<id_t> id = IdOfComputedSid(kind, *machine.sid, sid);
        if (!id) continue;
        // Most users have a group of the same name, so groups are told apart by their domain.
        if (kind == AccountKind::kUser)
            return DescribeHostAccount(kind, *id, machine.name, SidTypeUser, account);
        return DescribeHostAccount(kind, *id, UnixDomainName(kind), SidTypeAlias, account);
    }
    return ERROR_NONE_MAPPED;
}

DWORD DescribeSambaAccount(const Machine& machine, const nt::Sid& sid, Account& account) {
    for (const AccountKind kind : kKinds) {
        const SambaAccount* found = AllSambaAccounts(kind).Find(sid);
        if (found == nullptr) continue;
        account = {found->name, machine.name, UseOf(found->use)};
        return ERROR_SUCCESS;
    }
    return ERROR_NONE_MAPPED;
}

DWORD DescribeOfMachine(const nt::Sid& sid, Account& account) {
    for (const AccountKind kind : kKinds) {
        const SID_NAME_USE use = kind == AccountKind::kUser ? SidTypeUser : SidTypeGroup;
        if (const std::optional<id_t> id = IdOfUnixSid(kind, sid))
            return DescribeHostAccount(kind, *id, UnixDomainName(kind), use, account);
    }
    const Machine& machine = ThisMachine();
    if (!machine.sid) return ERROR_NONE_MAPPED;
    if (sid == *machine.sid) {
        account = {machine.name, machine.name, SidTypeDomain};
        return ERROR_SUCCESS;
    }
    if (!sid.IsDirectlyBelow(*machine.sid)) return ERROR_NONE_MAPPED;
    if (machine.source == AccountSource::kSamba) return DescribeSambaAccount(machine, sid, account);
    return DescribeComputed(machine, sid, account);
}

// What was answered a moment ago, accounts that do not exist included.
class RecentAnswers {
  public:
    bool Find(const nt::Sid& sid, DWORD& error, Account& account) {
        const std::lock_guard lock(mutex);
        const auto found = answers.find(sid);
        if (found == answers.end() || Clock::now() - found->second.time > kLifetime) return false;
        error = found->second.error;
        if (error == ERROR_SUCCESS) account = found->second.account;
        return true;
    }

    void Keep(const nt::Sid& sid, DWORD error, const Account& account) {
        const std::lock_guard lock(mutex);
        // SIDs come from disks that anyone may have written: their number must not fill the memory.
        if (answers.size() >= kMost) answers.clear();
        answers.insert_or_assign(sid, Answer{Clock::now(), error, account});
    }

  private:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::seconds kLifetime{5};
    static constexpr std::size_t kMost = 4096;

    struct Answer {
        Clock::time_point time;
        DWORD error = ERROR_NONE_MAPPED;
        Account account;
    };
    std::mutex mutex;
    std::unordered_map<nt::Sid, Answer, SidHash> answers;
};

// --- By name.

DWORD FindWellKnown(std::string_view name, const std::string_view* domain, LetterCase letterCase,
                    nt::Sid& sid) {
    for (const nt::WellKnownSid& row : nt::WellKnownSids()) {
        if (!IsSameName(row.name, name, letterCase)) continue;
        if (domain != nullptr && !IsSameName(row.domain, *domain, LetterCase::kIgnored)) continue;
        sid = row.sid;
        return ERROR_SUCCESS;
    }
    return ERROR_NONE_MAPPED;
}

DWORD FindMachine(std::string_view name, LetterCase letterCase, nt::Sid& sid) {
    const Machine& machine = ThisMachine();
    if (!machine.sid || !IsSameName(machine.name, name, letterCase)) return ERROR_NONE_MAPPED;
    sid = *machine.sid;
    return ERROR_SUCCESS;
}

DWORD FindSambaAccount(AccountKind kind, std::string_view name, LetterCase letterCase, nt::Sid& sid) {
    const Machine& machine = ThisMachine();
    if (machine.source != AccountSource::kSamba) return ERROR_NONE_MAPPED;
    const SambaAccount* account = AllSambaAccounts(kind).Find(name, letterCase);
    if (account == nullptr || !account->sid.IsDirectlyBelow(*machine.sid)) return ERROR_NONE_MAPPED;
    sid = account->sid;
    return ERROR_SUCCESS;
}

DWORD FindHostAccountId(AccountKind kind, std::string_view name, LetterCase letterCase, id_t& id) {
    return FindHostId(kind, letterCase == LetterCase::kIgnored ? InLowerCase(name) : std::string(name), id);
}

DWORD FindHostAccount(AccountKind kind, std::string_view name, LetterCase letterCase, nt::Sid& sid) {
    id_t id = 0;
    const DWORD error = FindHostAccountId(kind, name, letterCase, id);
    if (error == ERROR_SUCCESS) sid = kind == AccountKind::kUser ? SidForUser(id) : SidForGroup(id);
    return error;
}

// "Unix User\name" and "Unix Group\name". Where Samba has its own accounts, the words mean the host's
// account beside them.
DWORD FindInUnixDomain(AccountKind kind, std::string_view name, LetterCase letterCase, nt::Sid& sid) {
    if (ThisMachine().source != AccountSource::kSamba) return FindHostAccount(kind, name, letterCase, sid);
    id_t id = 0;
    const DWORD error = FindHostAccountId(kind, name, letterCase, id);
    if (error == ERROR_SUCCESS) sid = UnixSid(kind, id);
    return error;
}

// A user before a group of the same name, as everywhere in Windows.
DWORD FindOfMachine(std::string_view name, LetterCase letterCase, nt::Sid& sid) {
    const bool isHostsOwn = ThisMachine().source != AccountSource::kSamba;
    DWORD error = FindMachine(name, letterCase, sid);
    for (const AccountKind kind : kKinds) {
        if (error == ERROR_NONE_MAPPED) error = FindSambaAccount(kind, name, letterCase, sid);
        if (error == ERROR_NONE_MAPPED && isHostsOwn) error = FindHostAccount(kind, name, letterCase, sid);
    }
    return error;
}

DWORD FindBare(std::string_view name, LetterCase letterCase, nt::Sid& sid) {
    DWORD error = FindWellKnown(name, nullptr, letterCase, sid);
    if (error == ERROR_NONE_MAPPED) error = FindMachine(name, letterCase, sid);
    for (const AccountKind kind : kKinds) {
        if (error == ERROR_NONE_MAPPED) error = FindSambaAccount(kind, name, letterCase, sid);
        if (error == ERROR_NONE_MAPPED) error = FindHostAccount(kind, name, letterCase, sid);
    }
    return error;
}

DWORD FindQualified(std::string_view domain, std::string_view name, LetterCase letterCase, nt::Sid& sid) {
    for (const AccountKind kind : kKinds)
        if (IsSameName(domain, UnixDomainName(kind), LetterCase::kIgnored))
            return FindInUnixDomain(kind, name, letterCase, sid);
    if (FindWellKnown(name, &domain, letterCase, sid) == ERROR_SUCCESS) return ERROR_SUCCESS;
    const bool isMachine = IsSameName(domain, ThisMachine().name, LetterCase::kIgnored);
    return isMachine ? FindOfMachine(name, letterCase, sid) : ERROR_NONE_MAPPED;
}

}  // namespace

DWORD FindAccountOfSid(const nt::Sid& sid, Account& account) {
    if (const nt::WellKnownSid* row = nt::FindWellKnownSid(sid)) {
        account = {std::string(row->name), std::string(row->domain), UseOf(row->use)};
        return ERROR_SUCCESS;
    }
    static RecentAnswers recent;
    DWORD error = ERROR_NONE_MAPPED;
    if (recent.Find(sid, error, account)) return error;
    Account found;
    error = DescribeOfMachine(sid, found);
    if (error == ERROR_SUCCESS || error == ERROR_NONE_MAPPED) recent.Keep(sid, error, found);
    if (error == ERROR_SUCCESS) account = std::move(found);
    return error;
}

DWORD FindAccountSid(std::string_view text, nt::Sid& sid) {
    if (const std::optional<nt::Sid> read = nt::Sid::FromText(text)) {
        sid = *read;
        return ERROR_SUCCESS;
    }
    const std::size_t separator = text.find('\\');
    const bool isQualified = separator != std::string_view::npos;
    const std::string_view name = isQualified ? text.substr(separator + 1) : text;
    if (!IsPlainAccountName(name)) return ERROR_NONE_MAPPED;
    // The host tells "Users" from "users". So do we where both exist: the exact name comes first.
    DWORD error = ERROR_NONE_MAPPED;
    for (const LetterCase letterCase : {LetterCase::kSignificant, LetterCase::kIgnored}) {
        if (error != ERROR_NONE_MAPPED) break;
        error = isQualified ? FindQualified(text.substr(0, separator), name, letterCase, sid)
                            : FindBare(name, letterCase, sid);
    }
    return error;
}

bool IsThisMachine(std::string_view system) {
    if (system.starts_with("\\\\")) system.remove_prefix(2);
    return IsSameName(system, ThisMachine().name, LetterCase::kIgnored);
}

bool IsThisServer(LPCWSTR server) {
    return server == nullptr || *server == u'\0' || IsThisMachine(ToAnsi(server));
}

}  // namespace permora::host
