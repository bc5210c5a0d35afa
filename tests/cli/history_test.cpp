// What the terminal program says of changes, and how it takes them back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "history/history.h"
#include "platform/api/errors.h"
#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/descriptor_texts.h"
#include "tests/support/effort.h"
#include "tests/support/recording_observer.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/tree_state.h"

namespace permora::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// A history of the test's own, and a tree.
class HistoryTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
            GTEST_SKIP() << reason;
        ASSERT_EQ(SetDescriptorText(top, "D:P(A;OICI;FA;;;BA)"), 0U);
        ASSERT_EQ(SetDescriptorText(folder.MakeFile("top/file"), "D:P(A;;FR;;;BG)"), 0U);
        folder.MakeFile("top/bare");
    }

    // Gives everything below the top what it inherits, as `reset` does.
    std::int64_t Reset() const {
        std::unique_ptr<History> history;
        EXPECT_EQ(History::Open(History::UsualPath(), history), DWORD{ERROR_SUCCESS});
        const auto change = history->Begin(ChangeKind::kReset);
        const UniqueLocal<void> descriptor = DescriptorOf("D:");
        RecordingObserver observer;
        TreeCounts counts;
        EXPECT_EQ(
            Held(top).SetListsBelow(ListOf(descriptor), TreeListMode::kWrite, *change, observer, counts),
            DWORD{ERROR_SUCCESS});
        change->End();
        return change->Number();
    }
    std::string HistoryPath() const { return state.Path("permora/history.db"); }
    static std::string Undone(int restored, int asBefore, int leftAlone) {
        return "put back: " + std::to_string(restored) + ", already as it was: " + std::to_string(asBefore) +
               ", left alone: " + std::to_string(leftAlone) + '\n';
    }

    const TemporaryFolder folder;
    const std::string top = folder.MakeFolder("top");
    const TemporaryFolder state{FolderPlace::kMemory};
    const ScopedVariable stateHome{"XDG_STATE_HOME", state.Path()};
    const ScopedVariable configuration{"XDG_CONFIG_HOME", folder.MakeFolder("config")};
};

TEST_F(HistoryTest, WithoutChangesThereIsNothingToUndo) {
    struct Row {
        std::vector<std::string> arguments;
        int exitCode;
        const char* output;
    };
    const Row rows[] = {
        {{"history"}, 0, "nothing has been changed yet\n"},
        {{"history", "--json"},
         0,
         "{\n  \"version\": 1,\n  \"command\": \"history\",\n  \"results\": []\n}\n"},
        {{"history", "7"}, 2, "permora-cli: the history has no change 7\n"},
        {{"history", "--prune", "30d"}, 0, "removed: 0 changes\n"},
        {{"undo", "--yes"}, 0, "there is nothing to undo\n"},
        {{"undo", "7", "--yes"}, 2, "permora-cli: the history has no change 7\n"},
        {{"undo", "x"}, 2, "permora-cli: x: not the number of a change\n"},
        {{"undo", "0"}, 2, "permora-cli: 0: not the number of a change\n"},
        {{"history", "--prune", "soon"},
         2,
         "permora-cli: soon: neither an age (30d, 12h) nor a day (2026-01-31)\n"},
        {{"history", "--keep-days", "-1"}, 2, "permora-cli: -1: not a whole number\n"},
        {{"history", "7", "--keep-days", "1"},
         2,
         "permora-cli: history lists, removes or sets limits, one at a time\n"},
        {{"history", "--keep-days", "30"}, 0, "kept: 30 days, at most 1024 MiB\n"},
        {{"history", "--keep-size", "0"}, 0, "kept: 30 days, without limit\n"},
    };
    for (const Row& row : rows) {
        const CommandResult result = RunCli(row.arguments);
        EXPECT_EQ(result.exitCode, row.exitCode) << row.output;
        EXPECT_EQ(result.output, row.output);
    }
    EXPECT_FALSE(std::filesystem::exists(HistoryPath()));
}

TEST_F(HistoryTest, AChangeIsListedShownAndTakenBack) {
    const TreeState before = StateOfTree(top);
    Reset();
    const TreeState after = StateOfTree(top);
    EXPECT_THAT(RunCli({"history"}).output,
                AllOf(HasSubstr("Number  When"), HasSubstr("reset of everything in C:\\"),
                      HasSubstr("  2        done\n")));
    const auto listed = ResultsIn(RunCli({"history", "--json"}).output);
    ASSERT_EQ(listed.size(), 1U);
    EXPECT_EQ(listed[0]["number"], 1);
    EXPECT_EQ(listed[0]["kind"], "reset");
    EXPECT_EQ(listed[0]["state"], "done");
    EXPECT_EQ(listed[0]["objects"], 2);

    EXPECT_THAT(RunCli({"history", "1"}).output,
                AllOf(HasSubstr("1: reset of everything in C:\\"), HasSubstr("\\top\\file\n"),
                      HasSubstr("Before"), HasSubstr("BUILTIN\\Guests")));
    const auto objects = ResultsIn(RunCli({"history", "1", "--json"}).output);
    ASSERT_EQ(objects.size(), 2U);
    const std::size_t file = objects[0]["path"].get<std::string>().ends_with("\\file") ? 0 : 1;
    EXPECT_EQ(objects[1 - file]["before"]["keptIn"], "nothing");
    EXPECT_FALSE(objects[1 - file]["before"].contains("entries"));
    EXPECT_EQ(objects[file]["before"]["entries"][0]["sid"], "S-1-5-32-546");
    EXPECT_THAT(objects[file]["after"]["sddl"].get<std::string>(), HasSubstr("(A;ID;FA;;;BA)"));

    const CommandResult dry = RunCli({"undo", "--dry-run"});
    EXPECT_EQ(dry.output, "would " + Undone(2, 0, 0));
    const CommandResult unasked = RunCli({"undo"});
    EXPECT_EQ(unasked.exitCode, 2);
    EXPECT_THAT(unasked.output, HasSubstr("--yes"));
    EXPECT_EQ(DifferenceOf(after, StateOfTree(top)), "");

    const CommandResult undone = RunCli({"undo", "--yes"});
    EXPECT_EQ(undone.output, Undone(2, 0, 0));
    EXPECT_EQ(undone.exitCode, 0);
    EXPECT_EQ(DifferenceOf(before, StateOfTree(top)), "");
    EXPECT_THAT(RunCli({"history"}).output, AllOf(HasSubstr("undo of change 1"), HasSubstr("  undone\n")));
    EXPECT_EQ(RunCli({"undo", "--yes"}).output, "there is nothing to undo\n");
    EXPECT_EQ(RunCli({"undo", "2", "--yes"}).output, Undone(2, 0, 0));
    EXPECT_EQ(DifferenceOf(after, StateOfTree(top)), "");
    EXPECT_EQ(RunCli({"history", "--prune", "2999-01-01"}).output, "removed: 3 changes\n");
    EXPECT_EQ(ResultsIn(RunCli({"history", "--json"}).output), nlohmann::json::array());
}

TEST_F(HistoryTest, WhatWasChangedSinceIsNamedAndLeftAlone) {
    const TreeState before = StateOfTree(top);
    Reset();
    ASSERT_EQ(SetDescriptorText(top + "/bare", "D:P(A;;FX;;;WD)"), 0U);
    const CommandResult undone = RunCli({"undo", "--yes"});
    EXPECT_EQ(undone.exitCode, 1);
    EXPECT_THAT(undone.output,
                AllOf(HasSubstr("\\top\\bare: left alone: it was changed since\n"),
                      HasSubstr("permora-cli: --force takes back also"), testing::EndsWith(Undone(1, 0, 1))));
    EXPECT_THAT(RunCli({"history"}).output, HasSubstr("  partly undone\n"));
    const CommandResult forced = RunCli({"undo", "--yes", "--force"});
    EXPECT_EQ(forced.output, Undone(1, 1, 0));
    EXPECT_EQ(forced.exitCode, 0);
    EXPECT_EQ(DifferenceOf(before, StateOfTree(top)), "");

    Reset();
    std::filesystem::rename(top, folder.Path("away"));
    const CommandResult gone = RunCli({"undo", "--yes"});
    EXPECT_EQ(gone.exitCode, 1);
    EXPECT_THAT(gone.output,
                AllOf(HasSubstr("\\top: left alone, with everything of the change below it: it is "
                                "gone, or has another name\n"),
                      testing::EndsWith(Undone(0, 0, 2))));
}

// Never the one before it in its place.
TEST_F(HistoryTest, AChangeThatIsStillRunningIsNamedAndNotTakenBack) {
    const TreeState before = StateOfTree(top);
    Reset();
    const TreeState after = StateOfTree(top);
    std::unique_ptr<History> history;
    ASSERT_EQ(History::Open(History::UsualPath(), history), DWORD{ERROR_SUCCESS});
    for (const ChangeKind kind : {ChangeKind::kOwner, ChangeKind::kUndo}) {
        const auto running = history->Begin(kind, 1);
        std::uint64_t number = 0;
        const DescriptorChange record;
        ASSERT_EQ(running->BeginTop({"C:\\elsewhere", true, {1}}, number), DWORD{ERROR_SUCCESS});
        ASSERT_EQ(running->Record(number, {&record, 1}), DWORD{ERROR_SUCCESS});
        for (const std::vector<std::string>& arguments : {std::vector<std::string>{"undo", "--yes"},
                                                          {"undo", "--dry-run"},
                                                          {"undo", "--yes", "--force"}}) {
            const CommandResult refused = RunCli(arguments);
            EXPECT_EQ(refused.exitCode, 1);
            EXPECT_THAT(refused.output,
                        AllOf(HasSubstr("not undone: another program is still making this change: " +
                                        std::to_string(running->Number()) + ": "),
                              HasSubstr("undo CHANGE")));
        }
        EXPECT_EQ(DifferenceOf(after, StateOfTree(top)), "");
    }
    EXPECT_EQ(RunCli({"undo", "1", "--yes"}).output, Undone(2, 0, 0));
    EXPECT_EQ(DifferenceOf(before, StateOfTree(top)), "");
}

TEST_F(HistoryTest, ATerminalIsAskedAboutTheChange) {
    if (const std::string reason = MissingProgram("script"); !reason.empty()) GTEST_SKIP() << reason;
    Reset();
    const TreeState after = StateOfTree(top);
    const auto onTerminal = [](const char* answer) {
        return RunCommand({"script", "-qec", '\'' + CliPath() + "' undo", "/dev/null"}, answer);
    };
    const CommandResult refused = onTerminal("no\n");
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_THAT(refused.output, AllOf(HasSubstr("  1: reset of everything in C:\\"),
                                      HasSubstr("(2 objects), "), HasSubstr("nothing was changed")));
    EXPECT_EQ(DifferenceOf(after, StateOfTree(top)), "");
    const CommandResult agreed = onTerminal("yes\n");
    EXPECT_EQ(agreed.exitCode, 0);
    EXPECT_THAT(agreed.output, AllOf(HasSubstr("\x1b[K"), HasSubstr("put back: 2, ")));
}

TEST_F(HistoryTest, ADamagedHistoryIsSaidAndKept) {
    Reset();
    std::filesystem::remove(HistoryPath() + "-wal");
    std::ofstream(HistoryPath(), std::ios::trunc) << "no database";
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"history"},
                                                      {"history", "1"},
                                                      {"undo", "--yes"},
                                                      {"history", "--prune", "1d"}}) {
        const CommandResult result = RunCli(arguments);
        EXPECT_EQ(result.exitCode, 1) << arguments[0];
        EXPECT_THAT(result.output, HasSubstr("permora-cli: " + HistoryPath() + ": The history is damaged"));
    }
    EXPECT_EQ(ReadWholeFile(HistoryPath()), "no database");
}

// At any moment: an undo that was killed can be run again, and one that was interrupted says so.
TEST_F(HistoryTest, AnUndoThatEndsEarlyCanBeRunAgain) {
    for (int i = 0; i < 800; ++i)
        folder.MakeFile("top/" + std::to_string(i));
    const TreeState before = StateOfTree(top);
    std::mt19937 random(20261126);
    std::chrono::microseconds whole{};
    int halfDone = 0;
    for (int round = 0; !HasTriedEnough(round, 100, halfDone); ++round) {
        const std::int64_t change = Reset();
        const auto began = std::chrono::steady_clock::now();
        const int undo = StartService({CliPath(), "undo", "--yes"}, folder.Path("log"));
        ASSERT_GT(undo, 0);
        if (round > 0) {
            std::this_thread::sleep_for(whole * (random() % 1000) / 1000);
            kill(undo, round % 10 == 0 ? SIGINT : SIGKILL);
        }
        AwaitServiceEnd(undo);
        if (round == 0)
            whole = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() -
                                                                          began);
        const TreeState then = StateOfTree(top);
        const auto back = std::ranges::count_if(
            before, [&](const auto& each) { return then.at(each.first) == each.second; });
        if (back > 1 && back < std::ssize(before)) ++halfDone;  // the top itself was never changed
        const CommandResult again = RunCli({"undo", std::to_string(change), "--yes"});
        EXPECT_EQ(again.exitCode, 0) << again.output;
        ASSERT_EQ(DifferenceOf(before, StateOfTree(top)), "") << "round " << round;
        ASSERT_EQ(RunCli({"history", "--prune", "2999-01-01"}).exitCode, 0);
    }
    EXPECT_GT(halfDone, 0);
}

}  // namespace
}  // namespace permora::test
