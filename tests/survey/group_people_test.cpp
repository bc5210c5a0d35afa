#include "survey/group_people.h"

#include <gtest/gtest.h>

#include <map>

namespace permora {
namespace {

// Accounts are "U1", groups "G1"; by number, since names play no part.
nt::Sid Group(std::uint32_t number) {
    return {5, {21, 1, 2, 3, 2000 + number}};
}
nt::Sid User(std::uint32_t number) {
    return {5, {21, 1, 2, 3, 1000 + number}};
}

std::string Text(const nt::Sid& sid) {
    const std::uint32_t last = sid.SubAuthority(sid.SubAuthorityCount() - 1);
    return last >= 2000 ? "G" + std::to_string(last - 2000) : "U" + std::to_string(last - 1000);
}

std::string Text(const GroupPeople& people) {
    std::string text;
    for (const GroupPerson& person : people.people) {
        text += Text(person.sid);
        for (const nt::Sid& group : person.through)
            text += '<' + Text(group);
        text += ' ';
    }
    for (const nt::Sid& group : people.open)
        text += "open:" + Text(group) + ' ';
    for (const GroupPeople::Unknown& unknown : people.unknown)
        text += "unknown:" + Text(unknown.group) + '=' + std::to_string(unknown.error) + ' ';
    return text;
}

TEST(GroupPeopleTest, PeopleAreFoundThroughGroupsInGroups) {
    std::map<std::uint32_t, GroupDirectory::Answer> groups;
    groups[1].members = {{User(1), false}, {Group(2), true}, {Group(3), true}};
    groups[2].members = {{User(2), false}, {Group(1), true}, {Group(4), true}};  // in each other
    groups[3].members = {{User(1), false}, {User(3), false}};
    groups[4].members = {{User(3), false}, {User(4), false}};
    groups[5].isOpen = true;
    groups[6].members = {{User(1), false}, {Group(5), true}, {Group(7), true}};
    groups[7].error = ERROR_ACCESS_DENIED;
    int asked = 0;
    GroupDirectory directory([&](const nt::Sid& group) {
        ++asked;
        return groups[group.SubAuthority(4) - 2000];
    });
    EXPECT_EQ(Text(directory.PeopleOf(Group(1))), "U1 U2<G2 U3<G3 U4<G2<G4 ");
    EXPECT_EQ(Text(directory.PeopleOf(Group(5))), "open:G5 ");
    EXPECT_EQ(Text(directory.PeopleOf(Group(6))), "U1 open:G5 unknown:G7=5 ");
    EXPECT_EQ(asked, 7);
    EXPECT_EQ(Text(directory.PeopleOf(Group(2))), "U2 U1<G1 U3<G4 U4<G4 ");
    EXPECT_EQ(asked, 7);
}

}  // namespace
}  // namespace permora
