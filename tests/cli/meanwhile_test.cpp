// Other people and programs act while a command works or waits for an answer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <future>
#include <string>
#include <vector>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/effort.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class MeanwhileTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
            GTEST_SKIP() << reason;
        ASSERT_EQ(SetDescriptorText(folder.MakeFolder("above"), "D:P(A;OICI;FA;;;BA)"), 0U);
        for (const char* name : {"above/junk", "above/important"})
            ASSERT_EQ(SetDescriptorText(folder.MakeFolder(name), "D:P(A;OICI;FA;;;BA)"), 0U);
        for (const char* name : {"above/junk/file", "above/important/file"})
            ASSERT_EQ(SetDescriptorText(folder.MakeFile(name), kOwnList), 0U);
    }

    // Runs a reset on a terminal in `where`, and does `meanwhile`, a command of the shell in the folder
    // above, between its question and the answer.
    CommandResult ResetWhile(const std::string& where, const std::string& argument,
                             const std::string& meanwhile) {
        const std::string log = folder.Path("log");
        std::filesystem::remove(log);  // the question of an earlier run
        const std::string reset = "cd '" + where + "' && '" + CliPath() + "' reset '" + argument + "'";
        const std::string answer = "for i in $(seq 1200); do grep -q 'Go on' '" + log +
                                   "' 2>/dev/null && break; sleep 0.05; done; cd '" + folder.Path("above") +
                                   "' && " + meanwhile + "; echo yes";
        return RunCommand({"sh", "-c", "(" + answer + ") | script -qefc \"$0\" '" + log + "'", reset});
    }

    std::string ListOf(const std::string& name) const { return DaclText(folder.Path(name)); }

    static constexpr const char* kOwnList = "D:P(A;;FR;;;BG)";
    static constexpr const char* kOwnListRead = "D:PAI(A;;FR;;;BG)";
    static constexpr const char* kReset = "D:AI(A;ID;FA;;;BA)";

    const TemporaryFolder folder;
};

TEST_F(MeanwhileTest, WhatWasAskedAboutIsResetOrNothing) {
    if (const std::string reason = MissingProgram("script"); !reason.empty()) GTEST_SKIP() << reason;
    const CommandResult named = ResetWhile(folder.Path("above"), "junk", "mv junk j2 && mv important junk");
    EXPECT_EQ(named.exitCode, 1) << named.output;
    EXPECT_THAT(named.output, HasSubstr("junk: left alone: another object has this name by now"));
    EXPECT_EQ(ListOf("above/junk/file"), kOwnListRead) << "the one that has the name now";
    EXPECT_EQ(ListOf("above/j2/file"), kOwnListRead) << "the one that had it";

    // The folder in which the user is has no name that could be given away.
    std::filesystem::rename(folder.Path("above/junk"), folder.Path("above/important"));
    std::filesystem::rename(folder.Path("above/j2"), folder.Path("above/junk"));
    const CommandResult itself =
        ResetWhile(folder.Path("above/junk"), ".", "mv junk j2 && mv important junk");
    EXPECT_EQ(itself.exitCode, 0) << itself.output;
    EXPECT_EQ(ListOf("above/junk/file"), kOwnListRead);
    EXPECT_EQ(ListOf("above/j2/file"), kReset);
}

TEST_F(MeanwhileTest, OfTwoChangesAtTheSameTimeNoneIsLost) {
    const std::string file = folder.Path("above/junk/file");
    for (int round = 0; round < Tries(40); ++round) {
        ASSERT_EQ(SetDescriptorText(file, "D:P(A;;FA;;;BA)"), 0U);
        std::vector<std::future<CommandResult>> changes;
        for (const std::vector<std::string>& command :
             std::vector<std::vector<std::string>>{{"grant", file, "--account", "Everyone", "--rights", "1"},
                                                   {"deny", file, "--account", "Guests", "--rights", "2"},
                                                   {"grant", file, "--account", "Users", "--rights", "4"}})
            changes.push_back(std::async(std::launch::async, [command] { return RunCli(command); }));
        for (std::future<CommandResult>& change : changes)
            EXPECT_EQ(change.get().output, file + ": changed\n") << round;
        const std::string list = EntriesOf(file);
        for (const char* entry : {"Deny S-1-5-32-546 0x2 ", "Allow S-1-1-0 0x1 ", "Allow S-1-5-32-545 0x4 ",
                                  "Allow S-1-5-32-544 0xf01ff "})
            EXPECT_THAT(list, HasSubstr(entry)) << round;
    }
}

TEST_F(MeanwhileTest, AFailureBelowIsNotToldAsTheFoldersOwn) {
    const char* attribute = geteuid() == 0 ? "security.NTACL" : "user.permora.sd";
    const std::string top = folder.Path("above/junk");
    const std::vector<std::string> grant = {"grant", top, "--account", "Everyone", "--rights", "1"};
    ASSERT_EQ(SetDescriptorText(folder.MakeFolder("above/junk/sub"), "D:"), 0U);
    const std::string damaged = folder.MakeFile("above/junk/sub/damaged");
    ASSERT_EQ(setxattr(damaged.c_str(), attribute, "\x01\x00garbage", 9, 0), 0);
    const CommandResult one = RunCli(grant);
    EXPECT_EQ(one.exitCode, 1);
    EXPECT_THAT(one.output, HasSubstr(top + ": changed\n"));
    EXPECT_THAT(one.output, HasSubstr("permora-cli: " + damaged + ": "));
    EXPECT_THAT(one.output, HasSubstr("permora-cli: " + top +
                                      ": changed itself, but not everything below that inherits: 1 object "
                                      "could not be reached or changed\n"));
    EXPECT_THAT(EntriesOf(top), HasSubstr("Allow S-1-1-0 0x1 3\n"));
    EXPECT_THAT(EntriesOf(folder.Path("above/junk/sub")), HasSubstr("Allow S-1-1-0 0x1 19\n"));

    const std::string second = folder.MakeFile("above/junk/sub/second");
    ASSERT_EQ(setxattr(second.c_str(), attribute, "\x01\x00garbage", 9, 0), 0);
    const CommandResult two = RunCli(grant);
    EXPECT_THAT(two.output, HasSubstr("inherits: 2 objects could"));
    EXPECT_NE(two.output.find(damaged) == std::string::npos, two.output.find(second) == std::string::npos)
        << "the first is named: " << two.output;
}

TEST_F(MeanwhileTest, ManyObjectsNeedFewDescriptors) {
    if (const std::string reason = MissingProgram("prlimit"); !reason.empty()) GTEST_SKIP() << reason;
    std::vector<std::string> command = {"prlimit", "--nofile=64:64", CliPath(), "grant", "--account",
                                        "Guests",  "--rights",       "1",       "--"};
    for (int i = 0; i < 100; ++i) {
        const std::string sub = "above/junk/" + std::to_string(i);
        folder.MakeFolder(sub);
        command.push_back(folder.MakeFile(sub + "/file"));
    }
    const CommandResult result = RunCommand(command);
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_THAT(result.output, Not(HasSubstr("permora-cli: ")));
    EXPECT_THAT(EntriesOf(command.back()), HasSubstr("Allow S-1-5-32-546 0x1 0\n"));
}

}  // namespace
}  // namespace permora::test
