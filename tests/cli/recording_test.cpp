// What the commands keep in the history of changes, and what becomes of them without one.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>

#include "history/history.h"
#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/own_mounts.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;

constexpr const char* kTopList = "D:P(A;OICI;FA;;;BA)";
constexpr const char* kOwnList = "D:P(A;OICI;FA;;;WD)";

class RecordingTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
            GTEST_SKIP() << reason;
        ASSERT_EQ(SetDescriptorText(folder.MakeFolder("top"), kTopList), 0U);
        for (const char* name : {"top/sub", "top/other"})
            ASSERT_EQ(SetDescriptorText(folder.MakeFolder(name), kOwnList), 0U);
        folder.MakeFile("top/sub/file");
    }

    // The changes in the history, the oldest first: kind, tops and objects of each.
    std::string Changes() const {
        std::unique_ptr<History> history;
        std::vector<ChangeFacts> changes;
        DWORD error = History::OpenToRead(database, history);
        if (error == ERROR_FILE_NOT_FOUND) return "none";
        if (error == ERROR_SUCCESS) error = history->List(changes);
        if (error != ERROR_SUCCESS) return "error " + std::to_string(error);
        std::string text;
        for (auto change = changes.rbegin(); change != changes.rend(); ++change)
            text += (text.empty() ? "" : "; ") + std::to_string(static_cast<int>(change->kind)) + ' ' +
                    std::to_string(change->tops) + ' ' + std::to_string(change->objects) +
                    (change->state == ChangeState::kDone ? "" : " not done");
        return text;
    }
    std::string Lists() const {
        std::string lists;
        for (const char* name : {"top", "top/sub", "top/other", "top/sub/file"})
            lists += SddlOf(folder.Path(name));
        return lists;
    }

    const TemporaryFolder folder;
    const TemporaryFolder state{FolderPlace::kMemory};
    const ScopedVariable stateHome{"XDG_STATE_HOME", state.Path()};
    const std::string database = state.Path("permora/history.db");
    const std::string top = folder.Path("top");
    const std::string sub = folder.Path("top/sub");
    const std::string other = folder.Path("top/other");
};

TEST_F(RecordingTest, EachCommandThatWritesLeavesOneChange) {
    const std::string file = folder.Path("top/sub/file");
    for (const std::vector<std::string>& command : std::vector<std::vector<std::string>>{
             {"show", top},
             {"owner", top},
             {"reset", top, "--dry-run"},
             {"grant", sub, "--account", "Guests", "--rights", "Delete", "--dry-run"},
             {"grant", sub, "--account", "Users", "--rights", "Delete", "--no-history"}})
        EXPECT_EQ(RunCli(command).exitCode, 0) << command[0];
    EXPECT_FALSE(std::filesystem::exists(state.Path("permora")));

    const struct {
        std::vector<std::string> command;
        std::string added;  // kind, tops, objects
    } cases[] = {
        {{"revoke", sub, "--account", "Guests"}, ""},
        {{"grant", sub, other, "--account", "Guests", "--rights", "Read permissions"}, "1 2 3"},
        {{"deny", file, other, file, "--account", "Guests", "--rights", "Delete"}, "1 2 2"},
        {{"revoke", other, "--account", "Guests"}, "1 1 1"},
        {{"inherit", sub, "--on"}, "1 1 2"},
        {{"assign", other, sub, "--account", "Guests", "--combination", "Modify"}, "4 2 3"},
        {{"reset", top, "--yes"}, "3 1 3"},
        {{"owner", top, other, "--set", "Guests", "--tree"}, "2 2 4"},
    };
    std::string expected;
    for (const auto& each : cases) {
        const CommandResult result = RunCli(each.command);
        EXPECT_EQ(result.exitCode, 0) << each.command[0] << ": " << result.output;
        if (!each.added.empty()) expected += (expected.empty() ? "" : "; ") + each.added;
        EXPECT_EQ(Changes(), expected) << each.command[0] << ": " << result.output;
    }
}

// Each command that changes something, with all its options.
std::vector<std::vector<std::string>> ChangesOf(const std::string& folder, const std::string& below) {
    return {{"grant", below, "--account", "Guests", "--rights", "Read permissions"},
            {"deny", below, "--account", "Guests", "--rights", "Delete"},
            {"revoke", below, "--account", "Guests"},
            {"inherit", below, "--on"},
            {"assign", below, "--account", "Guests", "--combination", "Read"},
            {"reset", folder, "--yes"},
            {"owner", folder, "--set", "Guests", "--tree"},
            {"grant", "--share", "docs", "--account", "Guests", "--rights", "Read permissions"}};
}

TEST_F(RecordingTest, WithoutAHistoryNothingIsChangedUnlessTheUserSaysSo) {
    ASSERT_TRUE(std::filesystem::create_directories(state.Path("permora")));
    std::ofstream(database) << "no database";
    const std::string before = Lists();
    for (const std::vector<std::string>& command : ChangesOf(top, sub)) {
        const CommandResult refused = RunCli(command);
        EXPECT_EQ(refused.exitCode, 1) << command[0];
        EXPECT_THAT(refused.output,
                    AllOf(HasSubstr(database + ": nothing was changed: "), HasSubstr("--no-history")));
        EXPECT_EQ(Lists(), before) << command[0];
    }
    for (std::vector<std::string> command : ChangesOf(top, sub)) {
        command.emplace_back("--no-history");
        EXPECT_EQ(RunCli(command).exitCode, command[1] == "--share" ? 1 : 0) << command[0];
    }
    EXPECT_NE(Lists(), before);
    EXPECT_EQ(ReadWholeFile(database), "no database");
}

TEST_F(RecordingTest, ProgramsThatChangeAtTheSameTimeAreAllRecorded) {
    constexpr int kPrograms = 8;
    std::string script;
    for (int i = 0; i < kPrograms; ++i) {
        const std::string file = folder.MakeFile("top/other/" + std::to_string(i));
        script += "'" + CliPath() + "' grant '" + file + "' --account Guests --rights 'Read permissions' & ";
    }
    const CommandResult result =
        RunCommand({"bash", "-c", script + "for job in $(jobs -p); do wait $job || exit; done"});
    EXPECT_EQ(result.exitCode, 0) << result.output;
    std::string expected = "1 1 1";
    for (int i = 1; i < kPrograms; ++i)
        expected += "; 1 1 1";
    EXPECT_EQ(Changes(), expected);
}

// Before anything is written that the history has no room for.
TEST_F(RecordingTest, AHistoryThatGetsFullStopsTheChangeInTheMiddle) {
    if (const std::string reason = CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_EQ(EnterOwnMounts(), "");
    ASSERT_EQ(mount("tmpfs", state.Path().c_str(), "tmpfs", 0, "size=512k,mode=0700"), 0);
    constexpr int kFiles = 6000;
    for (int i = 0; i < kFiles; ++i) {
        const std::string list = "D:P(A;;FR;;;S-1-5-21-1-2-3-" + std::to_string(1000 + i) + ")";
        ASSERT_EQ(SetDescriptorText(folder.MakeFile("top/" + std::to_string(i)), list), 0U);
    }
    const CommandResult reset = RunCli({"reset", top, "--yes"});
    EXPECT_EQ(reset.exitCode, 1);
    EXPECT_THAT(reset.output, HasSubstr("the history of changes cannot be written"));
    std::uint64_t changed = 0;
    for (int i = 0; i < kFiles; ++i)
        changed += DaclText(folder.Path("top/" + std::to_string(i))) == "D:AI(A;ID;FA;;;BA)" ? 1U : 0U;
    EXPECT_GT(changed, 0U);
    EXPECT_LT(changed, static_cast<std::uint64_t>(kFiles));

    // What was changed is there to be undone.
    std::filesystem::create_directory(folder.Path("copy"));
    std::filesystem::copy(state.Path(), folder.Path("copy"), std::filesystem::copy_options::recursive);
    std::unique_ptr<History> history;
    std::vector<ChangeFacts> changes;
    ASSERT_EQ(History::OpenToRead(folder.Path("copy/permora/history.db"), history), 0U);
    ASSERT_EQ(history->List(changes), 0U);
    ASSERT_EQ(changes.size(), 1U);
    EXPECT_GE(changes.front().objects, changed);
    umount(state.Path().c_str());
}

}  // namespace
}  // namespace permora::test
