// The commands in a folder that a real Samba server shares, with smbcacls as judge and as the other writer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "history/history.h"
#include "platform/api/errors.h"
#include "shares/share_security.h"
#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/samba_fixture.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::AllOf;
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

TEST_F(SambaTest, AnUndoGivesAShareTheListThatItHad) {
    ASSERT_EQ(RunCommand({"smbpasswd", "-a", "-s", "daemon"}, "secret\nsecret\n").exitCode, 0);
    ASSERT_TRUE(std::filesystem::create_directory("/run/samba/undone"));
    const CommandResult added =
        RunCommand({"net", "conf", "addshare", "undone", "/run/samba/undone", "writeable=y", "guest_ok=n"});
    ASSERT_EQ(added.exitCode, 0) << added.output;
    EXPECT_EQ(Enter("undone", "daemon"), "in");
    const TemporaryFolder folder;
    const ScopedVariable state("XDG_STATE_HOME", folder.Path());
    DescriptorChange shared;
    ASSERT_EQ(ReadStoredShare("undone", shared.before), DWORD{ERROR_SUCCESS});
    ASSERT_EQ(
        RunCli({"deny", "--share", "undone", "--account", "daemon", "--rights", "Full control"}).exitCode, 0);
    ASSERT_EQ(ReadStoredShare("undone", shared.after), DWORD{ERROR_SUCCESS});
    std::unique_ptr<History> history;
    ASSERT_EQ(History::Open(History::UsualPath(), history), DWORD{ERROR_SUCCESS});
    const auto change = history->Begin(ChangeKind::kShare);
    std::uint64_t top = 0;
    ASSERT_EQ(change->BeginTop({.path = "undone", .isFolder = false, .mark = {}}, top), DWORD{ERROR_SUCCESS});
    ASSERT_EQ(change->Record(top, {&shared, 1}), DWORD{ERROR_SUCCESS});
    change->End();
    EXPECT_THAT(Enter("undone", "daemon"), HasSubstr("NT_STATUS_ACCESS_DENIED"));

    const CommandResult undone = RunCli({"undo", std::to_string(change->Number()), "--yes"});
    EXPECT_EQ(undone.output, "put back: 1, already as it was: 0, left alone: 0\n");
    EXPECT_EQ(Enter("undone", "daemon"), "in");
    StoredSecurity now;
    EXPECT_EQ(ReadStoredShare("undone", now), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(now, shared.before);
    EXPECT_EQ(RunCli({"undo", std::to_string(change->Number() + 1), "--yes"}).exitCode, 0);
    EXPECT_THAT(Enter("undone", "daemon"), HasSubstr("NT_STATUS_ACCESS_DENIED"));
    ASSERT_EQ(RunCommand({"net", "conf", "delshare", "undone"}).exitCode, 0);
    EXPECT_THAT(RunCli({"undo", std::to_string(change->Number()), "--yes"}).output,
                HasSubstr("permora-cli: undone: left alone: "));
}

// Files of the share, which a user of the server reads and writes.
class SambaFilesTest : public SambaTest {
  protected:
    void SetUp() override {
        SambaTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        ASSERT_EQ(RunCommand({"smbpasswd", "-a", "-s", "daemon"}, "secret\nsecret\n").exitCode, 0);
        // The kernel looks at the way to the share as well.
        std::filesystem::permissions(std::filesystem::path(server->Root()).parent_path(),
                                     std::filesystem::perms(0755));
        std::ofstream(local) << "text\n";
    }

    // A new file with a list that is full control for the administrators and what smbcacls makes of
    // `entries`.
    std::string MakeFile(const std::string& name, const std::vector<std::string>& entries) {
        EXPECT_EQ(server->Smbclient("put " + local + " " + name).exitCode, 0);
        EXPECT_EQ(SetDescriptorText(server->Path(name), "D:P(A;;FA;;;BA)"), 0U);
        for (const std::string& entry : entries) {
            const CommandResult added = server->Smbcacls(name, {"--add", entry});
            EXPECT_EQ(added.exitCode, 0) << added.output;
        }
        return server->Path(name);
    }

    // The possible operations of the user on the file: "get", "put", both or nothing.
    std::string Uses(const std::string& name) {
        std::string uses;
        for (const std::string& command :
             {"get " + name + " " + local + ".copy", "put " + local + " " + name}) {
            const CommandResult client = RunCommand(
                {"smbclient", "//127.0.0.1/share", "-U", "daemon%secret", "-m", "SMB3", "-c", command});
            const bool isRefused = client.output.find("NT_STATUS_ACCESS_DENIED") != client.output.npos;
            EXPECT_EQ(client.exitCode != 0, isRefused) << client.output;
            if (!isRefused) uses += command.substr(0, 3) + ' ';
        }
        return uses;
    }

    static std::string UserSid() {
        return RunCommand({"sh", "-c", "pdbedit -L -v daemon | sed -n 's/^User SID: *//p' | tr -d '\\n'"})
            .output;
    }

    // Without order: it has no meaning among entries of one type, and the tool appends new ones.
    static std::multiset<std::string> Lines(const std::string& text) {
        std::istringstream stream(text);
        std::multiset<std::string> lines;
        for (std::string line; std::getline(stream, line);)
            lines.insert(line);
        return lines;
    }

    static void Change(const std::vector<std::string>& arguments) {
        const CommandResult changed = RunCli(arguments);
        EXPECT_EQ(changed.exitCode, 0) << changed.output;
    }

    TemporaryFolder folder;
    const std::string local = folder.Path("text");
    const std::string user = "PERMORATEST\\daemon";
};

TEST_F(SambaFilesTest, ClientsCanDoWhatAChangedListSaysAndItIsTheListOfSmbcacls) {
    const std::string all = "ALLOWED/0x0/0x1f01ff";
    const struct {
        std::vector<std::string> before;
        std::vector<std::string> command;  // before the path and the account
        std::vector<std::string> after;
        const char* uses;
    } cases[] = {
        {{all}, {"deny", "--rights", "Create files / Write data"}, {"DENIED/0x0/0x2", all}, "get "},
        {{all}, {"deny", "--rights", "Take ownership"}, {"DENIED/0x0/0x80000", all}, "get put "},
        {{all}, {"deny", "--rights", "Full control"}, {"DENIED/0x0/0x1f01ff", all}, ""},
        {{"DENIED/0x0/0x100002", all}, {"deny", "--rights", "4"}, {"DENIED/0x0/0x100006", all}, ""},
        {{}, {"grant", "--rights", "0x20089"}, {"ALLOWED/0x0/0x120089"}, "get "},
        {{"ALLOWED/0x0/0x20089"}, {"grant", "--rights", "1"}, {"ALLOWED/0x0/0x120089"}, "get "},
        {{}, {"assign", "--combination", "Read"}, {"ALLOWED/0x0/0x120089"}, "get "},
        {{}, {"assign", "--combination", "Allow all"}, {all}, "get put "},
        {{all}, {"assign", "--combination", "Read & execute"}, {"ALLOWED/0x0/0x1200a9"}, "get "},
        {{all}, {"revoke"}, {}, ""},
    };
    int number = 0;
    for (const auto& each : cases) {
        const std::string name = "ours" + std::to_string(++number);
        const auto entriesOf = [this](const std::vector<std::string>& rights) {
            std::vector<std::string> entries;
            for (const std::string& right : rights)
                entries.push_back("ACL:" + user + ":" + right);
            return entries;
        };
        std::vector<std::string> command = each.command;
        command.insert(command.end(), {MakeFile(name, entriesOf(each.before)), "--account", user});
        Change(command);
        MakeFile("theirs" + std::to_string(number), entriesOf(each.after));
        EXPECT_EQ(Lines(server->ServedEntries(name)),
                  Lines(server->ServedEntries("theirs" + std::to_string(number))))
            << ::testing::PrintToString(each.command);
        EXPECT_EQ(Uses(name), each.uses) << ::testing::PrintToString(each.command);
    }
}

TEST_F(SambaFilesTest, WhatNobodyChangesStaysBitForBit) {
    const std::string unusual = "ACL:" + user + ":DENIED/0x0/0x100000";
    const std::string odd = "ACL:" + user + ":ALLOWED/0x0/0x2ff";
    const std::string path = MakeFile("kept", {odd, unusual});
    const std::string before = server->ServedEntries("kept");
    ASSERT_THAT(before, AllOf(HasSubstr(":1/0x0/0x00100000\n"), HasSubstr(":0/0x0/0x000002ff\n")));
    Change({"grant", path, "--account", "Guests", "--rights", "Delete"});
    Change({"deny", path, "--account", "Guests", "--rights", "Read permissions"});
    Change({"revoke", path, "--account", "Guests"});
    EXPECT_EQ(server->ServedEntries("kept"), before);
}

// The server makes files with generic rights in their lists, and grants none for them.
TEST_F(SambaFilesTest, GenericRightsCountForNobodyAndGoOnDoingSo) {
    ASSERT_TRUE(std::filesystem::create_directory(server->Path("generic")));
    std::filesystem::permissions(server->Path("generic"), std::filesystem::perms::all);
    ASSERT_EQ(SetDescriptorText(server->Path("generic"), "D:P(A;OICIIO;GA;;;" + UserSid() + ")(A;;FA;;;WD)"),
              0U);
    ASSERT_EQ(server->Smbclient("put " + local + " generic/made").exitCode, 0);
    const std::string path = server->Path("generic/made");
    EXPECT_THAT(server->ServedEntries("generic/made"), HasSubstr(UserSid() + ":0/0x10/0x10000000\n"));
    EXPECT_EQ(Uses("generic/made"), "");
    EXPECT_THAT(RunCli({"effective", path, "--account", user}).output,
                AllOf(HasSubstr("Permission: None\n"), HasSubstr("Note: generic rights, which stand")));

    Change({"inherit", path, "--copy"});
    Change({"grant", path, "--account", "Guests", "--rights", "Read attributes"});
    EXPECT_THAT(server->ServedEntries("generic/made"), HasSubstr(UserSid() + ":0/0x0/0x10000000\n"));
    EXPECT_EQ(Uses("generic/made"), "");
    Change({"grant", path, "--account", user, "--rights", "0x1200a9"});
    EXPECT_EQ(Uses("generic/made"), "get ") << "and no full control";
}

TEST_F(SambaFilesTest, AssignSaysWhatGroupsAndOtherSidsLeaveToTheAccount) {
    const std::string path = MakeFile("left", {"ACL:" + user + ":ALLOWED/0x0/FULL"});
    const std::string unixSid = RunCommand({"sh", "-c", "printf S-1-22-1-%s $(id -u daemon)"}).output;
    for (const std::string& entry :
         {"ACL:" + unixSid + ":ALLOWED/0x0/0x120089", std::string("ACL:Everyone:ALLOWED/0x0/0x116")})
        ASSERT_EQ(server->Smbcacls("left", {"--add", entry}).exitCode, 0);
    const std::vector<std::string> denyAll = {"assign", path, "--account", user, "--combination", "Deny all"};
    const CommandResult denied = RunCli(denyAll);
    EXPECT_EQ(denied.exitCode, 0) << denied.output;
    EXPECT_THAT(
        denied.output,
        AllOf(HasSubstr(": changed\n  " + user + " has:\n"),
              HasSubstr("    through Unix User\\daemon (Not inherited): List folder / Read data, Read "
                        "attributes, Read extended attributes, Read permissions\n"),
              HasSubstr("    through Everyone (Not inherited): Create files / Write data, Create folders"
                        " / Append data, Write attributes, Write extended attributes\n")));
    EXPECT_EQ(Uses("left"), "get put ");
    Change({"revoke", path, "--account", "Everyone"});
    Change({"revoke", path, "--account", unixSid});
    EXPECT_THAT(RunCli(denyAll).output, HasSubstr("  " + user + " has no rights\n"));
    EXPECT_EQ(Uses("left"), "");
}

}  // namespace
}  // namespace permora::test
