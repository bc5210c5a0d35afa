#include "survey/group_people.h"

#include <string>
#include <unordered_set>
#include <utility>

#include "platform/accounts.h"
#include "platform/group_members.h"
#include "survey/sid_key.h"

namespace permora {
namespace {

bool IsSidOfGroup(const nt::Sid& sid) {
    AccountName name;
    FindAccountName(sid, kLookupTime, name);
    return IsGroup(name.use);
}

GroupDirectory::Answer AskSystem(const nt::Sid& group) {
    GroupMembers members;
    GroupDirectory::Answer answer;
    answer.error = FindGroupMembers(group, members);
    answer.isOpen = members.isOpen;
    for (const nt::Sid& sid : members.sids)
        answer.members.push_back({sid, IsSidOfGroup(sid)});
    return answer;
}

}  // namespace

GroupDirectory::GroupDirectory() : membersOf(AskSystem) {}

const GroupDirectory::Answer& GroupDirectory::Ask(const nt::Sid& group) {
    const auto [place, isNew] = answers.try_emplace(SidKey(group));
    if (isNew) place->second = membersOf(group);
    return place->second;
}

GroupPeople GroupDirectory::PeopleOf(const nt::Sid& group) {
    GroupPeople found;
    // Level by level, so that the first way to a person is a shortest one.
    std::vector<GroupPerson> groups = {{group, {}}};
    std::unordered_set<std::string> seen = {SidKey(group)};
    for (std::size_t next = 0; next < groups.size(); ++next) {
        const GroupPerson current = groups[next];  // adding moves them
        const Answer& answer = Ask(current.sid);
        if (answer.isOpen) found.open.push_back(current.sid);
        if (answer.error != ERROR_SUCCESS) found.unknown.push_back({current.sid, answer.error});
        std::vector<nt::Sid> through = current.through;
        if (next > 0) through.push_back(current.sid);
        for (const Member& member : answer.members) {
            if (!seen.insert(SidKey(member.sid)).second) continue;
            (member.isGroup ? groups : found.people).push_back({member.sid, through});
        }
    }
    return found;
}

}  // namespace permora
