#include "platform/linux/accounts/machine_accounts.h"

#include <array>
#include <mutex>
#include <unordered_map>

#include "platform/ascii.h"
#include "platform/linux/accounts/account_list.h"
#include "platform/linux/accounts/machine.h"
#include "platform/linux/accounts/memberships.h"
#include "platform/linux/accounts/name_service.h"
#include "platform/linux/accounts/samba_accounts.h"
#include "platform/linux/accounts/sid_hash.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/accounts/unix_sids.h"

namespace permora::host {

namespace {

constexpr std::array kKinds = {AccountKind::kUser, AccountKind::kGroup};

SID_NAME_USE UseOf(nt::SidUse use) {
    return static_cast<SID_NAME_USE>(use);
}

// --- By SID.

DWORD DescribeHostAccount(AccountKind kind, id_t id, std::string_view domain, SID_NAME_USE use,
                          AccountName& account) {
    std::string name;
    const DWORD error = FindHostName(kind, id, name);
    if (error == ERROR_SUCCESS) account = {name, std::string(domain), use};
    return error;
}

DWORD DescribeComputed(const Machine& machine, const nt::Sid& sid, AccountName& account) {
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

DWORD DescribeSambaAccount(const Machine& machine, const nt::Sid& sid, AccountName& account) {
    DWORD error = ERROR_NONE_MAPPED;
    for (const AccountKind kind : kKinds) {
        const SambaAccounts& accounts = AllSambaAccounts(kind);
        if (const SambaAccount* found = accounts.Find(sid)) {
            account = {found->name, machine.name, UseOf(found->use)};
            return ERROR_SUCCESS;
        }
        if (error == ERROR_NONE_MAPPED) error = accounts.NotFound();
    }
    return error;
}

DWORD DescribeOfMachine(const nt::Sid& sid, AccountName& account) {
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
    if (machine.source == RelativeIdSource::kSamba) return DescribeSambaAccount(machine, sid, account);
    return DescribeComputed(machine, sid, account);
}

// What was answered a moment ago, accounts that do not exist included.
class RecentAnswers {
  public:
    bool Find(const nt::Sid& sid, DWORD& error, AccountName& account) {
        const std::lock_guard lock(mutex);
        const auto found = answers.find(sid);
        if (found == answers.end() || Clock::now() - found->second.time > kLifetime) return false;
        error = found->second.error;
        if (error == ERROR_SUCCESS) account = found->second.account;
        return true;
    }

    void Keep(const nt::Sid& sid, DWORD error, const AccountName& account) {
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
        AccountName account;
    };
    std::mutex mutex;
    std::unordered_map<nt::Sid, Answer, SidHash> answers;
};

// --- By name.

DWORD FindMachine(std::string_view name, LetterCase letterCase, nt::Sid& sid) {
    const Machine& machine = ThisMachine();
    if (!machine.sid || !IsSameName(machine.name, name, letterCase)) return ERROR_NONE_MAPPED;
    sid = *machine.sid;
    return ERROR_SUCCESS;
}

DWORD FindSambaAccount(AccountKind kind, std::string_view name, LetterCase letterCase, nt::Sid& sid) {
    const Machine& machine = ThisMachine();
    if (machine.source != RelativeIdSource::kSamba) return ERROR_NONE_MAPPED;
    const SambaAccounts& accounts = AllSambaAccounts(kind);
    const SambaAccount* account = accounts.Find(name, letterCase);
    if (account == nullptr) return accounts.NotFound();
    if (!account->sid.IsDirectlyBelow(*machine.sid)) return ERROR_NONE_MAPPED;
    sid = account->sid;
    return ERROR_SUCCESS;
}

DWORD FindHostAccountId(AccountKind kind, std::string_view name, LetterCase letterCase, id_t& id) {
    return FindHostId(kind, letterCase == LetterCase::kIgnored ? InLowerCase(name) : std::string(name), id);
}

DWORD FindHostAccount(AccountKind kind, std::string_view name, LetterCase letterCase, nt::Sid& sid) {
    id_t id = 0;
    const DWORD error = FindHostAccountId(kind, name, letterCase, id);
    return error == ERROR_SUCCESS ? FindSidForId(kind, id, sid) : error;
}

// "Unix User\name" and "Unix Group\name". Where Samba has its own accounts, the words mean the host's
// account beside them.
DWORD FindInUnixDomain(AccountKind kind, std::string_view name, LetterCase letterCase, nt::Sid& sid) {
    if (ThisMachine().source != RelativeIdSource::kSamba) return FindHostAccount(kind, name, letterCase, sid);
    id_t id = 0;
    const DWORD error = FindHostAccountId(kind, name, letterCase, id);
    if (error == ERROR_SUCCESS) sid = UnixSid(kind, id);
    return error;
}

// A user before a group of the same name, as everywhere in Windows.
DWORD FindOfMachine(std::string_view name, LetterCase letterCase, nt::Sid& sid) {
    const bool isHostsOwn = ThisMachine().source != RelativeIdSource::kSamba;
    DWORD error = FindMachine(name, letterCase, sid);
    for (const AccountKind kind : kKinds) {
        if (error == ERROR_NONE_MAPPED) error = FindSambaAccount(kind, name, letterCase, sid);
        if (error == ERROR_NONE_MAPPED && isHostsOwn) error = FindHostAccount(kind, name, letterCase, sid);
    }
    return error;
}

DWORD FindBare(std::string_view name, LetterCase letterCase, nt::Sid& sid) {
    DWORD error = FindMachine(name, letterCase, sid);
    for (const AccountKind kind : kKinds) {
        if (error == ERROR_NONE_MAPPED) error = FindSambaAccount(kind, name, letterCase, sid);
        if (error == ERROR_NONE_MAPPED) error = FindHostAccount(kind, name, letterCase, sid);
    }
    return error;
}

// An account of this machine by its domain and name.
DWORD FindQualified(const NameText& text, LetterCase letterCase, nt::Sid& sid) {
    for (const AccountKind kind : kKinds)
        if (IsSameName(text.domain, UnixDomainName(kind), LetterCase::kIgnored))
            return FindInUnixDomain(kind, text.name, letterCase, sid);
    const bool isMachine = IsSameName(text.domain, ThisMachine().name, LetterCase::kIgnored);
    return isMachine ? FindOfMachine(text.name, letterCase, sid) : ERROR_NONE_MAPPED;
}

bool HasUnixSid(const nt::Sid& sid) {
    return IdOfUnixSid(AccountKind::kUser, sid) || IdOfUnixSid(AccountKind::kGroup, sid);
}

DWORD AddAll(AccountKind kind, AccountSource& source, const std::atomic<bool>& isStopped, FoundRows& rows) {
    std::vector<std::string> names;
    if (const DWORD error = ListAccountNames(kind, names); error != ERROR_SUCCESS) return error;
    for (const std::string& name : names) {
        if (isStopped) return ERROR_OPERATION_ABORTED;
        const std::size_t separator = name.find('\\');
        const NameText text{std::string_view(name).substr(0, separator),
                            std::string_view(name).substr(separator + 1), true};
        nt::Sid sid;
        AccountName account;
        // Accounts that vanish meanwhile are no failure.
        if (source.FindSid(text, LetterCase::kSignificant, sid) != ERROR_SUCCESS ||
            source.FindName(sid, {}, account) != ERROR_SUCCESS)
            continue;
        rows.Add({sid, account.use, account.name, account.domain, {}});
    }
    return ERROR_SUCCESS;
}

class MachineSource : public AccountSource {
  public:
    DWORD FindName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account) override;
    DWORD FindSid(const NameText& text, LetterCase letterCase, nt::Sid& sid) override {
        return text.isQualified ? FindQualified(text, letterCase, sid) : FindBare(text.name, letterCase, sid);
    }
    DWORD FindGroups(const nt::Sid& account, GroupsRequest request, AccountGroups& groups) override;
    DWORD Search(const std::atomic<bool>& isStopped, FoundRows& rows) override;
    std::string Name() override { return ThisMachine().name; }
};

DWORD MachineSource::FindName(const nt::Sid& sid, std::chrono::milliseconds /*wait*/, AccountName& account) {
    const nt::Sid* machine = MachineSid();
    const bool isMachines = machine != nullptr && (sid == *machine || sid.IsDirectlyBelow(*machine));
    if (!isMachines && !HasUnixSid(sid)) return ERROR_NONE_MAPPED;
    static RecentAnswers recent;
    DWORD error = ERROR_NONE_MAPPED;
    if (recent.Find(sid, error, account)) return error;
    AccountName found;
    error = DescribeOfMachine(sid, found);
    if (error == ERROR_SUCCESS || error == ERROR_NONE_MAPPED) recent.Keep(sid, error, found);
    if (error == ERROR_SUCCESS) account = std::move(found);
    return error;
}

DWORD MachineSource::FindGroups(const nt::Sid& account, GroupsRequest /*request*/, AccountGroups& groups) {
    std::vector<nt::Sid> sids;
    const DWORD error = FindMemberships(account, sids);
    if (error == ERROR_SUCCESS) groups = {std::move(sids), GroupsOrigin::kThisMachine};
    return error;
}

DWORD MachineSource::Search(const std::atomic<bool>& isStopped, FoundRows& rows) {
    for (const AccountKind kind : {AccountKind::kGroup, AccountKind::kUser}) {
        const DWORD error = AddAll(kind, *this, isStopped, rows);
        rows.HandOut();
        if (error != ERROR_SUCCESS) return error;
    }
    return ERROR_SUCCESS;
}

}  // namespace

AccountSource& MachineAccounts() {
    static MachineSource kSource;
    return kSource;
}

}  // namespace permora::host
