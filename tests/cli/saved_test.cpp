// Saving the lists of trees and comparing trees, on real volumes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <thread>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/effort.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// The lines that name objects, without their lists' names.
std::string ObjectsIn(const std::string& path) {
    std::istringstream text(ReadWholeFile(path));
    std::string objects;
    for (std::string line; std::getline(text, line);) {
        std::istringstream words(line);
        std::string kind;
        std::string list;
        std::string name;
        words >> kind >> list;
        std::getline(words, name);
        if (kind == "file" || kind == "folder" || kind == "link" || kind == "other")
            objects += kind + name + ", ";
        else if (kind == "mounted" || kind == "unread" || kind == "unlisted")
            objects += line + ", ";
    }
    return objects;
}

// Without the line of the time, and the end, whose hash covers the time.
std::string WithoutTime(std::string text) {
    const std::size_t begin = text.find("\nsaved ");
    text.erase(begin, text.find('\n', begin + 1) - begin);
    return text.substr(0, text.rfind("\nend "));
}

class SavedTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
            GTEST_SKIP() << reason;
        ASSERT_EQ(SetDescriptorText(top, "O:BAG:BAD:P(A;OICI;FA;;;BA)"), 0U);
        ASSERT_EQ(SetDescriptorText(sub, "O:BAG:BAD:P(A;OICI;FA;;;BA)"), 0U);
        ASSERT_EQ(SetDescriptorText(file, "O:BAG:BAD:(A;;FR;;;BG)"), 0U);
    }

    CommandResult Save() const { return RunCli({"save", top, "--output", text}); }
    CommandResult Compare() const { return RunCli({"compare", text, top}); }

    const TemporaryFolder folder;
    const std::string top = folder.MakeFolder("top");
    const std::string sub = folder.MakeFolder("top/sub");
    const std::string file = folder.MakeFile("top/sub/file");
    const std::string text = folder.Path("lists.txt");
};

TEST_F(SavedTest, WhatWasSavedIsAlikeUntilSomethingChanges) {
    for (const char* name : {"top/sub/a b ", "top/sub/line\nfeed", "top/sub-x", "top/\xFF", "top/sub/.x"})
        folder.MakeFile(name);
    ASSERT_EQ(symlink("/etc", folder.Path("top/link").c_str()), 0);
    ASSERT_EQ(mkfifo(folder.Path("top/pipe").c_str(), 0600), 0);
    const CommandResult saved = Save();
    EXPECT_EQ(saved.exitCode, 0) << saved.output;
    EXPECT_EQ(saved.output, "saved: 10\n");
    EXPECT_EQ(
        ObjectsIn(text),
        "folder ., link link, other pipe, folder sub, file sub/.x, file sub/a b\\u{f020}, file sub/file, "
        "file sub/line\\u{f00a}feed, file sub-x, file \\u{f0ff}, ");
    struct stat status {};
    EXPECT_EQ(stat(text.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    EXPECT_EQ(
        RunCommand({"sh", "-c", "tail -n 1 '" + text + "' | grep -o '[0-9a-f]*$'"}).output,
        RunCommand({"sh", "-c", "head -n -1 '" + text + "' | sha256sum | grep -o '^[0-9a-f]*'"}).output);

    // The same tree gives the same text, also on standard output.
    const std::string before = ReadWholeFile(text);
    const CommandResult again = RunCli({"save", top, "--output", "-"});
    EXPECT_EQ(again.exitCode, 0);
    EXPECT_EQ(WithoutTime(again.output), WithoutTime(before));

    EXPECT_EQ(Compare().output, "compared: 10, different: 0\n");
    EXPECT_EQ(Compare().exitCode, 0);

    ASSERT_EQ(SetDescriptorText(file, "O:BUD:P(A;;FR;;;BG)(A;;FA;;;WD)"), 0U);
    std::filesystem::remove(folder.Path("top/sub-x"));
    std::filesystem::remove(folder.Path("top/link"));
    folder.MakeFolder("top/link");
    folder.MakeFile("top/link/inside");
    folder.MakeFile("top/sub/new");
    const CommandResult changed = Compare();
    EXPECT_EQ(changed.exitCode, 1);
    for (const char* line :
         {"it was a link and is a folder: ", "top/link\n", "added: ", "top/link/inside\n", "top/sub/new\n",
          "missing: ", "top/sub-x\n", "changed: ", "top/sub/file\n", "Owner", "Everyone", "different: 5\n"})
        EXPECT_THAT(changed.output, HasSubstr(line));
    EXPECT_THAT(changed.output, Not(HasSubstr("pipe")));

    const auto json = ResultsIn(RunCli({"compare", text, top, "--json"}).output);
    ASSERT_EQ(json.size(), 5U);
    std::string words;
    for (const auto& difference : json)
        words += difference["difference"].get<std::string>() + ' ';
    EXPECT_EQ(words, "otherKind added changed added missing ");
    EXPECT_EQ(json[2]["after"], "O:BUG:BAD:PAI(A;;FR;;;BG)(A;;FA;;;WD)");
}

TEST_F(SavedTest, TwoTreesAreComparedToo) {
    const std::string copy = folder.Path("copy");
    ASSERT_EQ(RunCommand({"cp", "-a", top, copy}).exitCode, 0);
    EXPECT_EQ(RunCli({"compare", top, copy}).exitCode, 0);
    std::filesystem::remove(copy + "/sub/file");
    const CommandResult result = RunCli({"compare", top, copy});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "missing: " + copy + "/sub/file\ncompared: 3, different: 1\n");
}

// What cannot be read is named, and the text says that it is not complete.
TEST_F(SavedTest, AnIncompleteTextSaysSo) {
    ASSERT_EQ(setxattr(file.c_str(), "security.NTACL", "damaged", 7, 0), 0);
    folder.MakeFile("top/sub/second");
    const CommandResult saved = Save();
    EXPECT_EQ(saved.exitCode, 1);
    EXPECT_THAT(saved.output, HasSubstr("top/sub/file: not saved: "));
    EXPECT_EQ(ObjectsIn(text), "folder ., folder sub, unread 1338 sub/file, file sub/second, ");
    EXPECT_THAT(ReadWholeFile(text), HasSubstr("\nend incomplete 4 "));
    const CommandResult compared = Compare();
    EXPECT_EQ(compared.exitCode, 1);
    EXPECT_THAT(compared.output, HasSubstr("something could not be read when it was saved"));
    EXPECT_THAT(compared.output, HasSubstr("top/sub/file: not compared: "));

    // A form that cannot say so is not written at all.
    const std::string other = folder.Path("other");
    EXPECT_EQ(RunCli({"save", top, "--output", other, "--format", "icacls"}).exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(other));

    const CommandResult half = RunCli({"save", sub, folder.Path("none"), "--output", text});
    EXPECT_EQ(half.exitCode, 1);
    EXPECT_THAT(ReadWholeFile(text), HasSubstr("\nend incomplete "));
}

TEST_F(SavedTest, TheFileIsReplacedWholeOrNotAtAll) {
    // Neither a link nor what is no file is followed or replaced.
    const std::string link = folder.Path("link");
    const std::string pipe = folder.Path("pipe");
    ASSERT_EQ(symlink(file.c_str(), link.c_str()), 0);
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& name : {link, pipe})
        EXPECT_EQ(RunCli({"save", top, "--output", name}).exitCode, 2) << name;
    EXPECT_EQ(ReadWholeFile(file), "");
    EXPECT_TRUE(std::filesystem::is_symlink(link) && std::filesystem::is_fifo(pipe));
    EXPECT_EQ(Save().exitCode, 0);
    const std::string before = ReadWholeFile(text);
    EXPECT_EQ(RunCli({"save", folder.Path("none"), "--output", text}).exitCode, 1);
    EXPECT_EQ(ReadWholeFile(text), before);
    EXPECT_EQ(RunCli({"save", top, "--output", sub}).exitCode, 2);
    EXPECT_EQ(RunCli({"save", top, "--output", folder.Path("none/lists")}).exitCode, 2);
    EXPECT_EQ(RunCli({"save", top}).exitCode, 2);
    EXPECT_EQ(RunCommand({"sh", "-c", CliPath() + " save " + top + " --output - >/dev/full"}).exitCode, 1);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 4);
}

// At any moment: whoever ends it finds the file of before, or the new one whole, and nothing else.
TEST_F(SavedTest, ASaveThatEndsEarlyLeavesTheFileOfBefore) {
    for (int i = 0; i < 1500; ++i)
        folder.MakeFile("top/sub/" + std::to_string(i));
    ASSERT_EQ(Save().exitCode, 0);
    const std::string log = folder.Path("log");
    std::mt19937 random(20261126);
    std::chrono::microseconds whole{};
    int endedEarly = 0;
    for (int round = 0; !HasTriedEnough(round, 20, endedEarly); ++round) {
        const std::string before = ReadWholeFile(text);
        const auto began = std::chrono::steady_clock::now();
        const int save = StartService({CliPath(), "save", top, "--output", text}, log);
        ASSERT_GT(save, 0);
        if (round > 0) {
            std::this_thread::sleep_for(whole * (random() % 1000) / 1000);
            kill(save, round % 4 == 0 ? SIGINT : SIGKILL);
        }
        AwaitServiceEnd(save);
        if (round == 0)
            whole = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() -
                                                                          began);
        if (round > 0 && ReadWholeFile(text) == before) ++endedEarly;
        ASSERT_EQ(Compare().output, "compared: 1503, different: 0\n") << "round " << round;
        std::filesystem::remove(log);
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 2);
    }
    EXPECT_GT(endedEarly, 0);
}

// Who may not read all of a tree saves what he may, and the text says that something is missing.
TEST_F(SavedTest, AnOrdinaryUserSavesWhatHeMayRead) {
    if (geteuid() != 0) GTEST_SKIP() << "other users need root";
    constexpr uid_t kNobody = 65534;
    const TemporaryFolder own;
    const std::string tree = own.MakeFolder("tree");
    const std::string closed = own.MakeFolder("tree/closed");
    own.MakeFile("tree/closed/file");
    for (const std::string& path : {own.Path(), tree, own.MakeFile("tree/own")})
        ASSERT_EQ(chown(path.c_str(), kNobody, kNobody), 0);
    const std::string lists = own.Path("lists");
    const auto asNobody = [](const std::vector<std::string>& arguments) {
        return AsOrdinaryUser([&arguments] {
                   const CommandResult result = RunCli(arguments);
                   return std::to_string(result.exitCode) + ": " + result.output;
               })
            .value_or("");
    };
    ASSERT_EQ(chmod(closed.c_str(), 0700), 0);
    EXPECT_THAT(asNobody({"save", tree, "--output", lists}), AllOf(StartsWith("1: "), HasSubstr("closed")));
    EXPECT_EQ(ObjectsIn(lists), "folder ., unread 5 closed, unlisted 5 closed, file own, ");
    EXPECT_THAT(ReadWholeFile(lists), HasSubstr("\nend incomplete "));
    ASSERT_EQ(chmod(closed.c_str(), 0755), 0);
    EXPECT_EQ(asNobody({"save", tree, "--output", lists}), "0: saved: 4\n");
    EXPECT_EQ(asNobody({"compare", lists, tree}), "0: compared: 4, different: 0\n");
    EXPECT_EQ(asNobody({"save", tree, "--output", folder.Path("lists of another")}).substr(0, 2), "2:");
}

TEST_F(SavedTest, OnlyAWholeTextIsCompared) {
    ASSERT_EQ(Save().exitCode, 0);
    const std::string whole = ReadWholeFile(text);
    const struct {
        std::string contents;
        const char* reason;
    } rows[] = {
        {whole.substr(0, whole.size() / 2), "cut off"},
        {whole + "file x y\n", "something comes after the end"},
        {std::string(whole).replace(whole.find("folder "), 6, "file"), "line "},
        {"", "no text of saved lists"},
    };
    for (const auto& row : rows) {
        std::ofstream(text, std::ios::binary | std::ios::trunc) << row.contents;
        const CommandResult result = Compare();
        EXPECT_EQ(result.exitCode, 2) << row.reason;
        EXPECT_THAT(result.output, HasSubstr(row.reason));
        EXPECT_THAT(result.output, Not(HasSubstr("compared: ")));
    }
    EXPECT_EQ(RunCli({"compare", top, folder.Path("none")}).exitCode, 2);
    EXPECT_EQ(RunCli({"compare", top}).exitCode, 2);
}

TEST_F(SavedTest, WindowsFormGoesThereAndBack) {
    EXPECT_EQ(RunCli({"save", top, "--output", text, "--format", "icacls"}).exitCode, 0);
    const std::string shown = RunCommand({"iconv", "-f", "UTF-16LE", "-t", "UTF-8", text}).output;
    EXPECT_THAT(shown, StartsWith("top\r\nD:PAI(A;OICI;FA;;;BA)\r\ntop\\sub\r\nD:PAI(A;OICI;FA;;;BA)\r\n"));
    // As the tool restores it: the folder in which the top stands is named. What stands beside it is no
    // matter.
    EXPECT_EQ(RunCli({"compare", text, folder.Path()}).exitCode, 0);
    ASSERT_EQ(SetDescriptorText(file, "D:P(A;;FA;;;WD)"), 0U);
    folder.MakeFile("top/new");
    const CommandResult result = RunCli({"compare", text, folder.Path()});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.output, HasSubstr("different: 2\n"));
    EXPECT_EQ(RunCli({"save", top, "/etc", "--output", text, "--format", "icacls"}).exitCode, 2);
}

TEST_F(SavedTest, MountedVolumesAreNamedAndNotEntered) {
    if (geteuid() != 0) GTEST_SKIP() << "mounting needs root";
    ASSERT_EQ(EnterOwnMounts(), "");
    const std::string last = folder.MakeFile("top/z");
    ASSERT_EQ(mount("none", sub.c_str(), "tmpfs", 0, nullptr), 0);
    EXPECT_EQ(Save().exitCode, 0);
    EXPECT_EQ(ObjectsIn(text), "folder ., mounted sub, file z, ");
    EXPECT_EQ(Compare().exitCode, 0);
    // A file of the same volume, too.
    ASSERT_EQ(mount(text.c_str(), last.c_str(), nullptr, MS_BIND, nullptr), 0);
    EXPECT_THAT(Compare().output, HasSubstr("it was a file and is another volume: "));
    umount2(last.c_str(), MNT_DETACH);
    umount2(sub.c_str(), MNT_DETACH);
}

TEST(SavedNtfsTest, NamesAreComparedAsTheVolumeComparesThem) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    const TemporaryFolder folder;
    const std::string text = folder.Path("lists");
    std::filesystem::create_directories(volume.Path("team/Sub"));
    for (const char* name : {"team/Sub/\xC3\x84.txt", "team/Sub/b", "team/c"})
        EXPECT_EQ(RunCommand({"touch", volume.Path(name)}).exitCode, 0);
    ASSERT_EQ(SetDescriptorText(volume.Path("team"), "O:BAG:BAD:P(A;OICI;FA;;;BA)"), 0U);
    ASSERT_EQ(SetDescriptorText(volume.Path("team/c"), "S:(AU;SAFA;FA;;;WD)"), 0U);
    EXPECT_EQ(RunCli({"save", volume.Path("team"), "--output", text}).exitCode, 0);
    EXPECT_THAT(ReadWholeFile(text), HasSubstr("\nvolume NTFS "));
    EXPECT_THAT(ReadWholeFile(text), HasSubstr("S:(AU;SAFA;FA;;;WD)"));
    EXPECT_EQ(RunCli({"compare", text, volume.Path("team")}).exitCode, 0);

    std::filesystem::rename(volume.Path("team/Sub"), volume.Path("team/SUB"));
    std::filesystem::rename(volume.Path("team/SUB/\xC3\x84.txt"), volume.Path("team/SUB/\xC3\xA4.TXT"));
    const CommandResult renamed = RunCli({"compare", text, volume.Path("team")});
    EXPECT_EQ(renamed.output, "compared: 5, different: 0\n");
    EXPECT_EQ(renamed.exitCode, 0);
    // On a volume that tells them apart they are others.
    ASSERT_EQ(RunCommand({"cp", "-a", volume.Path("team"), folder.Path("team")}).exitCode, 0);
    EXPECT_THAT(RunCli({"compare", text, folder.Path("team")}).output, HasSubstr("missing: "));
}

}  // namespace
}  // namespace permora::test
