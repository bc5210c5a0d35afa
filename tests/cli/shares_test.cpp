// Lists of shares over the machine's own table; samba_test.cpp has those of a real server.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <fstream>
#include <future>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/effort.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::HasSubstr;

constexpr const char* kTableFile = "/etc/permora/registry.reg";

// "Path=C:\tmp"
constexpr const char* kTable =
    "Windows Registry Editor Version 5.00\n\n"
    "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\LanmanServer\\Shares]\n"
    "\"one\"=hex(7):50,00,61,00,74,00,68,00,3d,00,43,00,3a,00,5c,00,74,00,6d,00,70,00,00,00,00,00\n";

class SharesCommandTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
        ASSERT_EQ(EnterOwnMounts(), "");
        ASSERT_EQ(mount("tmpfs", "/etc", "tmpfs", 0, "mode=0755"), 0);
        ASSERT_EQ(mkdir("/etc/permora", 0755), 0);
        std::ofstream(kTableFile) << kTable;
    }
};

TEST_F(SharesCommandTest, OnlyAChangeGivesAShareADescriptor) {
    EXPECT_THAT(RunCli({"shares"}).output, HasSubstr("one   Folder               unlimited  C:\\tmp"));
    EXPECT_THAT(RunCli({"shares", "show", "ONE"}).output,
                HasSubstr("  Note: there is no access list: everyone may do everything\n"));
    EXPECT_THAT(RunCli({"show", "--share", "one", "--json"}).output, HasSubstr("\"entries\": null"));
    EXPECT_EQ(RunCli({"show", "--share", "one", "--sddl"}).exitCode, 1);
    EXPECT_THAT(RunCli({"show", "--share=[one]"}).output, HasSubstr("[one]: The share does not exist."));
    const std::vector<std::string> grant = {"grant",  "--share",  "one", "--account",
                                            "Guests", "--rights", "1"};
    const CommandResult refused = RunCli(grant);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.output, HasSubstr("permora-cli: one: not changed: everyone may do everything now"));
    std::vector<std::string> replacing = grant;
    replacing.insert(replacing.end(), {"--replace-null-list", "--dry-run"});
    EXPECT_EQ(RunCli(replacing).exitCode, 0);
    EXPECT_EQ(ReadWholeFile(kTableFile), kTable);

    replacing.pop_back();
    const CommandResult changed = RunCli(replacing);
    EXPECT_EQ(changed.exitCode, 0);
    EXPECT_EQ(changed.output, "one: changed\n");
    const auto history = ResultsIn(RunCli({"history", "--json"}).output);
    EXPECT_EQ(RunCli(grant).output, "one: already so\n");
    EXPECT_EQ(ResultsIn(RunCli({"history", "--json"}).output), history);
    EXPECT_EQ(RunCli({"show", "--share", "one", "--sddl"}).output, "D:(A;;0x100001;;;BG)\n");
    const CommandResult some = RunCli({"revoke", "--account", "Guests", "--share", "none", "one"});
    EXPECT_EQ(some.exitCode, 1);
    EXPECT_THAT(some.output, HasSubstr("permora-cli: none: The share does not exist.\n"));
    EXPECT_EQ(RunCli({"show", "--share", "one", "--sddl"}).output, "D:\n");
}

TEST_F(SharesCommandTest, ExplainedRightsTellWhatEachShareThatHoldsTheObjectLeaves) {
    const TemporaryFolder folder;
    ASSERT_TRUE(folder.Path().starts_with("/tmp/")) << "which is shared";
    const std::string file = folder.MakeFile("file");
    ASSERT_EQ(SetDescriptorText(file, "O:BAD:P(D;;WP;;;NU)(A;;FA;;;BG)"), 0U);
    const auto explained = [&](const std::string& path) {
        return RunCli({"effective", path, "--account", "Guests", "--explain"}).output;
    };
    EXPECT_THAT(explained(file),
                HasSubstr("\\one: all but Traverse folder / Execute file, the share takes "));
    ASSERT_EQ(SetDescriptorText(file, "O:BAD:P(A;;FA;;;BG)"), 0U);
    EXPECT_THAT(explained(file), testing::ContainsRegex("Note: over ....*.one: full control, the share "
                                                        "takes nothing away\n"));
    EXPECT_THAT(explained("/"), testing::Not(HasSubstr("Note: over ")));

    const auto change = [](const char* command, const char* account, const char* rights) {
        const CommandResult done = RunCli(
            {command, "--share", "one", "--account", account, "--rights", rights, "--replace-null-list"});
        EXPECT_EQ(done.exitCode, 0) << done.output;
    };
    change("grant", "Everyone", "0x1200a9");
    EXPECT_THAT(explained(file), HasSubstr("\\one: read only, because the share allows Everyone to read\n"));
    change("deny", "Guests", "List folder / Read data");
    EXPECT_THAT(
        explained(file),
        HasSubstr("because the share denies BUILTIN\\Guests List folder / Read data and allows Everyone"));
    change("deny", "Everyone", "Full control");
    const CommandResult json = RunCli({"effective", file, "--account", "Guests", "--explain", "--json"});
    EXPECT_THAT(json.output, HasSubstr("one: nothing, because the share denies Everyone"));

    // "Security\\one" with what is no descriptor.
    std::ofstream(kTableFile, std::ios::app)
        << "\n[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\LanmanServer\\Shares\\Security]\n"
           "\"one\"=hex:01,02,03\n";
    EXPECT_THAT(explained(file),
                HasSubstr("\\one: not known, since its list or the object's cannot be read: "));
}

TEST_F(SharesCommandTest, OfTwoChangesAtTheSameTimeNoneIsLost) {
    const std::vector<std::string> start = {"grant",    "--share",  "one", "--account",
                                            "Everyone", "--rights", "1",   "--replace-null-list"};
    ASSERT_EQ(RunCli(start).exitCode, 0);
    const auto change = [](const char* command, const char* rights) {
        return std::async(std::launch::async, [=] {
            return RunCli({command, "--share", "ONE", "--account", "Guests", "--rights", rights}).output;
        });
    };
    for (int round = 0; round < Tries(40); ++round) {
        ASSERT_EQ(RunCli({"revoke", "--account", "Guests", "--share", "one"}).exitCode, 0);
        auto granted = change("grant", "2");
        auto denied = change("deny", "4");
        EXPECT_EQ(granted.get(), "ONE: changed\n");
        EXPECT_EQ(denied.get(), "ONE: changed\n");
        EXPECT_EQ(RunCli({"show", "--share", "one", "--sddl"}).output,
                  "D:(D;;LC;;;BG)(A;;0x100002;;;BG)(A;;0x100001;;;WD)\n")
            << round;
    }
}

}  // namespace
}  // namespace permora::test
