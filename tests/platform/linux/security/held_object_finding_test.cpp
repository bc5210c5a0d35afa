// Finding the objects of a change again, whatever has become of their names and volumes.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <initializer_list>
#include <string>

#include "platform/api/errors.h"
#include "platform/held_object.h"
#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

namespace fs = std::filesystem;

ChangedTop TopOf(const std::string& hostPath) {
    ChangedTop top;
    EXPECT_EQ(Held(hostPath).FindTop(top), ERROR_SUCCESS) << hostPath;
    return top;
}

DWORD HoldAgain(const ChangedTop& top) {
    HeldObject found;
    return HeldObject::HoldTop(top, found);
}

class HeldObjectFinding : public testing::Test {
  protected:
    const TemporaryFolder folder;
};

TEST_F(HeldObjectFinding, ATopIsTheSameObjectAtTheSamePathOrNone) {
    fs::create_directory_symlink(folder.Path(), folder.Path("here"));
    folder.MakeFolder("sub");
    const std::string file = folder.MakeFile("sub/file");
    const ChangedTop top = TopOf(folder.Path("here/sub/file"));
    EXPECT_THAT(top.path, testing::EndsWith("\\sub\\file"));
    EXPECT_THAT(top.path, testing::StartsWith("C:\\"));
    EXPECT_THAT(top.path, testing::Not(testing::HasSubstr("\\here\\"))) << "links may change";
    EXPECT_EQ(HoldAgain(top), ERROR_SUCCESS);
    EXPECT_EQ(HoldAgain(TopOf(folder.Path("here"))), ERROR_SUCCESS) << "a link is an object too";

    fs::rename(file, folder.Path("moved"));
    EXPECT_EQ(HoldAgain(top), ERROR_FILE_NOT_FOUND);
    folder.MakeFile("sub/file");
    EXPECT_EQ(HoldAgain(top), ERROR_FILE_INVALID);
    fs::remove(file);
    folder.MakeFolder("sub/file");
    EXPECT_EQ(HoldAgain(top), ERROR_FILE_INVALID);
    fs::remove(file);
    fs::create_symlink(folder.Path("moved"), file);
    EXPECT_EQ(HoldAgain(top), ERROR_FILE_INVALID) << "what a link leads to is no answer";
    fs::remove(file);
    fs::rename(folder.Path("moved"), file);
    EXPECT_EQ(HoldAgain(top), ERROR_SUCCESS);
    fs::remove_all(folder.Path("sub"));
    EXPECT_EQ(HoldAgain(top), ERROR_PATH_NOT_FOUND);

    EXPECT_EQ(HoldAgain({.path = top.path, .isFolder = false, .mark = {}}), ERROR_PATH_NOT_FOUND);
    ChangedTop unmarked = TopOf(folder.Path());
    unmarked.mark.clear();
    EXPECT_EQ(HoldAgain(unmarked), ERROR_FILE_INVALID) << "without a mark nothing is known again";
}

TEST_F(HeldObjectFinding, WhatNoPathLeadsToIsNoTop) {
    const std::string gone = folder.MakeFile("gone");
    const HeldObject held = Held(gone);
    fs::remove(gone);
    ChangedTop top{.path = "before", .isFolder = false, .mark = {}};
    EXPECT_EQ(held.FindTop(top), ERROR_PATH_NOT_FOUND);
    // The kernel calls it that.
    folder.MakeFile("gone (deleted)");
    EXPECT_EQ(held.FindTop(top), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(top.path, "before");
}

TEST_F(HeldObjectFinding, AnotherVolumeInThePlaceIsAnotherObject) {
    if (const std::string reason = CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    const std::string place = folder.MakeFolder("volume");
    const auto mountNew = [&] { return mount("none", place.c_str(), "tmpfs", 0, nullptr); };
    ASSERT_EQ(mountNew(), 0);
    const ChangedTop root = TopOf(place);
    const ChangedTop file = TopOf(folder.MakeFile("volume/file"));
    EXPECT_EQ(HoldAgain(root), ERROR_SUCCESS);
    // The same volume, mounted over itself.
    EXPECT_EQ(mount(place.c_str(), place.c_str(), nullptr, MS_BIND, nullptr), 0);
    EXPECT_EQ(HoldAgain(file), ERROR_SUCCESS);
    umount2(place.c_str(), MNT_DETACH);
    umount2(place.c_str(), MNT_DETACH);
    EXPECT_EQ(HoldAgain(root), ERROR_FILE_INVALID);
    EXPECT_EQ(HoldAgain(file), ERROR_FILE_NOT_FOUND);
    ASSERT_EQ(mountNew(), 0);
    folder.MakeFile("volume/file");
    EXPECT_EQ(HoldAgain(root), ERROR_FILE_INVALID);
    EXPECT_EQ(HoldAgain(file), ERROR_FILE_INVALID);
    umount2(place.c_str(), MNT_DETACH);
}

TEST_F(HeldObjectFinding, AnNtfsVolumeIsKnownAgainAfterItWasMountedAnew) {
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    NtfsVolume volume;
    const NtfsVolume other;
    ASSERT_EQ(volume.Problem() + other.Problem(), "");
    const TemporaryFolder elsewhere;
    ASSERT_EQ(mkdir(volume.Path("folder").c_str(), 0755), 0);
    ASSERT_EQ(mkdir(other.Path("folder").c_str(), 0755), 0);
    const ChangedTop root = TopOf(volume.Root());
    const ChangedTop inside = TopOf(volume.Path("folder"));
    volume.Unmount();
    EXPECT_EQ(HoldAgain(inside), ERROR_FILE_NOT_FOUND);
    // So that it does not get the number of its device again.
    ASSERT_EQ(mount("none", elsewhere.Path().c_str(), "tmpfs", 0, nullptr), 0);
    volume.Mount();
    EXPECT_EQ(HoldAgain(root), ERROR_SUCCESS);
    EXPECT_EQ(HoldAgain(inside), ERROR_SUCCESS);
    umount2(elsewhere.Path().c_str(), MNT_DETACH);
    for (const ChangedTop& top : {root, inside}) {
        ChangedTop there = TopOf(&top == &root ? other.Root() : other.Path("folder"));
        there.mark = top.mark;
        EXPECT_EQ(HoldAgain(there), ERROR_FILE_INVALID) << there.path;
    }
}

TEST_F(HeldObjectFinding, NothingLeadsOutOfAFolderToWhatIsBelowIt) {
    for (const char* name : {"top", "top/sub", "top/sub/deep", "outside", "outside/deep"})
        folder.MakeFolder(name);
    folder.MakeFile("top/sub/deep/file");
    folder.MakeFile("outside/deep/file");
    fs::create_directory_symlink("../../outside", folder.Path("top/sub/link"));
    const HeldObject top = Held(folder.Path("top"));
    HeldObject found;
    struct {
        const char* path;
        DWORD error;
    } const cases[] = {
        {"", ERROR_SUCCESS},
        {"sub", ERROR_SUCCESS},
        {"sub\\deep\\file", ERROR_SUCCESS},
        {"sub\\link", ERROR_SUCCESS},  // the link itself
        {"sub\\link\\deep", ERROR_CANT_RESOLVE_FILENAME},
        {"sub\\never", ERROR_FILE_NOT_FOUND},
        {"never\\file", ERROR_FILE_NOT_FOUND},
        {"sub\\deep\\file\\x", ERROR_DIRECTORY},
        {"..", ERROR_INVALID_NAME},
        {"sub\\..\\..\\outside", ERROR_INVALID_NAME},
        {"\\sub", ERROR_INVALID_NAME},
        {"sub\\", ERROR_INVALID_NAME},
        {"sub\\\\deep", ERROR_INVALID_NAME},
        {"sub/deep", ERROR_INVALID_NAME},
        {"C:\\", ERROR_INVALID_NAME},
    };
    HeldObject expecting = Held(folder.Path("top"));
    expecting.ExpectManyBelow();
    for (const HeldObject* above : std::initializer_list<const HeldObject*>{&top, &expecting})
        for (const auto& each : cases)
            EXPECT_EQ(above->HoldBelow(each.path, found), each.error) << each.path;
    // A pipe that is held has no reader yet.
    const std::string pipe = folder.Path("top/sub/pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ASSERT_EQ(expecting.HoldBelow("sub\\pipe", found), ERROR_SUCCESS);
    EXPECT_EQ(open(pipe.c_str(), O_WRONLY | O_NONBLOCK), -1);
    ASSERT_EQ(top.HoldBelow("sub\\deep\\file", found), ERROR_SUCCESS);
    struct stat status {};
    ASSERT_EQ(stat(folder.Path("top/sub/deep/file").c_str(), &status), 0);
    EXPECT_EQ(found.FileNumber(), status.st_ino);
    EXPECT_FALSE(found.IsFolder());

    // A folder that was swapped for a link, and one that was moved with the top.
    fs::rename(folder.Path("top"), folder.Path("moved"));
    EXPECT_EQ(top.HoldBelow("sub\\deep\\file", found), ERROR_SUCCESS);
    fs::rename(folder.Path("moved/sub/deep"), folder.Path("moved/sub/real"));
    fs::create_directory_symlink("../../outside/deep", folder.Path("moved/sub/deep"));
    EXPECT_EQ(top.HoldBelow("sub\\deep\\file", found), ERROR_CANT_RESOLVE_FILENAME);
    if (!CannotMountReason().empty()) return;
    const std::string mounted = folder.Path("moved/sub/real");
    ASSERT_EQ(mount("none", mounted.c_str(), "tmpfs", 0, nullptr), 0);
    EXPECT_EQ(top.HoldBelow("sub\\real", found), ERROR_NOT_SAME_DEVICE);
    EXPECT_EQ(top.HoldBelow("sub\\real\\file", found), ERROR_NOT_SAME_DEVICE);
    umount2(mounted.c_str(), MNT_DETACH);
}

// What is found below inherits from its own folder.
TEST_F(HeldObjectFinding, WhatWasFoundBelowKnowsItsFolder) {
    if (SetDescriptorText(folder.Path(), "D:P(A;OICI;FA;;;BA)") == ERROR_NOT_SUPPORTED)
        GTEST_SKIP() << "the temporary folder holds no access lists";
    folder.MakeFolder("sub");
    const std::string file = folder.MakeFile("sub/file");
    ASSERT_EQ(SetDescriptorText(folder.Path("sub"), "D:P(A;OICI;FA;;;BG)"), ERROR_SUCCESS);
    const HeldObject top = Held(folder.Path());
    for (const auto& [path, list] :
         {std::pair("sub\\file", "D:AI(A;ID;FA;;;BG)"), {"sub", "D:AI(A;OICIID;FA;;;BA)"}}) {
        HeldObject found;
        ASSERT_EQ(top.HoldBelow(path, found), ERROR_SUCCESS);
        const UniqueLocal<void> empty = DescriptorOf("D:");
        FailuresBelow below;
        ASSERT_EQ(found.WriteSecurity(DACL_SECURITY_INFORMATION | UNPROTECTED_DACL_SECURITY_INFORMATION,
                                      {.dacl = ListOf(empty)}, nullptr, Unrecorded(), below),
                  ERROR_SUCCESS);
        EXPECT_EQ(DaclText(folder.Path(std::string(path) == "sub" ? "sub" : "sub/file")), list);
    }
}

TEST_F(HeldObjectFinding, PathsLongerThanTheKernelTakesLeadToTheirObjects) {
    const std::string name(200, 'n');
    constexpr int kDepth = 30;  // more than PATH_MAX in all
    fs::current_path(folder.Path());
    std::string path;
    for (int i = 0; i < kDepth; ++i) {
        ASSERT_EQ(mkdir(name.c_str(), 0755), 0);
        ASSERT_EQ(chdir(name.c_str()), 0);
        path += (i == 0 ? "" : "\\") + name;
    }
    struct stat status {};
    ASSERT_EQ(stat(".", &status), 0);
    HeldObject found;
    ASSERT_EQ(Held(folder.Path()).HoldBelow(path, found), ERROR_SUCCESS);
    EXPECT_EQ(found.FileNumber(), status.st_ino);
    fs::current_path("/");
}

TEST_F(HeldObjectFinding, ObjectsKnowWhetherTheyAreYoungerThanAMoment) {
    const auto checkAt = [](const std::string& path) {
        const auto now = std::chrono::duration_cast<std::chrono::seconds>(
                             std::chrono::system_clock::now().time_since_epoch())
                             .count();
        for (const auto& [seconds, isYounger] : {std::pair(now - 1000, true), {now + 1000, false}}) {
            bool answer = !isYounger;
            EXPECT_EQ(Held(path).WasBornAfter(seconds, answer), ERROR_SUCCESS);
            EXPECT_EQ(answer, isYounger) << path;
        }
    };
    checkAt(folder.MakeFile("file"));
    if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_EQ(mkdir(volume.Path("folder").c_str(), 0755), 0);
    checkAt(volume.Path("folder"));
}

}  // namespace
}  // namespace permora::test
