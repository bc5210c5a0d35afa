// The reset of whole trees.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* kHandsDown = "D:P(A;OICI;FA;;;BA)";

class ResetTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
            GTEST_SKIP() << reason;
        ASSERT_EQ(SetDescriptorText(top, kHandsDown), 0U);
        ASSERT_EQ(SetDescriptorText(sub, "D:P(A;OICI;FA;;;WD)"), 0U);
        ASSERT_EQ(SetDescriptorText(file, "D:(A;;FR;;;BG)"), 0U);
        before = EntriesOf(sub) + EntriesOf(file);
    }

    std::string Entries() const { return EntriesOf(sub) + EntriesOf(file); }

    const TemporaryFolder folder;
    const std::string top = folder.MakeFolder("top");
    const std::string sub = folder.MakeFolder("top/sub");
    const std::string file = folder.MakeFile("top/sub/file");
    std::string before;
};

TEST_F(ResetTest, EverythingBelowKeepsOnlyWhatItInherits) {
    const CommandResult dryRun = RunCli({"reset", top, "--dry-run"});
    EXPECT_EQ(dryRun.exitCode, 0);
    EXPECT_EQ(dryRun.output,
              "would change: 2, already so: 0, passed over: 0\n"
              "Below them, 2 objects would lose entries of their own\n");
    EXPECT_THAT(RunCli({"reset", top, sub, "--dry-run"}).output, HasSubstr(sub + ": is in " + top));
    EXPECT_EQ(Entries(), before);

    const CommandResult reset = RunCli({"reset", top, "--yes"});
    EXPECT_EQ(reset.exitCode, 0);
    EXPECT_EQ(reset.output, "changed: 2, already so: 0, passed over: 0\n");
    EXPECT_EQ(Entries(), "Allow S-1-5-32-544 0xf01ff 19\nAllow S-1-5-32-544 0xf01ff 16\n");
    EXPECT_EQ(EntriesOf(top), "Allow S-1-5-32-544 0xf01ff 3\n");
    EXPECT_THAT(RunCli({"show", sub}).output, HasSubstr("Inherits: yes"));
    EXPECT_EQ(RunCli({"reset", top, "--yes"}).output, "changed: 0, already so: 2, passed over: 0\n");
}

TEST_F(ResetTest, NothingIsTouchedWithoutConsent) {
    const CommandResult piped = RunCli({"reset", top});
    EXPECT_EQ(piped.exitCode, 2);
    EXPECT_THAT(piped.output, HasSubstr("--yes"));
    EXPECT_EQ(Entries(), before);
}

TEST_F(ResetTest, ATerminalIsAskedAndShownNoMoreThanItNeeds) {
    if (const std::string reason = MissingProgram("script"); !reason.empty()) GTEST_SKIP() << reason;
    const auto onTerminal = [this](const char* answer) {
        return RunCommand({"script", "-qec", '\'' + CliPath() + "' reset '" + top + "'", "/dev/null"},
                          answer);
    };
    const CommandResult refused = onTerminal("no\n");
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_THAT(refused.output, HasSubstr(top));
    EXPECT_THAT(refused.output, HasSubstr("nothing was changed"));
    EXPECT_EQ(Entries(), before);
    const CommandResult agreed = onTerminal("yes\n");
    EXPECT_EQ(agreed.exitCode, 0);
    EXPECT_THAT(agreed.output, HasSubstr("\r1: sub\x1b[K"));
    EXPECT_THAT(agreed.output, HasSubstr("changed: 2, "));
}

TEST_F(ResetTest, WhatIsPassedOverIsCountedAndNamedOnRequest) {
    const std::string damaged = folder.MakeFile("top/sub/damaged");
    ASSERT_EQ(RunCommand({"setfattr", "-n", geteuid() == 0 ? "security.NTACL" : "user.permora.sd", "-v",
                          "0x01", damaged})
                  .exitCode,
              0);
    const std::string missing = folder.Path("missing");
    const std::string link = folder.Path("link");
    std::filesystem::create_directory_symlink(top, link);
    const CommandResult quiet = RunCli({"reset", file, missing, link, top, "--dry-run"});
    EXPECT_EQ(quiet.exitCode, 1);
    EXPECT_THAT(quiet.output, HasSubstr("permora-cli: " + file + ": not reset"));
    EXPECT_THAT(quiet.output, HasSubstr("permora-cli: " + missing + ": "));
    EXPECT_THAT(quiet.output, HasSubstr("permora-cli: " + link + ": not reset"));
    EXPECT_THAT(quiet.output, Not(HasSubstr(damaged)));
    EXPECT_THAT(quiet.output, HasSubstr("would change: 2, already so: 0, passed over: 1\n"));
    std::filesystem::current_path(folder.Path());
    EXPECT_THAT(RunCli({"reset", "./top/", "--dry-run", "--verbose"}).output,
                HasSubstr("permora-cli: ./top/sub/damaged: "));
}

TEST_F(ResetTest, NobodyIsLockedOutUnasked) {
    ASSERT_EQ(SetDescriptorText(top, "D:P(A;;FA;;;BA)"), 0U);
    const CommandResult refused = RunCli({"reset", top, "--yes"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.output, HasSubstr("--empty-lists"));
    EXPECT_EQ(Entries(), before);
    EXPECT_EQ(RunCli({"reset", top, "--yes", "--empty-lists"}).exitCode, 0);
    EXPECT_EQ(Entries(), "");
}

}  // namespace
}  // namespace permora::test
