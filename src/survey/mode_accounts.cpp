#include "survey/mode_accounts.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "platform/accounts.h"
#include "platform/group_members.h"
#include "survey/sid_key.h"

namespace permora {
namespace {

// Whoever connects to a server is in these; who serves the machine itself does not connect.
bool IsOfConnected(const nt::Sid& group) {
    static const std::array<nt::Sid, 3> kGroups = {nt::Sid(1, {0}), nt::Sid(5, {2}), nt::Sid(5, {11})};
    return std::ranges::find(kGroups, group) != kGroups.end();
}

}  // namespace

const MeantPeople& SystemModeAccounts::PeopleOf(const nt::Sid& account) {
    const auto [place, isNew] = people.try_emplace(SidKey(account));
    MeantPeople& meant = place->second;
    if (!isNew) return meant;
    AccountName name;
    const NameAnswer answer = FindAccountName(account, kLookupTime, name);
    if (answer == NameAnswer::kNotYet || answer == NameAnswer::kFailed) {
        meant.error = kDomainOffline;
    } else if (answer == NameAnswer::kKnown && !IsGroup(name.use)) {
        meant.people.push_back(account);
    } else if (answer == NameAnswer::kKnown) {
        const GroupPeople members = directory.PeopleOf(account);
        for (const GroupPerson& person : members.people)
            meant.people.push_back(person.sid);
        std::ranges::copy_if(members.open, std::back_inserter(meant.open), IsOfConnected);
        if (!members.unknown.empty()) meant.error = members.unknown.front().error;
        if (meant.people.size() > most) {
            meant.people.resize(most);
            meant.error = ERROR_MORE_DATA;
        }
    }
    return meant;  // nobody, when there is no such account
}

DWORD SystemModeAccounts::FindHost(const nt::Sid& person, HostAccount& found) {
    const auto [place, isNew] = hosts.try_emplace(SidKey(person));
    if (isNew) place->second.first = FindHostAccount(person, place->second.second);
    if (place->second.first == ERROR_SUCCESS) found = place->second.second;
    return place->second.first;
}

DWORD SystemModeAccounts::FindSids(const nt::Sid& account, std::vector<nt::Sid>& sids) {
    const auto [place, isNew] = groups.try_emplace(SidKey(account));
    auto& [error, kept] = place->second;
    if (isNew) {
        AccountGroups found;
        error = FindAccountGroups(account, GroupsRequest::kUsual, found);
        kept = std::move(found.sids);
    }
    if (error == ERROR_SUCCESS) sids = kept;
    return error;
}

}  // namespace permora
