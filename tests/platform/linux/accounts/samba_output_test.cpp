#include "platform/linux/accounts/samba_output.h"

#include <gmock/gmock.h>

namespace permora::host {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kMachine = "S-1-5-21-11-22-33";

std::string User(const std::string& name, const std::string& sid, const std::string& comment = "") {
    return "---------------\nUnix username:        " + name +
           "\nNT username:          \nAccount Flags:        [U          ]\nUser SID:             " + sid +
           "\nPrimary Group SID:    " + kMachine + "-513\nAccount desc:         " + comment + "\n";
}

std::string Group(const std::string& name, const std::string& sid, const std::string& id,
                  const std::string& type = "Local Group") {
    return name + "\n\tSID       : " + sid + "\n\tUnix gid  : " + id +
           "\n\tUnix group: users\n\tGroup type: " + type + "\n\tComment   : Local Unix group\n";
}

std::vector<std::string> Shown(const std::vector<SambaAccount>& accounts) {
    std::vector<std::string> shown;
    shown.reserve(accounts.size());
    for (const SambaAccount& account : accounts) {
        shown.push_back(account.name + ' ' + account.sid.ToText() + ' ' +
                        std::to_string(static_cast<int>(account.use)));
        if (account.id) shown.back() += ' ' + std::to_string(*account.id);
    }
    return shown;
}

std::vector<std::string> Users(const std::string& listing) {
    return Shown(ParseUserList(listing, *nt::Sid::FromText(kMachine)));
}

std::vector<std::string> Groups(const std::string& listing) {
    return Shown(ParseGroupMap(listing));
}

TEST(SambaOutputTest, ReadsTheMachineFromOneExactLineOnly) {
    const auto machine = ParseLocalSid("SID for domain PERM-BOX is: " + kMachine + "\n");
    ASSERT_TRUE(machine);
    EXPECT_EQ(machine->name, "PERM-BOX");
    EXPECT_EQ(machine->sid.ToText(), kMachine);

    for (const std::string answer :
         {"", "\n", "SID for domain BOX is: ", "SID for domain  is: S-1-5-21-1-2-3\n",
          "SID for domain BOX is: S-1-5-21-1-2-3 trailing\n", "SID for domain BOX is: S-1-5-21-1-2\n",
          "SID for domain BOX is: S-1-5-21-1-2-3-4\n", "SID for domain BOX is: S-1-5-32-1-2-3\n",
          "SID for domain BOX is: S-1-22-21-1-2-3\n", "SID for domain B\\X is: S-1-5-21-1-2-3\n",
          "SID for domain B\xFFX is: S-1-5-21-1-2-3\n", "warning\nSID for domain BOX is: S-1-5-21-1-2-3\n",
          "SID for domain BOX is: S-1-5-21-1-2-3\nSID for domain BOX is: S-1-5-21-4-5-6\n",
          "SID for local machine BOX is: S-1-5-21-1-2-3\n"}) {
        EXPECT_FALSE(ParseLocalSid(answer)) << answer;
    }
}

TEST(SambaOutputTest, ReadsUsersBelowTheMachine) {
    EXPECT_THAT(Users(User("root", kMachine + "-1000") + User("alice b", kMachine + "-1001", "a\nb")),
                ElementsAre("root " + kMachine + "-1000 1", "alice b " + kMachine + "-1001 1"));
    EXPECT_THAT(Users(""), IsEmpty());
}

TEST(SambaOutputTest, LeavesOutUsersOfWhomAnythingIsWrong) {
    const std::string sid = kMachine + "-1000";
    for (const std::string& listing :
         {User("", sid), User("a\\b", sid), User("a\xC0\xAF", sid), User("a\tb", sid),
          User("a", "S-1-5-21-11-22-34-1000"), User("a", kMachine), User("a", kMachine + "-1-2"),
          User("a", sid + "x"), User("a", ""), User("a", sid).substr(16), User("a", sid).substr(0, 80)}) {
        EXPECT_THAT(Users(listing + "\n" + User("b", kMachine + "-7")), ElementsAre("b " + kMachine + "-7 1"))
            << listing;
    }
}

// Everyone who may write a description can make it look like another record.
TEST(SambaOutputTest, BelievesNoUserThatIsListedTwice) {
    const std::string forged = "x\n" + User("root", kMachine + "-1005");
    EXPECT_THAT(Users(User("root", kMachine + "-1000") + User("mallory", kMachine + "-1005", forged) +
                      User("bob", kMachine + "-1006")),
                ElementsAre("bob " + kMachine + "-1006 1"));
}

TEST(SambaOutputTest, ReadsMappedGroupsAndLeavesOutTheRest) {
    EXPECT_THAT(Groups(Group("My Users", kMachine + "-1002", "100") +
                       Group("Guests", kMachine + "-514", "60", "Domain Group") +
                       Group("Administrators", "S-1-5-32-544", "3000000")),
                ElementsAre("My Users " + kMachine + "-1002 4 100", "Guests " + kMachine + "-514 2 60",
                            "Administrators S-1-5-32-544 4 3000000"));
    for (const std::string& listing :
         {Group("a", kMachine + "-1", "4294967295"), Group("a", kMachine + "-1", "-1"),
          Group("a", kMachine + "-1", "4294967296"), Group("a", kMachine + "-1", "1x"),
          Group("a", kMachine + "-1", ""), Group("a", "S-1-", "1"), Group("a\\b", kMachine + "-1", "1"),
          Group("", kMachine + "-1", "1"),
          Group("a", kMachine + "-1", "1") + Group("b", kMachine + "-1", "2"),
          Group("a", kMachine + "-1", "1").substr(0, 50)}) {
        EXPECT_THAT(Groups(listing), IsEmpty()) << listing;
    }
}

TEST(SambaOutputTest, ReadsMembersAndLeavesOutWhatIsNoSid) {
    const std::vector<nt::Sid> members = ParseMembers("S-1-5-21-1-2-3-1001\n\nroot\nS-1-\nS-1-5-11\n");
    ASSERT_EQ(members.size(), 2U);
    EXPECT_EQ(members[0].ToText() + members[1].ToText(), "S-1-5-21-1-2-3-1001S-1-5-11");
}

TEST(SambaOutputTest, ReadsParametersOfTheGlobalSectionOnly) {
    const std::string listing =
        "# Global parameters\n[global]\n\tguest account = \n\tprivate dir = /srv/a b\n[share]\n\tpath = /x\n";
    EXPECT_EQ(ParseGlobalParameter(listing, "private dir"), "/srv/a b");
    for (const char* parameter : {"guest account", "path", "private", "dir"})
        EXPECT_EQ(ParseGlobalParameter(listing, parameter), "") << parameter;
}

}  // namespace
}  // namespace permora::host
