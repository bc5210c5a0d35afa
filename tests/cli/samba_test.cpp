// The commands in a folder that a real Samba server shares, with smbcacls as judge and as the other writer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "tests/cli/cli_program.h"
#include "tests/support/samba_fixture.h"

namespace permora::test {
namespace {

using testing::HasSubstr;

class SambaTest : public WithSambaServer {};

// Whether a user of the server gets into a share; the client's output when not.
std::string Enter(const std::string& share, const std::string& user) {
    const CommandResult client =
        RunCommand({"smbclient", "//127.0.0.1/" + share, "-U", user + "%secret", "-m", "SMB3", "-c", "ls"});
    return client.exitCode == 0 ? "in" : client.output;
}

TEST_F(SambaTest, TheServerLetsInWhomTheListOfAShareLetsIn) {
    ASSERT_EQ(RunCommand({"smbpasswd", "-a", "-s", "daemon"}, "secret\nsecret\n").exitCode, 0);
    ASSERT_TRUE(std::filesystem::create_directory("/run/samba/served"));
    const CommandResult added = RunCommand(
        {"net", "conf", "addshare", "guarded", "/run/samba/served", "writeable=y", "guest_ok=n", "a remark"});
    ASSERT_EQ(added.exitCode, 0) << added.output;
    EXPECT_EQ(Enter("guarded", "daemon"), "in");

    const CommandResult denied = RunCli(
        {"deny", "--share", "GUARDED", "--account", "PERMORATEST\\daemon", "--rights", "Full control"});
    EXPECT_EQ(denied.exitCode, 0) << denied.output;
    EXPECT_THAT(Enter("guarded", "daemon"), HasSubstr("NT_STATUS_ACCESS_DENIED"));
    EXPECT_EQ(Enter("guarded", "root"), "in");
    EXPECT_THAT(
        RunCommand({"sharesec", "guarded", "--view"}).output,
        testing::ContainsRegex("ACL:S-1-5-21-[0-9-]+:DENIED/0x0/FULL\nACL:S-1-1-0:ALLOWED/0x0/FULL\n"));
    EXPECT_THAT(RunCli({"shares", "show", "guarded"}).output,
                HasSubstr("  Path: C:\\run\\samba\\served\n  Remark: a remark\n  Users: unlimited\n"));

    EXPECT_EQ(RunCli({"revoke", "--share", "guarded", "--account", "daemon"}).exitCode, 0);
    EXPECT_EQ(Enter("guarded", "daemon"), "in");
    EXPECT_EQ(RunCli({"revoke", "--share", "guarded", "--account", "Everyone"}).exitCode, 0);
    EXPECT_THAT(Enter("guarded", "root"), HasSubstr("NT_STATUS_ACCESS_DENIED"));
}

}  // namespace
}  // namespace permora::test
