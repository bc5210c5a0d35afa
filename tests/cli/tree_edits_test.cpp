// replace, clone and revoke --tree, as a user works with them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/tree_state.h"

namespace permora::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr SECURITY_INFORMATION kAll = 15;
const std::string kOld = "S-1-5-21-1-2-3-1001";
const std::string kNew = "S-1-5-21-1-2-3-1002";

std::string Replaced(std::string text, const std::string& what, const std::string& with) {
    for (std::size_t at = text.find(what); at != text.npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
    return text;
}

std::map<std::string, std::string> TextsOf(const std::string& root) {
    std::map<std::string, std::string> texts;
    for (const std::string& object : ObjectsOf(root))
        texts[object] = DescriptorText(PathInTree(root, object), kAll);
    return texts;
}

void MakeFile(const std::string& path) {
    std::ofstream(path) << 'x';
}

// A tree in which everything inherits what it should, with entries of all kinds for kOld and others.
void MakeRightTree(const std::string& root, std::size_t objects) {
    std::minstd_rand random(7);
    const auto pick = [&random](std::size_t count) { return random() % count; };
    std::vector<std::string> folders = {root};
    std::vector<std::string> files;
    fs::create_directory(root);
    for (std::size_t i = 0; i < objects; ++i) {
        std::string path = folders[pick(folders.size())] + '/' + std::to_string(i);
        if (pick(3) == 0) {
            fs::create_directory(path);
            folders.push_back(std::move(path));
        } else {
            MakeFile(path);
            files.push_back(std::move(path));
        }
    }
    ASSERT_EQ(SetDescriptorText(root, "O:BAG:BAD:P(A;OICI;FA;;;BA)(A;OICIIO;FA;;;CO)"), 0U);
    std::vector<std::string> all = folders;
    all.insert(all.end(), files.begin(), files.end());
    for (const std::string& path : all)
        if (path != root)
            ASSERT_EQ(SetDescriptorText(path, "O:" + (pick(4) == 0 ? kOld : std::string("BA")) + "G:BAD:"),
                      0U);
    const char* const lists[] = {
        "D:(D;OICI;FW;;;OLD)(A;CI;FR;;;BG)",          "D:(A;OICI;FR;;;OLD)",
        "D:(A;OICINP;FX;;;OLD)(A;OIIO;FR;;;WD)",      "D:P(A;OICI;FA;;;BA)(A;OICI;FX;;;OLD)",
        "D:(XA;OICI;FR;;;WD;(Member_of {SID(OLD)}))", "D:(A;;FR;;;BG)",
    };
    for (std::size_t i = 0; i < objects / 3; ++i)
        ASSERT_EQ(SetDescriptorText(all[pick(all.size())], Replaced(lists[pick(6)], "OLD", kOld)), 0U);
}

class TreeEditsTest : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "other owners need root";
        ASSERT_EQ(EnterOwnMounts(), "");
    }
    CommandResult Replace(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments = {"replace", top, "--account", kOld, "--by", kNew};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunCli(arguments);
    }
    // A tree with one account in the usual places.
    void MakeSmallTree() {
        fs::create_directories(top + "/sub/deep");
        for (const char* name : {"/file", "/sub/file", "/sub/deep/file"})
            MakeFile(top + name);
        ASSERT_EQ(SetDescriptorText(top, "O:BAD:P(A;OICI;FA;;;BA)"), 0U);
        for (const char* name : {"/sub/deep", "/file", "/sub/file", "/sub/deep/file"})
            ASSERT_EQ(SetDescriptorText(top + name, "O:BAD:"), 0U);
        ASSERT_EQ(SetDescriptorText(top + "/sub", "O:BAD:(A;OICI;FR;;;" + kOld + ")"), 0U);
    }

    const TemporaryFolder folder;
    std::string top = folder.Path("tree");
};

TEST_F(TreeEditsTest, ARightTreeStaysRightAndComesBack) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    for (const std::string& place : {folder.Path("tree"), volume.Path("tree")}) {
        SCOPED_TRACE(place);
        top = place;
        MakeRightTree(top, 120);
        auto expected = TextsOf(top);
        const TreeState before = StateOfTree(top);
        const CommandResult dryRun = Replace({"--dry-run"});
        EXPECT_EQ(dryRun.exitCode, 0) << dryRun.output;
        EXPECT_EQ(DifferenceOf(StateOfTree(top), before), "");
        const CommandResult replaced = Replace();
        EXPECT_EQ(replaced.exitCode, 0) << replaced.output;
        EXPECT_THAT(dryRun.output, HasSubstr("would " + Replaced(replaced.output, "changed:", "change:")));
        const TreeState after = StateOfTree(top);
        for (auto& [object, text] : expected) {
            text = Replaced(text, kOld, kNew);
            EXPECT_EQ(DescriptorText(PathInTree(top, object), kAll), text) << object;
        }
        EXPECT_THAT(Replace().output, AllOf(HasSubstr("changed: 0, "), HasSubstr(kOld + " is nowhere")));

        // What is inherited anew is what is there.
        for (const char* command : {"grant", "revoke"}) {
            std::vector<std::string> arguments = {command, top, "--account", "Everyone"};
            if (std::string(command) == "grant")
                arguments.insert(arguments.end(), {"--rights", "Delete", "--scope", "This folder only"});
            ASSERT_EQ(RunCli(arguments).exitCode, 0);
        }
        EXPECT_EQ(DifferenceOf(StateOfTree(top), after), "");

        ASSERT_EQ(RunCli({"replace", top, "--map", kNew + "=" + kOld}).exitCode, 0);
        EXPECT_EQ(DifferenceOf(StateOfTree(top), before), "");
        ASSERT_EQ(RunCli({"undo", "--yes"}).exitCode, 0);
        EXPECT_EQ(DifferenceOf(StateOfTree(top), after), "");

        // Beside it: what both have is what NEW had alone.
        ASSERT_EQ(RunCli({"replace", top, "--account", kNew, "--by", kOld, "--copy"}).exitCode, 0);
        ASSERT_EQ(RunCli({"revoke", top, "--tree", "--account", kOld, "--drop-other-entries"}).exitCode, 0);
        for (const auto& [object, text] : expected)
            if (text.find("Member_of") == text.npos)
                EXPECT_EQ(DescriptorText(PathInTree(top, object), kAll), text) << object;
        fs::remove_all(top);
    }
}

TEST_F(TreeEditsTest, WhatIsNotChangedIsTold) {
    MakeSmallTree();
    ASSERT_EQ(SetDescriptorText(folder.Path(), "D:P(A;OICI;FA;;;BA)(A;OICI;FX;;;" + kOld + ")"), 0U);
    ASSERT_EQ(SetDescriptorText(top, "D:(A;OICI;FR;;;" + kOld + ")"), 0U);
    ASSERT_EQ(SetDescriptorText(top + "/sub/deep", "D:P(A;;FR;;;" + kOld + ")"), 0U);
    const std::string outside = folder.MakeFile("outside");
    ASSERT_EQ(SetDescriptorText(outside, "O:" + kOld + "D:P(A;;FR;;;" + kOld + ")"), 0U);
    const std::string outsides = DescriptorText(outside, kAll);
    fs::create_hard_link(outside, top + "/linked");
    fs::create_symlink(outside, top + "/symlink");
    fs::create_directory(top + "/mounted");
    ASSERT_EQ(mount("none", (top + "/mounted").c_str(), "tmpfs", 0, nullptr), 0);
    MakeFile(top + "/mounted/inside");
    constexpr const char* kDamage = "no descriptor";
    MakeFile(top + "/damaged");
    ASSERT_EQ(SetDescriptorText(top + "/damaged", "D:P"), 0U);
    std::string damaged;
    for (const char* name : {"security.NTACL", "user.permora.sd"})
        if (lgetxattr((top + "/damaged").c_str(), name, nullptr, 0) > 0) damaged = name;
    ASSERT_EQ(lsetxattr((top + "/damaged").c_str(), damaged.c_str(), kDamage, 13, 0), 0);

    const TreeState before = StateOfTree(top);
    for (const char* option : {"--dry-run", "--quiet"}) {
        const CommandResult result = Replace({option});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_THAT(result.output, AllOf(HasSubstr("/tree: it inherits such entries from the folder above"),
                                         HasSubstr("/tree/damaged: not changed: "),
                                         HasSubstr("/tree/linked: not changed: its owner would change"),
                                         HasSubstr("/tree/mounted: not changed, nor anything in it"),
                                         HasSubstr("failed: 3\n"), Not(HasSubstr("symlink:"))));
        if (option[2] == 'd') EXPECT_EQ(DifferenceOf(StateOfTree(top), before), "");
    }
    EXPECT_EQ(DescriptorText(outside, kAll), outsides);
    EXPECT_EQ(StateOfTree(top).at("damaged"), before.at("damaged"));
    EXPECT_THAT(DaclText(top + "/sub/file"),
                AllOf(HasSubstr("FR;;;" + kNew), HasSubstr("FX;;;" + kOld), Not(HasSubstr("FX;;;" + kNew))));
    EXPECT_EQ(Replace({"--linked"}).exitCode, 1);
    EXPECT_EQ(DescriptorText(outside, kAll), Replaced(outsides, kOld, kNew));
    umount((top + "/mounted").c_str());
}

TEST_F(TreeEditsTest, EntriesOfAnAccountGoFromAWholeTree) {
    MakeSmallTree();
    ASSERT_EQ(SetDescriptorText(top + "/file", "D:P(A;;FR;;;" + kOld + ")"), 0U);
    ASSERT_EQ(SetDescriptorText(top + "/sub/file", "D:(XA;;FX;;;" + kOld + ";(@User.a == 1))"), 0U);
    const TreeState before = StateOfTree(top);
    const CommandResult dryRun = RunCli({"revoke", top, "--tree", "--account", kOld, "--dry-run"});
    EXPECT_EQ(dryRun.exitCode, 0);
    EXPECT_THAT(dryRun.output, AllOf(HasSubstr("/tree/file: its list would let nobody in\n"),
                                     HasSubstr("would change: " + top + "/sub\n"), HasSubstr("Removed"),
                                     HasSubstr("would change: 5, already so: 1, failed: 0\n")));
    EXPECT_EQ(DifferenceOf(StateOfTree(top), before), "");
    const CommandResult revoked = RunCli({"revoke", top, "--tree", "--account", kOld});
    EXPECT_EQ(revoked.exitCode, 0);
    EXPECT_THAT(
        revoked.output,
        AllOf(HasSubstr("/tree/file: its list lets nobody in now\n"),
              HasSubstr("/tree/sub/file: entries for the account stay, since they are of other types")));
    EXPECT_EQ(DaclText(top + "/sub/deep/file"), "D:AI(A;ID;FA;;;BA)");
    EXPECT_THAT(DaclText(top + "/sub/file"), HasSubstr("(XA;;FX;;;" + kOld));
    EXPECT_EQ(RunCli({"revoke", top, "--tree", "--account", kOld, "--drop-other-entries"}).exitCode, 0);
    EXPECT_EQ(DaclText(top + "/sub/file"), "D:AI(A;ID;FA;;;BA)");
    for (int i = 0; i < 2; ++i)
        ASSERT_EQ(RunCli({"undo", "--yes"}).exitCode, 0);
    EXPECT_EQ(DifferenceOf(StateOfTree(top), before), "");
}

// A host's user and group that nobody has any more; an account of a domain that is not known here; one of the
// system's that this installation does not know, and a service.
TEST_F(TreeEditsTest, EntriesOfAccountsThatNoLongerExistGo) {
    MakeSmallTree();
    const std::string known = "(A;;FR;;;S-1-22-1-0)(A;;FR;;;S-1-5-32-999)(A;;FR;;;S-1-5-80-1-2-3-4-5)";
    const std::string gone = "(A;;FR;;;S-1-22-1-4000000)(D;;FW;;;S-1-22-2-4000000)";
    const std::string foreign = "(A;;FR;;;" + kOld + ")";
    const std::string file = top + "/sub/file";
    ASSERT_EQ(SetDescriptorText(file, "D:P" + gone + known + foreign), 0U);
    const std::string sub = DaclText(top + "/sub");
    const TreeState before = StateOfTree(top);
    EXPECT_EQ(RunCli({"revoke", top, "--tree", "--unresolved", "--dry-run"}).exitCode, 0);
    EXPECT_EQ(DifferenceOf(StateOfTree(top), before), "");
    const CommandResult result = RunCli({"revoke", top, "--tree", "--unresolved"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, AllOf(HasSubstr("no longer exists: S-1-22-2-4000000\n"),
                                     HasSubstr("not known here, and stays without --foreign: " + kOld + '\n'),
                                     HasSubstr("changed: 1, already so: 5, failed: 0\n")));
    EXPECT_EQ(DaclText(file), "D:PAI" + known + foreign);
    EXPECT_EQ(DaclText(top + "/sub"), sub);
    EXPECT_EQ(RunCli({"revoke", top, "--tree", "--unresolved", "--foreign"}).exitCode, 0);
    EXPECT_EQ(DaclText(file), "D:PAI" + known);
    EXPECT_EQ(DaclText(top + "/sub"), "D:AI(A;OICIID;FA;;;BA)");
}

TEST_F(TreeEditsTest, WhatOneObjectHasIsGivenToOthers) {
    MakeSmallTree();
    const std::string source = folder.MakeFolder("source");
    ASSERT_EQ(SetDescriptorText(folder.Path(), "D:P(A;OICI;FW;;;BA)"), 0U);
    ASSERT_EQ(SetDescriptorText(source, "O:" + kNew + "D:(A;OICI;FX;;;" + kNew + ")"), 0U);
    const TreeState before = StateOfTree(top);

    const CommandResult alone = RunCli({"clone", "--from", source, top});
    EXPECT_EQ(alone.exitCode, 0) << alone.output;
    EXPECT_EQ(DaclText(top), DaclText(source));
    EXPECT_EQ(DaclText(top + "/sub"),
              "D:AI(A;OICI;FR;;;" + kOld + ")(A;OICIID;FX;;;" + kNew + ")(A;OICIID;FW;;;BA)");
    EXPECT_EQ(DescriptorText(top, OWNER_SECURITY_INFORMATION), "O:BA");

    const CommandResult piped = RunCli({"clone", "--from", source, top, "--tree"});
    EXPECT_EQ(piped.exitCode, 2);
    EXPECT_THAT(piped.output, HasSubstr("--yes"));
    const CommandResult whole = RunCli({"clone", "--from", source, top, "--tree", "--owner", "--yes"});
    EXPECT_EQ(whole.exitCode, 0) << whole.output;
    EXPECT_EQ(DaclText(top + "/sub/deep"), "D:AI(A;OICIID;FX;;;" + kNew + ")(A;OICIID;FW;;;BA)");
    EXPECT_EQ(DescriptorText(top + "/sub/file", OWNER_SECURITY_INFORMATION), "O:" + kNew);
    EXPECT_THAT(RunCli({"history"}).output, HasSubstr("permissions of another object given to "));
    for (int i = 0; i < 2; ++i)
        ASSERT_EQ(RunCli({"undo", "--yes"}).exitCode, 0);
    EXPECT_EQ(DifferenceOf(StateOfTree(top), before), "");
    EXPECT_EQ(RunCli({"clone", "--from", folder.Path("none"), top}).exitCode, 2);
}

TEST_F(TreeEditsTest, WrongArgumentsTouchNothing) {
    struct Row {
        std::vector<std::string> arguments;
        const char* told;
    };
    const Row rows[] = {
        {{"replace", "/nowhere"}, "--account and --by, --map or --map-file is required"},
        {{"replace", "/nowhere", "--account", kOld}, "--by is required with --account"},
        {{"replace", "/nowhere", "--by", kOld}, "--account is required with --by"},
        {{"replace", "/nowhere", "--account", kOld, "--by", kNew, "--map", kOld + "=S-1-1-0"},
         "is to become two different accounts"},
        {{"replace", "/nowhere", "--account", kOld, "--by", kNew, "--copy", "--keep-owners"}, "--copy"},
        {{"clone", "/nowhere"}, "--from"},
        {{"revoke", "--share", "x", "--account", kOld, "--tree"}, "not about shares"},
        {{"revoke", "/nowhere"}, "--account is required"},
        {{"revoke", "/nowhere", "--unresolved"}, "--tree"},
        {{"revoke", "/nowhere", "--tree", "--unresolved", "--account", kOld}, "excludes --account"},
        {{"revoke", "/nowhere", "--tree", "--account", kOld, "--foreign"}, "--unresolved"},
    };
    for (const Row& row : rows) {
        const CommandResult result = RunCli(row.arguments);
        EXPECT_EQ(result.exitCode, 2) << result.output;
        EXPECT_THAT(result.output, HasSubstr(row.told));
    }
}

// Whatever moment it is killed or interrupted at: undo brings back every byte.
TEST_F(TreeEditsTest, ACutOffChangeIsUndoneWhole) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    std::minstd_rand random(23);
    int cutOff = 0;
    for (const std::string& place : {folder.Path("large"), volume.Path("large")}) {
        fs::create_directories(place + "/sub");
        for (int i = 0; i < 600; ++i)
            MakeFile(place + "/sub/" + std::to_string(i));
        ASSERT_EQ(SetDescriptorText(place, "O:" + kOld + "D:P(A;OICI;FA;;;" + kOld + ")"), 0U);
        ASSERT_EQ(RunCli({"reset", place, "--yes"}).exitCode, 0);
        const TreeState before = StateOfTree(place);
        for (int round = 0; round < 8; ++round) {
            const std::string awaited = place + "/sub/" + std::to_string(random() % 600);
            const std::string list = DaclText(awaited);
            const int running = StartService({CliPath(), "replace", place, "--account", kOld, "--by", kNew},
                                             folder.Path("log"));
            ASSERT_GT(running, 0);
            siginfo_t ended{};
            while (DaclText(awaited) == list && ended.si_pid == 0)
                waitid(P_PID, static_cast<id_t>(running), &ended, WEXITED | WNOHANG | WNOWAIT);
            kill(running, round % 3 == 0 ? SIGINT : SIGKILL);
            waitpid(running, nullptr, 0);
            const TreeState state = StateOfTree(place);
            ASSERT_NE(DifferenceOf(state, before), "");
            if (DaclText(place + "/sub/99") == list) ++cutOff;  // the last one
            EXPECT_EQ(RunCli({"undo", "--yes"}).exitCode, 0);
            ASSERT_EQ(DifferenceOf(StateOfTree(place), before), "") << "cut off at " << awaited;
        }
    }
    EXPECT_GT(cutOff, 0) << "none was cut off in the middle";
}

}  // namespace
}  // namespace permora::test
