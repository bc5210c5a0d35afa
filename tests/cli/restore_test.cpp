// Saved lists put back, as a user does it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "history/undo.h"
#include "platform/api/errors.h"
#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/effort.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/tree_state.h"

namespace permora::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

void WriteText(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
}

std::string TextOf(const std::string& path) {
    std::stringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

// Takes back the last change of the history that the program has written.
UndoCounts UndoLast() {
    class : public UndoObserver {
        bool Begin(const ChangedTop& /*top*/, const std::string& /*path*/) override { return true; }
        void Leave(const ChangedTop& /*top*/, const std::string& path, LeftAlone /*extent*/,
                   DWORD reason) override {
            ADD_FAILURE() << path << ": " << LeftAloneText(reason);
        }
    } observer;
    UndoCounts counts;
    std::unique_ptr<History> history;
    ChangeFacts last;
    EXPECT_EQ(History::Open(History::UsualPath(), history), ERROR_SUCCESS);
    if (!history) return counts;
    EXPECT_EQ(history->FindLast(last), ERROR_SUCCESS);
    EXPECT_EQ(last.kind, ChangeKind::kRestore);
    EXPECT_EQ(UndoChange(*history, last.number, {}, observer, counts), ERROR_SUCCESS);
    return counts;
}

class RestoreCommandTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
            GTEST_SKIP() << reason;
        MakeTree(folder.Path("tree"));
    }
    void MakeTree(const std::string& at) {
        top = at;
        fs::create_directories(top + "/sub");
        for (const char* name : {"/file", "/sub/file"})
            WriteText(top + name, "x");
        ASSERT_EQ(SetDescriptorText(top, "D:P(A;OICI;FA;;;BA)"), 0U);
        ASSERT_EQ(SetDescriptorText(top + "/sub/file", "D:P(A;;FR;;;BG)(A;;FA;;;S-1-5-21-1-2-3-1001)"), 0U);
    }
    void Save() {
        ASSERT_EQ(RunCli({"save", top, "--output", saved}).exitCode, 0);
        lists = Lists();
    }
    void Spoil() {
        for (const char* name : {"", "/sub", "/file", "/sub/file"})
            ASSERT_EQ(SetDescriptorText(top + name, "D:P(A;;FX;;;WD)"), 0U);
    }
    // Starts a restore and kills it when this object has got its owner back.
    void KillAt(const std::string& awaited) {
        const auto owner = [&] { return DescriptorText(awaited, OWNER_SECURITY_INFORMATION); };
        const std::string spoilt = owner();
        const int restore = StartService({CliPath(), "restore", saved, "--yes"}, folder.Path("log"));
        ASSERT_GT(restore, 0);
        siginfo_t ended{};
        while (owner() == spoilt && ended.si_pid == 0)
            waitid(P_PID, static_cast<id_t>(restore), &ended, WEXITED | WNOHANG | WNOWAIT);
        kill(restore, SIGKILL);
        waitpid(restore, nullptr, 0);
    }
    std::string Lists() const {
        std::string all;
        for (const char* name : {"", "/sub", "/file", "/sub/file"})
            all += SddlOf(top + name) + '\n';
        return all;
    }

    const TemporaryFolder folder;
    std::string top;
    const std::string saved = folder.Path("lists.txt");
    std::string lists;
};

TEST_F(RestoreCommandTest, WhatWasSavedComesBackAndUndoTakesItAwayAgain) {
    Save();
    Spoil();
    const std::string spoilt = Lists();
    fs::remove(top + "/file");
    WriteText(top + "/new", "x");
    const CommandResult dryRun = RunCli({"restore", saved, "--dry-run"});
    EXPECT_EQ(dryRun.exitCode, 1) << "something is missing";
    EXPECT_THAT(dryRun.output, AllOf(HasSubstr("would change: C:"), HasSubstr("\\tree\\sub\\file\n"),
                                     HasSubstr("file: missing: it was saved and is not there"),
                                     HasSubstr("not in the file: C:"),
                                     HasSubstr("would change: 3, already so: 0, failed: 0, missing: 1, "
                                               "not in the file: 1\n")));
    WriteText(top + "/file", "x");
    ASSERT_EQ(SetDescriptorText(top + "/file", "D:P(A;;FX;;;WD)"), 0U);
    EXPECT_EQ(Lists(), spoilt);

    const CommandResult piped = RunCli({"restore", saved});
    EXPECT_EQ(piped.exitCode, 2);
    EXPECT_THAT(piped.output, HasSubstr("--yes"));
    EXPECT_EQ(Lists(), spoilt);

    const CommandResult restored = RunCli({"restore", saved, "--yes"});
    EXPECT_EQ(restored.exitCode, 0);
    EXPECT_THAT(restored.output,
                HasSubstr("changed: 4, already so: 0, failed: 0, missing: 0, not in the file: 1\n"));
    EXPECT_EQ(Lists(), lists);
    EXPECT_THAT(RunCli({"compare", saved, top}).output, HasSubstr("new"));
    EXPECT_THAT(RunCli({"restore", saved, "--yes"}).output, HasSubstr("changed: 0, already so: 4"));
    EXPECT_EQ(UndoLast().restored, 4U);
    EXPECT_EQ(Lists(), spoilt);

    EXPECT_EQ(RunCli({"restore", saved, "--yes", "--no-history"}).exitCode, 0);
    EXPECT_EQ(Lists(), lists);
    const TemporaryFolder elsewhere;
    fs::copy(top, elsewhere.Path("copy"), fs::copy_options::recursive);
    EXPECT_EQ(RunCli({"restore", saved, "--to", elsewhere.Path("copy"), "--yes"}).exitCode, 0);
    EXPECT_EQ(SddlOf(elsewhere.Path("copy/sub/file")), SddlOf(top + "/sub/file"));
}

TEST_F(RestoreCommandTest, ATerminalIsAsked) {
    if (const std::string reason = MissingProgram("script"); !reason.empty()) GTEST_SKIP() << reason;
    Save();
    Spoil();
    const std::string spoilt = Lists();
    const auto onTerminal = [this](const char* answer) {
        return RunCommand({"script", "-qec", '\'' + CliPath() + "' restore '" + saved + "'", "/dev/null"},
                          answer);
    };
    const CommandResult refused = onTerminal("no\n");
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_THAT(refused.output, AllOf(HasSubstr("4 objects, saved 20"), HasSubstr("nothing was changed")));
    EXPECT_EQ(Lists(), spoilt);
    const CommandResult agreed = onTerminal("yes\n");
    EXPECT_EQ(agreed.exitCode, 0);
    EXPECT_EQ(Lists(), lists);
}

TEST_F(RestoreCommandTest, AFileThatIsNotWholeChangesNothing) {
    Save();
    Spoil();
    const std::string spoilt = Lists();
    const std::string text = TextOf(saved);
    struct Row {
        std::string text;
        const char* fault;
    };
    std::string edited = text;
    edited.replace(edited.find("FA;;;"), 2, "FR");
    std::string upwards = text;
    upwards.replace(upwards.find(" sub/file"), 9, " ../file0");
    const Row rows[] = {
        {"", saved.c_str()},
        {text.substr(0, text.size() / 2), ", line "},
        {text.substr(0, text.rfind("end ")), ", line "},
        {edited, ", line "},
        {upwards, ", line "},
        {"permora-lists 2" + text.substr(15), "line 1"},
    };
    for (const Row& row : rows) {
        WriteText(saved, row.text);
        const CommandResult refused = RunCli({"restore", saved, "--yes"});
        EXPECT_EQ(refused.exitCode, 2) << refused.output;
        EXPECT_THAT(refused.output, HasSubstr(row.fault));
        EXPECT_EQ(Lists(), spoilt);
    }
    EXPECT_EQ(RunCli({"restore", folder.Path("none"), "--yes"}).exitCode, 2);
}

TEST_F(RestoreCommandTest, AccountsAreExchangedByNameAndBySid) {
    Save();
    const std::string table = folder.Path("accounts.csv");
    WriteText(table, "old,new\r\nGuests,\"Users\"\r\n");
    EXPECT_EQ(RunCli({"restore", saved, "--yes", "--map", "S-1-5-21-1-2-3-1001=S-1-5-21-7-8-9-1002",
                      "--map-file", table})
                  .exitCode,
              0);
    EXPECT_THAT(SddlOf(top + "/sub/file"), HasSubstr("(A;;FR;;;BU)(A;;FA;;;S-1-5-21-7-8-9-1002)"));

    const std::string before = Lists();
    struct Row {
        std::vector<std::string> arguments;
        const char* told;
    };
    WriteText(table, "a,b,c\n");
    const Row refused[] = {
        {{"--map", "nobody-of-that-name=Guests"}, "nobody-of-that-name"},
        {{"--map", "Guests=nobody-of-that-name"}, "nobody-of-that-name"},
        {{"--map", "Guests"}, "OLD=NEW"},
        {{"--map", "Guests=Users", "--map", "S-1-5-32-546=Administrators"}, "two different accounts"},
        {{"--map-file", table}, "accounts.csv, line 1: not OLD,NEW"},
        {{"--map-file", folder.Path("none.csv")}, "none.csv"},
    };
    for (const Row& row : refused) {
        std::vector<std::string> arguments = {"restore", saved, "--yes"};
        arguments.insert(arguments.end(), row.arguments.begin(), row.arguments.end());
        const CommandResult result = RunCli(arguments);
        EXPECT_EQ(result.exitCode, 2) << result.output;
        EXPECT_THAT(result.output, HasSubstr(row.told));
        EXPECT_EQ(Lists(), before);
    }
    const CommandResult told = RunCli({"restore", saved, "--dry-run", "--map", "Guests=Users", "--map",
                                       "Users=Guests", "--map", "S-1-5-21-9-9-9-9=Users"});
    EXPECT_THAT(told.output, AllOf(HasSubstr("Guests becomes Users and Users becomes Guests: both at once"),
                                   HasSubstr("S-1-5-21-9-9-9-9 is nowhere in the file")));
}

TEST_F(RestoreCommandTest, TextsOfIcaclsNeedTheFolderThatTheyStartFrom) {
    Save();
    ASSERT_EQ(RunCli({"save", top, "--format", "icacls", "--output", saved}).exitCode, 0);
    Spoil();
    const CommandResult nowhere = RunCli({"restore", saved, "--yes"});
    EXPECT_EQ(nowhere.exitCode, 2);
    EXPECT_THAT(nowhere.output, HasSubstr("--to must name the folder"));
    const CommandResult restored = RunCli({"restore", saved, "--to", folder.Path(), "--yes"});
    EXPECT_EQ(restored.exitCode, 0) << restored.output;
    EXPECT_THAT(restored.output, HasSubstr("changed: 4, "));
    EXPECT_EQ(Lists(), lists);
}

// On Windows LA is the administrator of the machine that saved the list: nobody here, unless the user says
// whom it means.
TEST_F(RestoreCommandTest, WordsOfIcaclsMeanWhomTheUserSays) {
    std::string utf16;
    for (const char character : std::string("tree\\sub\\file\r\nD:PAI(A;;FR;;;DA)(A;;FA;;;LA)\r\n"))
        utf16 += {character, '\0'};
    WriteText(saved, utf16);
    const auto restore = [&](std::vector<std::string> options) {
        options.insert(options.begin(), {"restore", saved, "--to", folder.Path(), "--yes"});
        return RunCli(options);
    };
    const struct {
        std::vector<std::string> words;
        const char* told;
    } rows[] = {
        {{}, "line 2: the list is not understood, or names an account by a word"},
        {{"--word", "LA=Guests"}, "whom the word means is not known (--word)"},
        {{"--word", "LA=Guests", "--word", "LA=Users"}, "LA is to mean two different accounts"},
        {{"--word", "BA=Guests"}, "BA is no word for an account of a machine or domain"},
        {{"--word", "LA"}, "not WORD=ACCOUNT: LA"},
        {{"--word", "LA=nobody-there"}, "nobody-there"},
    };
    for (const auto& row : rows) {
        const CommandResult refused = restore(row.words);
        EXPECT_EQ(refused.exitCode, 2) << row.told;
        EXPECT_THAT(refused.output, HasSubstr(row.told));
    }
    const CommandResult restored = restore({"--word", "LA=Guests", "--word", "DA=S-1-5-21-7-8-9-512"});
    EXPECT_EQ(restored.exitCode, 0) << restored.output;
    EXPECT_EQ(DaclText(top + "/sub/file"), "D:PAI(A;;FR;;;S-1-5-21-7-8-9-512)(A;;FA;;;BG)");
    const CommandResult other =
        RunCli({"compare", saved, folder.Path(), "--word", "LA=Guests", "--word", "DA=Users"});
    EXPECT_EQ(other.exitCode, 1);
    EXPECT_THAT(other.output, AllOf(HasSubstr("S-1-5-21-7-8-9-512"), HasSubstr("compared: 1, different: 1")));
}

TEST_F(RestoreCommandTest, WhoMayNotGiveAFileAwayIsTold) {
    if (geteuid() != 0) GTEST_SKIP() << "needs another user";
    ASSERT_EQ(SetDescriptorText(top + "/file", "O:S-1-22-1-7D:P(A;;FA;;;WD)"), 0U);
    Save();
    for (const char* name : {"", "/sub", "/file", "/sub/file"}) {
        for (const char* attribute : {"security.NTACL", "user.permora.sd"})
            lremovexattr((top + name).c_str(), attribute);
        ASSERT_EQ(lchown((top + name).c_str(), 65534, 65534), 0);
    }
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(saved.c_str(), 0644), 0);
    const auto output = AsOrdinaryUser([this] {
        const CommandResult result = RunCli({"restore", saved, "--yes", "--no-history"});
        return std::to_string(result.exitCode) + '\n' + result.output;
    });
    ASSERT_TRUE(output);
    EXPECT_THAT(*output, AllOf(testing::StartsWith("1\n"), HasSubstr("\\tree\\file: Permission denied"),
                               HasSubstr("failed: 4")));
}

// The letter of a volume depends on what else is mounted.
TEST_F(RestoreCommandTest, IsPutBackOnTheVolumeItWasSavedOn) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    NtfsVolume one;
    NtfsVolume other;
    ASSERT_EQ(one.Problem() + other.Problem(), "");
    const bool isOneFirst = one.Root() < other.Root();
    NtfsVolume& first = isOneFirst ? one : other;
    NtfsVolume& second = isOneFirst ? other : one;
    MakeTree(first.Path("tree"));
    Spoil();
    const auto foreign = StateOfTree(top);
    first.Unmount();
    MakeTree(second.Path("tree"));
    Save();
    Spoil();

    first.Mount();
    EXPECT_EQ(RunCli({"restore", saved, "--yes"}).exitCode, 0);
    EXPECT_EQ(Lists(), lists);
    EXPECT_TRUE(StateOfTree(first.Path("tree")) == foreign);

    second.Unmount();
    EXPECT_NE(RunCli({"restore", saved, "--yes"}).exitCode, 0);
    EXPECT_TRUE(StateOfTree(first.Path("tree")) == foreign);
    EXPECT_EQ(RunCli({"restore", saved, "--to", first.Path("tree"), "--yes"}).exitCode, 0);
}

// Whatever moment a restore is killed at: undo brings back every byte.
TEST_F(RestoreCommandTest, AKilledRestoreIsUndoneWhole) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    std::minstd_rand random(26);
    int cutOff = 0;
    for (const std::string& place : {folder.Path("large"), volume.Path("large")}) {
        MakeTree(place);
        for (int i = 0; i < 700; ++i)
            WriteText(top + "/sub/" + std::to_string(i), "x");
        Save();
        Spoil();
        ASSERT_EQ(RunCli({"owner", top, "--set", "S-1-22-1-9", "--tree"}).exitCode, 0);
        const auto spoilt = StateOfTree(top);
        ASSERT_EQ(RunCli({"restore", saved, "--yes"}).exitCode, 0);
        const auto restored = StateOfTree(top);
        UndoLast();
        ASSERT_TRUE(StateOfTree(top) == spoilt);
        for (int round = 0; !HasTriedEnough(round, 15, cutOff); ++round) {
            const std::string awaited = top + "/sub/" + std::to_string(random() % 700);
            ASSERT_NO_FATAL_FAILURE(KillAt(awaited));
            const auto state = StateOfTree(top);
            ASSERT_FALSE(state == spoilt);
            if (state != restored) ++cutOff;
            UndoLast();
            ASSERT_TRUE(StateOfTree(top) == spoilt) << "killed at " << awaited;
        }
    }
    EXPECT_GT(cutOff, 0) << "none was killed in the middle";
}

}  // namespace
}  // namespace permora::test
