// The groups of a domain's accounts, as the server's own token of them has it.
#include <unistd.h>

#include <algorithm>

#include "platform/linux/accounts/domain_accounts.h"
#include "platform/linux/accounts/logon_record.h"
#include "platform/linux/accounts/unix_sids.h"

namespace permora::host {

namespace {

void AddNew(std::vector<nt::Sid>& sids, std::span<const nt::Sid> added) {
    for (const nt::Sid& sid : added)
        if (std::ranges::find(sids, sid) == sids.end()) sids.push_back(sid);
}

// Of each domain account the server's token also holds the SIDs of its numbers on the host.
WinbindAnswer AddHostSids(Winbind& winbind, const nt::Sid& account, std::vector<nt::Sid>& sids) {
    std::vector<Winbind::HostIds> ids;
    const std::vector<nt::Sid> asked = sids;
    const WinbindAnswer answer = winbind.FindHostIds(asked, ids);
    if (answer != WinbindAnswer::kFound) return answer;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        if (ids[i].user && asked[i] == account) AddNew(sids, {{UnixSid(AccountKind::kUser, *ids[i].user)}});
        if (ids[i].group) AddNew(sids, {{UnixSid(AccountKind::kGroup, *ids[i].group)}});
    }
    return answer;
}

// This machine's local groups, also those that have Everyone in them, which winbind does not count.
WinbindAnswer AddLocalGroups(Winbind& winbind, const std::vector<WinbindDomain>& domains,
                             std::vector<nt::Sid>& sids) {
    const std::vector<nt::Sid> members = sids;
    for (const WinbindDomain& domain : domains) {
        if (!domain.isLocal) continue;
        std::vector<nt::Sid> aliases;
        const WinbindAnswer answer = winbind.FindAliases(domain.sid, members, aliases);
        if (answer != WinbindAnswer::kFound) return answer;
        AddNew(sids, aliases);
    }
    return WinbindAnswer::kFound;
}

// Whether groups are as of a logon can be seen in Samba's records, which are root's.
GroupsOrigin OriginOf(const nt::Sid& account) {
    bool hasLoggedOn = false;
    if (geteuid() != 0 || FindRecordOfLogon(account, hasLoggedOn) != ERROR_SUCCESS)
        return GroupsOrigin::kDomain;
    return hasLoggedOn ? GroupsOrigin::kLastLogon : GroupsOrigin::kWithoutLogon;
}

}  // namespace

// While the controller is away winbind's answer is a success with fewer groups. So the domain must be seen to
// answer before and after.
WinbindAnswer DomainAccounts::CollectGroups(Winbind& winbind, const nt::Sid& account,
                                            const WinbindDomain& domain,
                                            const std::vector<std::uint8_t>& ticket,
                                            std::vector<nt::Sid>& sids) {
    const auto check = [&](WinbindAnswer answer) {
        if (answer != WinbindAnswer::kFound) return answer;
        return domain.isOwn ? winbind.Ping(domain.name) : WinbindAnswer::kFound;
    };
    WinbindAnswer answer = check(DomainLink::Verify(winbind, domain.sid));
    if (answer != WinbindAnswer::kFound) return WinbindAnswer::kFailed;
    std::vector<nt::Sid> groups;
    answer = ticket.empty() ? winbind.FindGroupsOfUser(account, groups)
                            : winbind.FindGroupsOfTicket(ticket, groups);
    if (answer != WinbindAnswer::kFound) return answer;
    if (std::ranges::find(groups, account) == groups.end()) return WinbindAnswer::kFailed;
    // What says how the account has come (S-1-18-...) is as in the logon that was made up for the question.
    std::erase_if(groups, [](const nt::Sid& sid) { return sid.Authority() != 5; });
    std::vector<nt::Sid> found = {account};
    AddNew(found, groups);
    answer = AddHostSids(winbind, account, found);
    if (answer != WinbindAnswer::kFound) return WinbindAnswer::kFailed;
    AddNew(found, {{nt::Sid(1, {0}), nt::Sid(5, {11})}});  // Everyone, Authenticated Users
    answer = AddLocalGroups(winbind, link.Domains(), found);
    if (answer != WinbindAnswer::kFound) return WinbindAnswer::kFailed;
    if (check(DomainLink::Verify(winbind, domain.sid)) != WinbindAnswer::kFound)
        return WinbindAnswer::kFailed;
    sids = std::move(found);
    return WinbindAnswer::kFound;
}

DWORD DomainAccounts::CheckAnswers(const WinbindDomain& domain) {
    if (const DWORD error = CheckDomain(kLookupTime); error != ERROR_SUCCESS) return error;
    const auto asked = link.Ask<int>(
        Patience::For(kLookupTime), kLookupTime,
        [sid = domain.sid](Winbind& winbind, int&) { return DomainLink::Verify(winbind, sid); });
    return asked.answer == WinbindAnswer::kFound ? ERROR_SUCCESS : kDomainOffline;
}

DWORD DomainAccounts::FindGroups(const nt::Sid& account, GroupsRequest request, AccountGroups& groups) {
    if (!IsOfDomain(account)) return ERROR_NONE_MAPPED;
    AccountName name;
    if (const DWORD error = FindName(account, kGroupsTime, name); error != ERROR_SUCCESS)
        return error == kNameNotYet ? kDomainOffline : error;
    const std::optional<WinbindDomain> domain = DomainOf(account);
    if (!domain || domain->isLocal) return ERROR_NONE_MAPPED;
    const bool isExact = request == GroupsRequest::kExact;
    if (name.use != SidTypeUser && name.use != SidTypeComputer)
        return isExact ? ERROR_NOT_SUPPORTED : ERROR_NONE_MAPPED;
    if (const DWORD error = CheckAnswers(*domain); error != ERROR_SUCCESS) return error;
    std::vector<std::uint8_t> ticket;
    if (isExact) {
        const DWORD error = TakeLogonTicket(name.name + '@' + domain->dnsName, ticket);
        if (error != ERROR_SUCCESS) return error;
    }
    const auto asked = link.Ask<std::vector<nt::Sid>>(
        Patience::For(kGroupsTime), kGroupsTime,
        [this, account, domain, ticket](Winbind& winbind, std::vector<nt::Sid>& sids) {
            return CollectGroups(winbind, account, *domain, ticket, sids);
        });
    if (asked.answer == WinbindAnswer::kFailed) return kDomainOffline;
    if (asked.answer != WinbindAnswer::kFound) return ERROR_NONE_MAPPED;
    groups = {asked.value, isExact ? GroupsOrigin::kExact : OriginOf(account)};
    return ERROR_SUCCESS;
}

}  // namespace permora::host
