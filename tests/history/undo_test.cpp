// Taking changes back, on real volumes.
#include "history/undo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "platform/api/errors.h"
#include "platform/held_object.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/tree_state.h"

namespace permora::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

std::map<std::string, StoredSecurity> StoredIn(const std::string& root) {
    std::map<std::string, StoredSecurity> stored;
    for (const std::string& object : ObjectsOf(root))
        EXPECT_EQ(Held(PathInTree(root, object)).ReadStored(stored[object]), ERROR_SUCCESS) << object;
    return stored;
}

std::string WithBackslashes(std::string path) {
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

// Does the work and records what became different below the top, each folder before its contents.
void Record(Change& change, const std::string& root, const std::function<void()>& work) {
    const auto before = StoredIn(root);
    work();
    const auto after = StoredIn(root);
    ChangedTop top;
    ASSERT_EQ(Held(root).FindTop(top), ERROR_SUCCESS);
    std::uint64_t number = 0;
    ASSERT_EQ(change.BeginTop(top, number), ERROR_SUCCESS);
    std::vector<DescriptorChange> batch;
    for (const auto& [object, stored] : before) {
        if (stored == after.at(object)) continue;
        const HeldObject held = Held(PathInTree(root, object));
        batch.push_back(
            {WithBackslashes(object), held.IsFolder(), held.FileNumber(), stored, after.at(object)});
    }
    ASSERT_EQ(change.Record(number, batch), ERROR_SUCCESS);
}

// Writes down what an undo leaves alone.
class RecordingUndo : public UndoObserver {
  public:
    bool Begin(const ChangedTop& /*top*/, const std::string& /*path*/) override { return begun++ != stopAt; }
    void Leave(const ChangedTop& /*top*/, const std::string& path, LeftAlone extent, DWORD reason) override {
        left.push_back(path + (extent == LeftAlone::kAllBelow ? " and below: " : ": ") +
                       LeftAloneText(reason));
    }
    std::size_t begun = 0;
    std::size_t stopAt = static_cast<std::size_t>(-1);
    std::vector<std::string> left;
};

std::string TextOf(const UndoCounts& counts) {
    return std::to_string(counts.restored) + " restored, " + std::to_string(counts.asBefore) +
           " as before, " + std::to_string(counts.leftAlone) + " left alone";
}

constexpr UndoOptions kDryRun = {.mode = UndoMode::kDryRun};
constexpr UndoOptions kForce = {.changedSince = ChangedSince::kOverwrite};

// A history, and a tree with what there is on a volume: lists, objects without one, several owners.
class TreeToUndo {
  public:
    TreeToUndo(const std::string& folder, const std::string& historyFolder) : root(folder + "/top") {
        EXPECT_EQ(History::Open(historyFolder + "/history.db", history), DWORD{ERROR_SUCCESS});
        for (const char* name : {"", "/sub", "/sub/deep", "/other"})
            EXPECT_TRUE(fs::create_directory(root + name));
        for (const char* name : {"a", "sub/b", "sub/deep/c", "other/d"})
            EXPECT_EQ(RunCommand({"touch", Path(name)}).exitCode, 0);
        EXPECT_EQ(SetDescriptorText(Path("sub"), "D:P(A;OICI;FA;;;BA)(A;;FR;;;WD)"), 0U);
        EXPECT_EQ(SetDescriptorText(Path("sub/b"), "D:(A;;FX;;;BG)"), 0U);
    }

    std::string Path(const std::string& object) const { return PathInTree(root, object); }
    const std::string& Root() const { return root; }
    TreeState State() const { return StateOfTree(root); }

    std::int64_t Change(const std::function<void()>& work) {
        const auto change = history->Begin(ChangeKind::kPermissions);
        Record(*change, root, work);
        change->End();
        return change->Number();
    }
    // Lists of two folders and their contents, and an owner: a record of each of the eight objects.
    std::int64_t ChangeLists() {
        return Change([this] {
            EXPECT_EQ(SetDescriptorText(root, "D:P(A;OICI;FA;;;BA)(D;OICI;FR;;;BG)"), 0U);
            EXPECT_EQ(SetDescriptorText(Path("sub"), "D:P(A;OICI;FA;;;SY)"), 0U);
            EXPECT_EQ(SetDescriptorText(Path("other/d"), "O:S-1-22-1-" + std::to_string(geteuid())), 0U);
        });
    }

    std::string Undo(std::int64_t number, const UndoOptions& options = {}, DWORD expected = ERROR_SUCCESS) {
        UndoCounts counts;
        observer.begun = 0;
        observer.left.clear();
        EXPECT_EQ(UndoChange(*history, number, options, observer, counts), expected);
        return TextOf(counts);
    }
    ChangeState StateOfChange(std::int64_t number) {
        ChangeFacts facts;
        EXPECT_EQ(history->Find(number, facts), ERROR_SUCCESS);
        return facts.state;
    }
    std::int64_t LastUndo() {
        std::vector<ChangeFacts> changes;
        EXPECT_EQ(history->List(changes), ERROR_SUCCESS);
        return changes.empty() ? 0 : changes.front().number;
    }

    RecordingUndo observer;
    std::unique_ptr<History> history;

  private:
    const std::string root;
};

// There and back, and forth again; what went wrong.
std::string UndoAndRedo(const std::string& folder, const std::string& historyFolder) {
    TreeToUndo tree(folder, historyFolder);
    const TreeState before = tree.State();
    const std::int64_t change = tree.ChangeLists();
    const TreeState after = tree.State();
    const std::string dry = tree.Undo(change, kDryRun);
    if (tree.State() != after) return "the dry run wrote";
    const std::string undone = tree.Undo(change);
    if (tree.State() != before) return "not undone: " + DifferenceOf(before, tree.State());
    if (tree.StateOfChange(change) != ChangeState::kUndone) return "not marked";
    const std::int64_t undo = tree.LastUndo();
    const std::string again = tree.Undo(change);
    const std::string redone = tree.Undo(undo);
    if (tree.State() != after) return "not redone: " + DifferenceOf(after, tree.State());
    if (tree.StateOfChange(change) != ChangeState::kDone || tree.StateOfChange(undo) != ChangeState::kUndone)
        return "the redo is not marked";
    return dry + "; " + undone + "; " + again + "; " + redone;
}

constexpr const char* kAllBack =
    "8 restored, 0 as before, 0 left alone; 8 restored, 0 as before, 0 left alone; "
    "0 restored, 8 as before, 0 left alone; 8 restored, 0 as before, 0 left alone";

TEST(UndoTest, EveryByteComesBackOnEveryVolume) {
    const TemporaryFolder local;
    EXPECT_EQ(UndoAndRedo(local.Path(), local.Path()), kAllBack);
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const TemporaryFolder ofUser;
    constexpr uid_t kNobody = 65534;
    ASSERT_EQ(chown(ofUser.Path().c_str(), kNobody, kNobody), 0);
    EXPECT_EQ(AsOrdinaryUser([&] { return UndoAndRedo(ofUser.Path(), ofUser.Path()); }), kAllBack);
    const TemporaryFolder forHistory;
    NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    EXPECT_EQ(UndoAndRedo(volume.Root(), forHistory.Path()), kAllBack);
    EXPECT_THAT(volume.Audit(), testing::HasSubstr("No errors were found"));
}

// ntfs-3g answers one request at a time, so their number is the time that an undo takes.
TEST(UndoTest, AnNtfsVolumeIsAskedForNoMoreThanWhatIsNeeded) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const TemporaryFolder forHistory;
    NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    volume.Mount(NtfsMount::kRequestsCounted);
    ASSERT_EQ(volume.Problem(), "");
    TreeToUndo tree(volume.Root(), forHistory.Path());
    constexpr std::size_t kFiles = 100;
    for (std::size_t i = 0; i < kFiles; ++i)
        ASSERT_EQ(RunCommand({"touch", tree.Path("other/" + std::to_string(i))}).exitCode, 0);
    const std::int64_t change =
        tree.Change([&] { EXPECT_EQ(SetDescriptorText(tree.Root(), "D:P(A;OICI;FA;;;BA)"), 0U); });
    const std::size_t before = volume.Requests();
    EXPECT_THAT(tree.Undo(change), testing::StartsWith(std::to_string(kFiles + 4) + " restored"));
    const std::size_t asked = volume.Requests() - before;
    // Finding it by name, when it was made, what it has, the same before it is written, and writing it.
    EXPECT_LE(asked, 5 * kFiles + kFiles / 2);
    EXPECT_GT(asked, 4 * kFiles) << "they are not counted";
}

// What was changed is looked for where it was, and a volume that has moved is not guessed at.
TEST(UndoTest, AVolumeThatIsMountedElsewhereIsLeftAloneUntilItIsBack) {
    if (const std::string reason = CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_EQ(EnterOwnMounts(), "");
    const TemporaryFolder folder;
    const std::string image = folder.Path("image");
    const std::string usual = folder.MakeFolder("usual");
    const std::string elsewhere = folder.MakeFolder("elsewhere");
    const auto mountAt = [&image](const std::string& place) {
        const CommandResult mounted = RunCommand({"mount", "-o", "loop", image, place});
        ASSERT_EQ(mounted.exitCode, 0) << mounted.output;
    };
    const char* const kinds[] = {"mkfs.ext4", "mkfs.xfs"};
    for (const std::string maker : kinds) {
        if (const std::string reason = MissingProgram(maker); !reason.empty()) {
            std::cout << "Left out: " << reason << '\n';
            continue;
        }
        SCOPED_TRACE(maker);
        fs::remove(image);
        ASSERT_EQ(RunCommand({"truncate", "-s", "400M", image}).exitCode, 0);
        ASSERT_EQ(RunCommand({maker, "-q", image}).exitCode, 0);
        mountAt(usual);
        const std::string first = folder.MakeFolder("usual/first");
        EXPECT_EQ(UndoAndRedo(first, folder.MakeFolder("history of " + maker)), kAllBack);
        TreeToUndo tree(usual, folder.Path("history of " + maker));
        const TreeState before = tree.State();
        const std::int64_t change = tree.ChangeLists();
        ASSERT_EQ(umount(usual.c_str()), 0);
        mountAt(elsewhere);
        const TreeState after = StateOfTree(elsewhere + "/top");
        EXPECT_EQ(tree.Undo(change), "0 restored, 0 as before, 8 left alone");
        EXPECT_THAT(tree.observer.left, ElementsAre(" and below: it is gone, or has another name"));
        EXPECT_EQ(DifferenceOf(after, StateOfTree(elsewhere + "/top")), "");
        ASSERT_EQ(umount(elsewhere.c_str()), 0);
        mountAt(usual);
        EXPECT_EQ(tree.Undo(change), "8 restored, 0 as before, 0 left alone");
        EXPECT_EQ(DifferenceOf(before, tree.State()), "");
        ASSERT_EQ(umount(usual.c_str()), 0);
    }
}

class UndoHere : public testing::Test {
  protected:
    // So that what is made from now on is younger.
    static void LetTimePass() { std::this_thread::sleep_for(std::chrono::milliseconds(1100)); }

    const TemporaryFolder folder;
    TreeToUndo tree{folder.Path(), folder.Path()};
    const TreeState before = tree.State();
    const std::int64_t change = tree.ChangeLists();
};

TEST_F(UndoHere, WhatBecameOtherIsLeftAloneAndNamed) {
    LetTimePass();
    const std::string elsewhere = folder.MakeFolder("elsewhere");
    folder.MakeFolder("elsewhere/deep");
    folder.MakeFile("elsewhere/deep/c");
    folder.MakeFile("elsewhere/b");
    const TreeState outside = StateOfTree(elsewhere);
    ASSERT_EQ(SetDescriptorText(tree.Path("a"), "D:P(A;;FR;;;WD)"), 0U);
    const TreeState changed = tree.State();
    fs::remove(tree.Path("other/d"));
    folder.MakeFile("top/other/d");
    fs::rename(tree.Path("sub"), folder.Path("moved"));
    fs::create_directory_symlink(elsewhere, tree.Path("sub"));
    EXPECT_EQ(tree.Undo(change, kDryRun), "2 restored, 0 as before, 6 left alone");
    const std::vector<std::string> left = tree.observer.left;
    EXPECT_EQ(tree.Undo(change), "2 restored, 0 as before, 6 left alone");
    EXPECT_THAT(tree.observer.left,
                ElementsAre("sub and below: another object is there now",
                            "other\\d: another object is there now", "a: it was changed since"));
    EXPECT_THAT(left, testing::UnorderedElementsAreArray(tree.observer.left));
    EXPECT_EQ(tree.StateOfChange(change), ChangeState::kPartlyUndone);
    EXPECT_EQ(StateOfTree(elsewhere), outside);
    EXPECT_EQ(tree.State().at("a"), changed.at("a"));
    EXPECT_EQ(tree.State().at("other"), before.at("other"));

    // Names are never followed to other objects, but what was changed may be overwritten.
    EXPECT_EQ(tree.Undo(change, kForce), "1 restored, 2 as before, 5 left alone");
    EXPECT_EQ(tree.State().at("a"), before.at("a"));
    EXPECT_EQ(StateOfTree(elsewhere), outside);
    fs::remove(tree.Path("sub"));
    fs::rename(folder.Path("moved"), tree.Path("sub"));
    EXPECT_EQ(tree.Undo(change), "4 restored, 3 as before, 1 left alone");
    EXPECT_EQ(tree.State(), before);  // the other object has no list either
}

// A change may take longer than what it comes to was there.
TEST_F(UndoHere, WhatWasMadeWhileTheChangeWasMadeComesBackAndWhatCameLaterDoesNot) {
    const auto lasting = tree.history->Begin(ChangeKind::kReset);
    Record(*lasting, tree.Path("other"),
           [this] { SetDescriptorText(tree.Path("other"), "D:P(A;;FA;;;WD)"); });
    LetTimePass();
    for (const char* name : {"top/sub/deep/new", "top/sub/deep/later"})
        folder.MakeFile(name);
    const TreeState then = tree.State();
    Record(*lasting, tree.Path("sub"),
           [this] { SetDescriptorText(tree.Path("sub"), "D:P(A;OICI;FX;;;WD)"); });
    lasting->End();
    LetTimePass();
    const std::string later = tree.Path("sub/deep/later");
    fs::remove(later);
    folder.MakeFile("top/sub/deep/later");
    tree.Undo(lasting->Number());
    EXPECT_THAT(tree.observer.left, ElementsAre("deep\\later: another object is there now"));
    const TreeState now = tree.State();
    EXPECT_EQ(now.at("sub/deep/new"), then.at("sub/deep/new"));
    EXPECT_EQ(now.at("sub"), then.at("sub"));
}

// A line for each of a million objects would hide what matters.
TEST_F(UndoHere, WhatIsGoneIsNamedOnceWithAllBelow) {
    fs::rename(tree.Path("sub/deep"), tree.Path("sub/renamed"));
    fs::remove(tree.Path("sub/b"));
    tree.Undo(change);
    EXPECT_THAT(tree.observer.left, ElementsAre("sub\\deep and below: it is gone, or has another name",
                                                "sub\\b: it is gone, or has another name"));
    for (const bool isReplaced : {false, true}) {
        fs::rename(tree.Root(), folder.Path("away"));
        if (isReplaced) folder.MakeFolder("top");
        EXPECT_EQ(tree.Undo(change), "0 restored, 0 as before, 8 left alone");
        EXPECT_THAT(tree.observer.left,
                    ElementsAre(isReplaced ? " and below: another object is there now"
                                           : " and below: it is gone, or has another name"));
        if (isReplaced) fs::remove(tree.Root());
        fs::rename(folder.Path("away"), tree.Root());
    }
    EXPECT_EQ(tree.StateOfChange(change), ChangeState::kPartlyUndone);
}

TEST_F(UndoHere, WhatIsMountedInBetweenIsNotEntered) {
    if (const std::string reason = CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_EQ(EnterOwnMounts(), "");
    ASSERT_EQ(mount("tmpfs", tree.Path("sub").c_str(), "tmpfs", 0, nullptr), 0);
    EXPECT_EQ(tree.Undo(change), "4 restored, 0 as before, 4 left alone");
    EXPECT_THAT(tree.observer.left, ElementsAre("sub and below: something else is mounted there now"));
    ASSERT_EQ(umount(tree.Path("sub").c_str()), 0);
    EXPECT_EQ(tree.Undo(change), "4 restored, 4 as before, 0 left alone");
    EXPECT_EQ(tree.State(), before);
}

TEST_F(UndoHere, AnUndoThatWasStoppedGoesOn) {
    tree.observer.stopAt = 0;
    EXPECT_EQ(tree.Undo(change, {}, ERROR_OPERATION_ABORTED), "0 restored, 0 as before, 0 left alone");
    EXPECT_EQ(tree.StateOfChange(change), ChangeState::kDone);
    tree.observer.stopAt = static_cast<std::size_t>(-1);
    EXPECT_EQ(tree.Undo(change), "8 restored, 0 as before, 0 left alone");
    EXPECT_EQ(tree.Undo(99, {}, ERROR_NOT_FOUND), "0 restored, 0 as before, 0 left alone");
}

// Its new owner may have changed the file meanwhile: nobody gets a program that runs as another with it.
TEST_F(UndoHere, WhatRunsAsItsOwnerDoesNotComeBackWithTheOwner) {
    if (geteuid() != 0) GTEST_SKIP() << "other owners need root";
    const std::string file = tree.Path("a");
    constexpr std::array<unsigned char, 20> kMayBindPorts = {0, 0, 0, 2, 0, 4};  // <linux/capability.h>
    const auto state = [&file] {
        struct stat status {};
        EXPECT_EQ(stat(file.c_str(), &status), 0);
        const bool hasCapabilities = getxattr(file.c_str(), "security.capability", nullptr, 0) > 0;
        return std::tuple(status.st_uid, status.st_mode & 07777U, hasCapabilities);
    };
    ASSERT_EQ(chmod(file.c_str(), 06755), 0);
    ASSERT_EQ(setxattr(file.c_str(), "security.capability", kMayBindPorts.data(), kMayBindPorts.size(), 0),
              0);
    const std::int64_t given =
        tree.Change([&file] { EXPECT_EQ(SetDescriptorText(file, "O:S-1-22-1-1"), 0U); });
    EXPECT_EQ(state(), std::tuple(1U, 0755U, false));
    EXPECT_EQ(tree.Undo(given), "1 restored, 0 as before, 0 left alone");
    EXPECT_EQ(state(), std::tuple(0U, 0755U, false));
}

// The owner of the host is written by itself; a program that dies in between leaves one old and one new.
TEST_F(UndoHere, AnObjectThatWasHalfWrittenComesBackToo) {
    if (geteuid() != 0) GTEST_SKIP() << "other owners need root";
    const std::int64_t second = tree.Change([this] {
        EXPECT_EQ(SetDescriptorText(tree.Path("a"), "O:S-1-22-1-1"), 0U);
        EXPECT_EQ(SetDescriptorText(tree.Path("sub/b"), "O:S-1-22-1-1"), 0U);
    });
    ASSERT_EQ(chown(tree.Path("a").c_str(), 0, 0), 0);
    ASSERT_EQ(chown(tree.Path("sub/b").c_str(), 2, 0), 0);
    EXPECT_EQ(tree.Undo(second), "1 restored, 0 as before, 1 left alone");
    EXPECT_EQ(tree.Undo(second, kForce), "1 restored, 1 as before, 0 left alone");
    EXPECT_EQ(tree.Undo(change), "8 restored, 0 as before, 0 left alone");
    EXPECT_EQ(tree.State(), before);
}

// Two names of a file, or two tops of which one holds the other.
TEST(UndoTwiceTest, WhatWasRecordedTwiceComesBackInReverseOrder) {
    const TemporaryFolder folder;
    TreeToUndo tree(folder.Path(), folder.Path());
    fs::create_hard_link(tree.Path("sub/b"), tree.Path("other/linked"));
    const TreeState before = tree.State();
    const auto both = tree.history->Begin(ChangeKind::kReset);
    Record(*both, tree.Path("sub"), [&] { SetDescriptorText(tree.Path("sub"), "D:P(A;OICI;FR;;;WD)"); });
    Record(*both, tree.Path("other"), [&] { SetDescriptorText(tree.Path("other"), "D:P(A;OICI;FX;;;WD)"); });
    Record(*both, tree.Path("other"),
           [&] { SetDescriptorText(tree.Path("other/linked"), "D:P(A;;FA;;;WD)"); });
    both->End();
    const TreeState after = tree.State();
    const std::string dry = tree.Undo(both->Number(), kDryRun);
    EXPECT_EQ(tree.State(), after);
    EXPECT_EQ(tree.Undo(both->Number()), dry);
    EXPECT_THAT(tree.observer.left, IsEmpty());
    EXPECT_EQ(tree.State(), before);
    EXPECT_EQ(tree.Undo(tree.LastUndo()), dry);
    EXPECT_EQ(tree.State(), after);
}

TEST(UndoBatchTest, ALargeChangeComesBackInBatches) {
    const TemporaryFolder folder;
    TreeToUndo tree(folder.Path(), folder.Path());
    for (int i = 0; i < 1500; ++i)
        folder.MakeFile("top/other/" + std::to_string(i));
    const TreeState before = tree.State();
    const std::int64_t change = tree.ChangeLists();
    tree.observer.stopAt = 1200;
    EXPECT_EQ(tree.Undo(change, {}, ERROR_OPERATION_ABORTED), "1008 restored, 0 as before, 0 left alone");
    EXPECT_EQ(tree.StateOfChange(change), ChangeState::kPartlyUndone);
    // Where the process may not have a whole batch open.
    const auto undone = InAnotherProcess([&] {
        const rlimit few = {64, 64};
        setrlimit(RLIMIT_NOFILE, &few);
        tree.observer.stopAt = static_cast<std::size_t>(-1);
        return tree.Undo(change);
    });
    EXPECT_EQ(undone, "500 restored, 1008 as before, 0 left alone");
    EXPECT_EQ(DifferenceOf(before, tree.State()), "");
    // One of the two undos has not been taken back.
    tree.observer.stopAt = static_cast<std::size_t>(-1);
    EXPECT_EQ(tree.Undo(tree.LastUndo()), "500 restored, 0 as before, 0 left alone");
    EXPECT_EQ(tree.StateOfChange(change), ChangeState::kPartlyUndone);
    EXPECT_EQ(tree.Undo(change), "500 restored, 1008 as before, 0 left alone");
    EXPECT_EQ(tree.StateOfChange(change), ChangeState::kUndone);
}

}  // namespace
}  // namespace permora::test
