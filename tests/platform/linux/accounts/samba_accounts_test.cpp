// Accounts on a machine that runs Samba, with Samba itself as the judge.
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <memory>
#include <optional>
#include <sstream>
#include <utility>

#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/accounts/machine.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "tests/support/samba_server.h"

namespace permora::host {
namespace {

using test::RunCommand;
using testing::HasSubstr;
using testing::StartsWith;

class SambaAccountsTest : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        if (!SkipReason().empty()) return;
        server = std::make_unique<test::SambaServer>();
        // The first relative ids go to root and daemon; the host's user "games" has none.
        EXPECT_EQ(RunCommand({"smbpasswd", "-a", "-s", "daemon"}, "secret\nsecret\n").exitCode, 0);
        EXPECT_EQ(Map({"ntgroup=My Users", "unixgroup=users", "type=local"}), 0);
        EXPECT_EQ(Map({"ntgroup=Dom Games", "unixgroup=games", "rid=514", "type=domain"}), 0);
        // It must ask before this process does. It keeps the answer.
        ordinaryUsersView = test::AsOrdinaryUser([] {
            return std::string(MachineSid() == nullptr ? "no machine" : "machine") + ", " +
                   SidForUser(0).ToText() + ", " + SidForGroup(0).ToText();
        });
    }
    static void TearDownTestSuite() { server.reset(); }

    void SetUp() override {
        if (!SkipReason().empty()) GTEST_SKIP() << SkipReason();
        ASSERT_EQ(server->Problem(), "");
        ASSERT_EQ(ThisMachine().source, RelativeIdSource::kSamba);
    }

    static std::string SkipReason() {
        for (const char* program : {"net", "pdbedit", "rpcclient"})
            if (std::string reason = test::MissingProgram(program); !reason.empty()) return reason;
        return test::SambaServer::SkipReason();
    }

    static int Map(const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {"net", "groupmap", "add"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunCommand(arguments).exitCode;
    }

    // The server's answer to each command, one line.
    static std::vector<std::string> AskServer(const std::vector<std::string>& commands) {
        std::string all;
        for (const std::string& command : commands)
            all += (all.empty() ? "" : ";") + command;
        const std::string output =
            RunCommand({"rpcclient", "127.0.0.1", "-U", "root%secret", "-c", all}).output;
        std::istringstream stream(output);
        std::vector<std::string> lines;
        for (std::string line; std::getline(stream, line);)
            lines.push_back(line);
        EXPECT_EQ(lines.size(), commands.size()) << output;
        lines.resize(commands.size());
        return lines;
    }

    inline static std::unique_ptr<test::SambaServer> server;
    inline static std::optional<std::string> ordinaryUsersView;
};

TEST_F(SambaAccountsTest, SidsHaveTheNamesThatTheServerGives) {
    std::vector<std::string> sids = {"S-1-22-1-0",   "S-1-22-1-1",   "S-1-22-2-0",
                                     "S-1-22-2-100", "S-1-5-32-544", "S-1-22-1-0-0"};
    // Given by Samba, its own, and computed ones, which mean nothing where Samba gives its own.
    for (const int relativeId : {1000, 1001, 1002, 501, 513, 514, 500, 1003, 1010, 1011})
        sids.push_back(MachineSid()->ToText() + "-" + std::to_string(relativeId));
    std::vector<std::string> commands;
    std::vector<std::string> shown;
    for (const std::string& sid : sids) {
        Account account;
        const DWORD error = FindAccountOfSid(nt::Sid::FromText(sid).value(), account);
        const std::string text =
            error == ERROR_NONE_MAPPED ? "*unknown*\\*unknown*" : account.domain + "\\" + account.name;
        commands.push_back("lookupsids " + sid);
        shown.push_back(sid + " " + text + " (" + std::to_string(account.use) + ")");
    }
    EXPECT_EQ(shown, AskServer(commands));
}

TEST_F(SambaAccountsTest, NamesHaveTheSidsThatTheServerGives) {
    const std::vector<std::string> names = {
        "root", "ROOT", "daemon", "games", "sudo", "My Users", "None", "Administrators", "everyone",
        "PERMORATEST", "PERMORATEST\\root", "permoratest\\my users", "PERMORATEST\\Dom Games",
        "Unix User\\root", "unix user\\GAMES", "Unix Group\\users", "BUILTIN\\Users",
        // Accounts that Samba does not keep are not the machine's.
        "PERMORATEST\\games", "PERMORATEST\\sudo", "Unix User\\54321", "ELSEWHERE\\root", "nobody at all"};
    std::vector<std::string> commands;
    for (const std::string& name : names)
        commands.push_back("lookupnames \"" + name + "\"");
    const std::vector<std::string> answers = AskServer(commands);
    for (std::size_t i = 0; i < names.size(); ++i) {
        nt::Sid sid;
        if (FindAccountSid(names[i], sid) == ERROR_NONE_MAPPED)
            EXPECT_EQ(answers[i], "result was NT_STATUS_NONE_MAPPED") << names[i];
        else
            EXPECT_THAT(answers[i], StartsWith(names[i] + " " + sid.ToText() + " (")) << names[i];
    }
}

TEST_F(SambaAccountsTest, OwnersAreWhoTheServerSaysTheyAre) {
    const std::string file = server->Path("file");
    ASSERT_EQ(RunCommand({"touch", file}).exitCode, 0);
    // Each in the databases and not.
    for (const auto& [user, group] :
         {std::pair("root", "root"), std::pair("daemon", "users"), std::pair("games", "sudo")}) {
        const uid_t userId = getpwnam(user)->pw_uid;
        const gid_t groupId = getgrnam(group)->gr_gid;
        ASSERT_EQ(chown(file.c_str(), userId, groupId), 0);
        const std::string answer = server->SmbcaclsOnPlainShare("file").output;
        EXPECT_THAT(answer, HasSubstr("OWNER:" + SidForUser(userId).ToText() + "\n")) << user;
        EXPECT_THAT(answer, HasSubstr("GROUP:" + SidForGroup(groupId).ToText() + "\n")) << group;
        EXPECT_EQ(UserForSid(SidForUser(userId)), userId);
        EXPECT_EQ(GroupForSid(SidForGroup(groupId)), groupId);
    }
}

// Computed ids would mean other accounts than Samba's, so without Samba's answer there are none.
TEST_F(SambaAccountsTest, WhoMayNotReadTheDatabasesSeesTheHostsNumbers) {
    EXPECT_EQ(ordinaryUsersView, "no machine, S-1-22-1-0, S-1-22-2-0");
}

}  // namespace
}  // namespace permora::host
