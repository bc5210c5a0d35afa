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

TEST_F(SambaTest, TheServerServesWhatTheCommandsWrite) {
    ASSERT_EQ(server->Smbclient("mkdir team; mkdir team/sub").exitCode, 0);
    const std::string team = server->Path("team");
    ASSERT_EQ(SetSddl(team, "D:P(A;OICI;FA;;;BA)"), 0U);
    ASSERT_EQ(SetSddl(server->Path("team/sub"), "D:"), 0U);
    EXPECT_EQ(RunCli({"grant", team, "--account", "Everyone", "--rights", "Read permissions"}).exitCode, 0);
    EXPECT_EQ(RunCli({"deny", team, "--account", "Guests", "--rights", "Delete", "--scope", "4"}).exitCode,
              0);
    EXPECT_EQ(server->ServedEntries("team"),
              "S-1-5-32-546:1/0xb/0x00110000\n"
              "S-1-1-0:0/0x3/0x00120000\n"
              "S-1-5-32-544:0/0x3/0x001f01ff\n");
    EXPECT_EQ(server->ServedEntries("team/sub"),
              "S-1-5-32-546:1/0x13/0x00110000\n"
              "S-1-1-0:0/0x13/0x00120000\n"
              "S-1-5-32-544:0/0x13/0x001f01ff\n");

    EXPECT_EQ(RunCli({"inherit", server->Path("team/sub"), "--remove"}).exitCode, 0);
    EXPECT_EQ(
        RunCli({"grant", server->Path("team/sub"), "--account", "root", "--rights", "full control"}).exitCode,
        0);
    // The account is the one that the server means by that name.
    const CommandResult served =
        RunCommand({"smbcacls", "//127.0.0.1/share", "team/sub", "-U", "root%secret"});
    EXPECT_THAT(served.output, HasSubstr("ACL:PERMORATEST\\root:ALLOWED/OI|CI/FULL\n"));
    EXPECT_EQ(server->ServedEntries("team/sub").find('\n') + 1, server->ServedEntries("team/sub").size());
}

TEST_F(SambaTest, TheCommandsReadWhatAClientWrites) {
    ASSERT_EQ(server->Smbclient("mkdir written").exitCode, 0);
    const std::string path = server->Path("written");
    const CommandResult set =
        server->Smbcacls("written", {"--set", "ACL:S-1-5-32-546:1/0/0x00010000,ACL:S-1-1-0:0/3/0x001200a9"});
    ASSERT_EQ(set.exitCode, 0) << set.output;
    EXPECT_EQ(EntriesOf(path), "Deny S-1-5-32-546 0x10000 0\nAllow S-1-1-0 0x200a9 3\n");
    EXPECT_EQ(RunCli({"revoke", path, "--account", "Guests"}).exitCode, 0);
    EXPECT_EQ(server->ServedEntries("written"), "S-1-1-0:0/0x3/0x001200a9\n");
}

TEST_F(SambaTest, TheServerServesTheOwnersOfATree) {
    ASSERT_EQ(
        server->Smbclient("mkdir owned; mkdir owned/sub; put /etc/hostname owned/sub/file; mkdir beside")
            .exitCode,
        0);
    std::filesystem::create_directory_symlink(server->Path("beside"), server->Path("owned/sub/link"));
    const auto servedOwner = [](const std::string& name) {
        const std::string text = server->Smbcacls(name).output;
        const std::size_t start = text.find("OWNER:");
        return start == std::string::npos ? text : text.substr(start, text.find('\n', start) - start);
    };
    const std::string before = servedOwner("beside");
    EXPECT_EQ(RunCli({"owner", server->Path("owned"), "--set", "Guests", "--tree"}).exitCode, 0);
    for (const char* name : {"owned", "owned/sub", "owned/sub/file"})
        EXPECT_EQ(servedOwner(name), "OWNER:S-1-5-32-546") << name;
    EXPECT_EQ(servedOwner("beside"), before);
    // The other way round.
    ASSERT_EQ(server->Smbcacls("owned/sub", {"--chown", "root"}).exitCode, 0);
    EXPECT_EQ(RunCli({"owner", server->Path("owned/sub")}).output,
              server->Path("owned/sub") + ": PERMORATEST\\root\n");
}

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
