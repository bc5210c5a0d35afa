#include "platform/linux/accounts/domain_accounts.h"

#include <algorithm>
#include <iterator>

#include "platform/ascii.h"
#include "platform/linux/accounts/machine.h"
#include "platform/linux/accounts/name_service.h"

namespace permora::host {

namespace {

constexpr std::chrono::minutes kNameLifetime{5};
constexpr std::chrono::seconds kNobodyLifetime{15};
constexpr std::chrono::seconds kIdLifetime{60};
// SIDs come from disks that anyone may have written: their number must not fill the memory.
constexpr std::size_t kMostNames = 200'000;
// Of one question to winbind.
constexpr std::size_t kMostAtOnce = 500;
constexpr int kMostFetchers = 2;
// A name that was asked for while the domain was away is unknown to winbind for a while after.
constexpr std::chrono::seconds kRecovery{120};

// S-1-5-21-a-b-c, without the relative id.
nt::Sid DomainPart(const nt::Sid& sid) {
    return {5, {21, sid.SubAuthority(1), sid.SubAuthority(2), sid.SubAuthority(3)}};
}

std::uint32_t RelativeId(const nt::Sid& sid) {
    return sid.SubAuthority(sid.SubAuthorityCount() - 1);
}

bool IsNamed(const WinbindDomain& domain, std::string_view text) {
    return EqualsIgnoringCase(domain.name, text) ||
           (!domain.dnsName.empty() && EqualsIgnoringCase(domain.dnsName, text));
}

// "Not found" counts only where the domain answers: winbind says so too when nobody does.
WinbindAnswer Confirmed(Winbind& winbind, WinbindAnswer answer, const nt::Sid& domain) {
    if (answer != WinbindAnswer::kNotFound) return answer;
    return DomainLink::Verify(winbind, domain) == WinbindAnswer::kFound ? answer : WinbindAnswer::kFailed;
}

// Winbind has one answer for "none of these", from what it has kept, and for a domain that it cannot reach.
// So it is asked anew with two numbers more: one that it cannot have kept, so that it must ask the domain,
// and one that every domain has an account for.
WinbindAnswer FindNamesAnew(Winbind& winbind, const nt::Sid& domain, std::vector<std::uint32_t> relativeIds,
                            std::vector<WinbindName>& names) {
    constexpr std::uint32_t kAdministrator = 500;
    const std::size_t count = relativeIds.size();
    relativeIds.push_back(kAdministrator);
    relativeIds.push_back(DomainLink::UnusedRelativeId());
    std::vector<WinbindName> found;
    const WinbindAnswer answer = winbind.FindNames(domain, relativeIds, found);
    if (answer != WinbindAnswer::kFound || found.size() <= count || found[count].name.empty())
        return WinbindAnswer::kFailed;
    found.resize(count);
    names = std::move(found);
    return answer;
}

// Those without a name are certainly nobody's: winbind also leaves out what it has not kept of a domain that
// is away. kFailed, and no names, where that is not certain.
WinbindAnswer FindCertainNames(Winbind& winbind, const nt::Sid& domain,
                               const std::vector<std::uint32_t>& relativeIds,
                               std::vector<WinbindName>& names) {
    std::vector<WinbindName> found;
    WinbindAnswer answer = winbind.FindNames(domain, relativeIds, found);
    if (answer == WinbindAnswer::kNotFound) answer = FindNamesAnew(winbind, domain, relativeIds, found);
    const bool hasNobody = std::ranges::any_of(found, &std::string::empty, &WinbindName::name);
    if (answer == WinbindAnswer::kFound && hasNobody) answer = DomainLink::Verify(winbind, domain);
    if (answer == WinbindAnswer::kFound) names = std::move(found);
    return answer;
}

}  // namespace

DomainAccounts& TheDomainAccounts() {
    static DomainAccounts& accounts = *new DomainAccounts;
    return accounts;
}

bool DomainAccounts::KnownName::IsFresh() const {
    if (error == kNameNotYet) return false;
    return SteadyClock::now() - time <
           (error == ERROR_SUCCESS ? SteadyClock::duration(kNameLifetime) : kNobodyLifetime);
}

std::string DomainAccounts::Name() {
    return link.State().domain;
}

DWORD DomainAccounts::CheckDomain(std::chrono::milliseconds wait) {
    switch (link.Availability(Patience::For(wait))) {
        case DomainAvailability::kNone:
            return ERROR_NONE_MAPPED;
        case DomainAvailability::kUnknown:
            return wait.count() == 0 ? kNameNotYet : kDomainOffline;
        case DomainAvailability::kOnline:
            return ERROR_SUCCESS;
        default:
            return kDomainOffline;
    }
}

// Accounts of this machine are another source's, unless that may not see them. The domain 0-0-0 is none: its
// SIDs are well known.
bool DomainAccounts::IsOfDomain(const nt::Sid& sid) {
    const bool hasForm = sid.Authority() == 5 && sid.SubAuthorityCount() == 5 && sid.SubAuthority(0) == 21 &&
                         (sid.SubAuthority(1) != 0 || sid.SubAuthority(2) != 0 || sid.SubAuthority(3) != 0);
    const Machine& machine = ThisMachine();
    return hasForm && !(machine.sid && sid.IsDirectlyBelow(*machine.sid));
}

std::optional<WinbindDomain> DomainAccounts::DomainOf(const nt::Sid& sid) {
    for (WinbindDomain& domain : link.Domains())
        if (sid.IsDirectlyBelow(domain.sid)) return std::move(domain);
    return std::nullopt;
}

// --- By SID.

DWORD DomainAccounts::FindName(const nt::Sid& sid, std::chrono::milliseconds wait, AccountName& account) {
    if (!IsOfDomain(sid)) return ERROR_NONE_MAPPED;
    const Patience patience = Patience::For(wait);
    const auto take = [&](const KnownName& known) {
        if (known.error != kNameNotYet) account = known.account;
        return known.error;
    };
    {
        const std::lock_guard lock(mutex);
        const auto found = names.find(sid);
        if (found != names.end() && found->second.IsFresh()) return take(found->second);
    }
    const DWORD error = CheckDomain(wait);
    std::unique_lock lock(mutex);
    // A name that was right a while ago is better than none.
    const auto known = [&] {
        const auto found = names.find(sid);
        return found != names.end() && found->second.error == ERROR_SUCCESS ? take(found->second)
                                                                            : kNameNotYet;
    };
    if (error != ERROR_SUCCESS) return known() == ERROR_SUCCESS ? ERROR_SUCCESS : error;
    AskFor(sid);
    if (known() == ERROR_SUCCESS) return ERROR_SUCCESS;
    for (;;) {
        const auto found = names.find(sid);
        if (found == names.end()) return kNameNotYet;
        if (!found->second.isAskedFor) return take(found->second);
        if (patience.IsOver()) {
            if (wait >= kLookupTime) link.GiveUp();
            return kNameNotYet;
        }
        constexpr std::chrono::milliseconds kSlice{50};
        hasNames.wait_until(lock, std::min(patience.until, SteadyClock::now() + kSlice));
        if (link.State().availability != DomainAvailability::kOnline) return kDomainOffline;
    }
}

void DomainAccounts::AskFor(const nt::Sid& sid) {
    if (names.size() >= kMostNames)
        std::erase_if(names, [](const auto& row) { return !row.second.isAskedFor; });
    KnownName& known = names[sid];
    if (known.isAskedFor) return;
    known.isAskedFor = true;
    pending.push_back(sid);
    if (fetchers < kMostFetchers && RunInBackground([this] { AskForNames(); })) ++fetchers;
}

void DomainAccounts::AskForNames() {
    for (std::vector<nt::Sid> sids = TakePending(); !sids.empty(); sids = TakePending()) {
        AskForNames(sids);
        // Those without an answer may be asked for again.
        const std::lock_guard lock(mutex);
        for (const nt::Sid& sid : sids)
            names[sid].isAskedFor = false;
        hasNames.notify_all();
        link.Tell();
    }
}

// As many as one question takes: those of one domain.
std::vector<nt::Sid> DomainAccounts::TakePending() {
    const std::lock_guard lock(mutex);
    std::vector<nt::Sid> taken;
    if (pending.empty()) {
        --fetchers;
        return taken;
    }
    const nt::Sid domain = DomainPart(pending.front());
    const auto isTaken = [&](const nt::Sid& sid) {
        if (taken.size() >= kMostAtOnce || !sid.IsDirectlyBelow(domain)) return false;
        taken.push_back(sid);
        return true;
    };
    pending.erase(pending.begin(), std::stable_partition(pending.begin(), pending.end(), isTaken));
    return taken;
}

void DomainAccounts::AskForNames(const std::vector<nt::Sid>& sids) {
    const std::optional<WinbindDomain> domain = DomainOf(sids.front());
    if (!domain) {
        for (const nt::Sid& sid : sids)
            AskForForeignName(sid);
        return;
    }
    std::vector<std::uint32_t> relativeIds;
    std::ranges::transform(sids, std::back_inserter(relativeIds), RelativeId);
    const auto asked = link.Call<std::vector<WinbindName>>(
        kLookupTime, [&](Winbind& winbind, std::vector<WinbindName>& found) {
            const WinbindAnswer answer = FindCertainNames(winbind, domain->sid, relativeIds, found);
            // One that the machine's domain trusts may be away while that is not.
            return answer == WinbindAnswer::kFailed && !domain->isOwn ? WinbindAnswer::kNotFound : answer;
        });
    for (std::size_t i = 0; i < asked.value.size() && i < sids.size(); ++i) {
        const WinbindName& name = asked.value[i];
        if (name.name.empty())
            Keep(sids[i], ERROR_NONE_MAPPED, {{}, domain->name, SidTypeDeletedAccount});
        else
            Keep(sids[i], ERROR_SUCCESS, {name.name, domain->name, name.Use()});
    }
}

// Of a domain that winbind does not list: its controller may know it all the same.
void DomainAccounts::AskForForeignName(const nt::Sid& sid) {
    const nt::Sid own = link.OwnDomain().sid;
    const auto asked = link.Call<WinbindName>(kLookupTime, [&](Winbind& winbind, WinbindName& name) {
        return Confirmed(winbind, winbind.FindName(sid, name), own);
    });
    if (asked.answer == WinbindAnswer::kFound)
        Keep(sid, ERROR_SUCCESS, {asked.value.name, asked.value.domain, asked.value.Use()});
    else if (asked.answer == WinbindAnswer::kNotFound && !link.HasLatelyFailed(kRecovery))
        Keep(sid, ERROR_NONE_MAPPED, {});
}

void DomainAccounts::Keep(const nt::Sid& sid, DWORD error, const AccountName& account) {
    const std::lock_guard lock(mutex);
    KnownName& known = names[sid];
    known.error = error;
    known.account = account;
    known.time = SteadyClock::now();
}

// --- By name.

DWORD DomainAccounts::FindSid(const NameText& text, LetterCase letterCase, nt::Sid& sid) {
    if (letterCase == LetterCase::kSignificant) return ERROR_NONE_MAPPED;
    if (const DWORD error = CheckDomain(kLookupTime); error != ERROR_SUCCESS) return error;
    for (const WinbindDomain& domain : link.Domains())
        if (text.isQualified && domain.isLocal && IsNamed(domain, text.domain)) return ERROR_NONE_MAPPED;
    const WinbindDomain own = link.OwnDomain();
    const bool isPrincipal = !text.isQualified && text.name.find('@') != text.name.npos;
    const std::string domain = text.isQualified ? std::string(text.domain)
                               : isPrincipal    ? std::string()
                                                : own.name;
    const std::string name(text.name);
    const auto asked = link.Ask<nt::Sid>(
        Patience::For(kLookupTime), kLookupTime, [domain, name, own](Winbind& winbind, nt::Sid& found) {
            return Confirmed(winbind, winbind.FindSid(domain, name, found), own.sid);
        });
    switch (asked.answer) {
        case WinbindAnswer::kFound:
            if (!IsOfDomain(asked.value)) return ERROR_NONE_MAPPED;
            sid = asked.value;
            return ERROR_SUCCESS;
        case WinbindAnswer::kNotFound:
            return link.HasLatelyFailed(kRecovery) ? kNameNotYet : ERROR_NONE_MAPPED;
        default:
            return kDomainOffline;
    }
}

// --- By the host's numbers.

DWORD DomainAccounts::FindSidOf(AccountKind kind, id_t id, nt::Sid& sid) {
    const std::pair key(kind, id);
    {
        const std::lock_guard lock(mutex);
        const auto found = ids.find(key);
        if (found != ids.end() && SteadyClock::now() - found->second.time < kIdLifetime) {
            if (found->second.error == ERROR_SUCCESS) sid = found->second.sid;
            return found->second.error;
        }
    }
    KnownId known;
    const DWORD error = CheckDomain(kLookupTime);
    if (error == ERROR_NONE_MAPPED) return error;
    if (!IsInHostFiles(kind, id)) {
        if (error != ERROR_SUCCESS) return error;
        const auto asked =
            link.Ask<nt::Sid>(Patience::For(kLookupTime), kLookupTime,
                              [kind, id, own = link.OwnDomain().sid](Winbind& winbind, nt::Sid& found) {
                                  return Confirmed(winbind, winbind.FindSidOf(kind, id, found), own);
                              });
        if (asked.answer == WinbindAnswer::kFailed) return kDomainOffline;
        if (asked.answer == WinbindAnswer::kFound && IsOfDomain(asked.value))
            known = {ERROR_SUCCESS, asked.value, {}};
    }
    known.time = SteadyClock::now();
    if (known.error == ERROR_SUCCESS) sid = known.sid;
    const std::lock_guard lock(mutex);
    if (ids.size() >= kMostNames) ids.clear();
    ids.insert_or_assign(key, known);
    return known.error;
}

DWORD DomainAccounts::FindUser(const nt::Sid& sid, uid_t& user) {
    if (!IsOfDomain(sid)) return ERROR_NONE_MAPPED;
    if (const DWORD error = CheckDomain(kLookupTime); error != ERROR_SUCCESS) return error;
    const std::optional<WinbindDomain> domain = DomainOf(sid);
    if (!domain) return ERROR_NONE_MAPPED;  // nobody of this host comes from there
    {
        const std::lock_guard lock(mutex);
        const auto found = users.find(sid);
        if (found != users.end() && SteadyClock::now() - found->second.time < kIdLifetime) {
            user = found->second.user;
            return ERROR_SUCCESS;
        }
    }
    const auto asked = link.Ask<uid_t>(
        Patience::For(kLookupTime), kLookupTime, [sid, domain](Winbind& winbind, uid_t& found) {
            return Confirmed(winbind, winbind.FindUser(sid, found), domain->sid);
        });
    if (asked.answer == WinbindAnswer::kFailed) return kDomainOffline;
    if (asked.answer != WinbindAnswer::kFound) return ERROR_NONE_MAPPED;
    user = asked.value;
    const std::lock_guard lock(mutex);
    if (users.size() >= kMostNames) users.clear();
    users.insert_or_assign(sid, KnownUser{user, SteadyClock::now()});
    return ERROR_SUCCESS;
}

}  // namespace permora::host
