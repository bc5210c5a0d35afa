#include "platform/linux/files/paths.h"

#include <sys/mount.h>
#include <sys/stat.h>

#include <string>
#include <utility>

#include "platform/linux/files/name_mapping.h"
#include "tests/platform/linux/files/files_fixture.h"
#include "tests/support/command.h"

namespace permora::host {
namespace {

ino_t InodeOf(const std::string& hostPath) {
    struct stat status {};
    EXPECT_EQ(lstat(hostPath.c_str(), &status), 0) << hostPath;
    return status.st_ino;
}

class Paths : public OnDriveT {
  protected:
    Paths() {
        folder.MakeFolder("a");
        folder.MakeFolder("a/sub");
        folder.MakeFile("a/b.txt");
    }

    void ExpectObject(const std::string& path, const std::string& hostPath, const std::string& hostParent) {
        SCOPED_TRACE(path);
        ResolvedObject resolved;
        ASSERT_EQ(ResolvePath(path.c_str(), resolved), ERROR_SUCCESS);
        EXPECT_EQ(resolved.object.Status().st_ino, InodeOf(hostPath));
        ASSERT_EQ(static_cast<bool>(resolved.parent), !hostParent.empty());
        EXPECT_EQ(resolved.parent.Status().st_ino, hostParent.empty() ? 0 : InodeOf(hostParent));
    }

    DWORD ErrorOf(const std::string& path) {
        ResolvedObject resolved;
        return ResolvePath(path.c_str(), resolved);
    }
};

TEST_F(Paths, AllSpellingsOfAPathMeanTheSameObject) {
    const std::string fullPath = "C:" + folder.Path("a/b.txt");
    for (const std::string path : {"T:\\a\\b.txt", "t:/a/b.txt", "\\a\\b.txt", "a\\b.txt", ".\\a\\.\\b.txt",
                                   "a\\\\b.txt", "a\\sub\\..\\b.txt", "a\\missing\\..\\b.txt", "T:a\\b.txt",
                                   "T:\\..\\a\\b.txt", "..\\..\\a\\b.txt", fullPath.c_str()}) {
        ExpectObject(path, folder.Path("a/b.txt"), folder.Path("a"));
    }
    ExpectObject("a\\", folder.Path("a"), folder.Path());
    ExpectObject("a\\sub\\..", folder.Path("a"), folder.Path());
}

TEST_F(Paths, OnlyWhatADriveNamesAsItsRootHasNoParent) {
    ExpectObject("T:\\", folder.Path(), "");
    ExpectObject("C:\\", "/", "");
    ExpectObject("C:" + folder.Path(), folder.Path(), folder.Path().substr(0, folder.Path().rfind('/')));
    ExpectObject(".", folder.Path(), "");
    ExpectObject("..\\..", folder.Path(), "");

    ASSERT_TRUE(SetCurrentDirectoryA("a\\sub"));
    ExpectObject(".", folder.Path("a/sub"), folder.Path("a"));
    ExpectObject("..", folder.Path("a"), folder.Path());
    ExpectObject("T:", folder.Path("a/sub"), folder.Path("a"));
    ExpectObject("C:", "/", "");  // another drive's current folder is its root
    ExpectObject("..\\..\\..\\..", folder.Path(), "");
}

TEST_F(Paths, TheRootOfAMountedVolumeHasNoParent) {
    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    const std::string mountPoint = folder.Path("a/sub");
    // A folder mounted once more has the device number of its parent.
    ASSERT_EQ(mount(folder.Path("a").c_str(), mountPoint.c_str(), nullptr, MS_BIND, nullptr), 0);
    ExpectObject("a\\sub", mountPoint, "");
    ExpectObject("a\\sub\\b.txt", folder.Path("a/b.txt"), mountPoint);
    EXPECT_EQ(umount(mountPoint.c_str()), 0);
    ASSERT_EQ(mount("none", mountPoint.c_str(), "tmpfs", 0, nullptr), 0);
    ExpectObject("a\\sub\\", mountPoint, "");
    EXPECT_EQ(umount(mountPoint.c_str()), 0);
}

TEST_F(Paths, WhatCannotBeReachedSaysWhy) {
    const std::pair<std::string, DWORD> kCases[] = {
        {"", ERROR_PATH_NOT_FOUND},
        {"missing", ERROR_FILE_NOT_FOUND},
        {"a\\missing", ERROR_FILE_NOT_FOUND},
        {"a\\missing\\", ERROR_FILE_NOT_FOUND},
        {"missing\\b.txt", ERROR_PATH_NOT_FOUND},
        {"a\\b.txt\\c", ERROR_PATH_NOT_FOUND},
        {"a\\b.txt\\", ERROR_DIRECTORY},
        {"A\\b.txt", ERROR_PATH_NOT_FOUND},  // names differ in case here
        {"Q:\\a", ERROR_PATH_NOT_FOUND},
        {"a\\b*", ERROR_INVALID_NAME},
        {"a\\b.txt:stream", ERROR_INVALID_NAME},
        {"a\\b.txt.", ERROR_INVALID_NAME},
        {"a\uF02Fb.txt", ERROR_INVALID_NAME},
        {"a\\\uF02E\uF02E\\a", ERROR_INVALID_NAME},
        {"a\\" + std::string(256, 'n'), ERROR_FILENAME_EXCED_RANGE},
        {"\\\\server\\share", ERROR_BAD_NETPATH},
        {"\\\\?\\T:\\a", ERROR_BAD_NETPATH},
    };
    for (const auto& [path, error] : kCases)
        EXPECT_EQ(ErrorOf(path), error) << path;
    ResolvedObject resolved;
    EXPECT_EQ(ResolvePath(nullptr, resolved), ERROR_PATH_NOT_FOUND);
}

TEST_F(Paths, ALinkIsItselfUnlessThePathGoesOnBehindIt) {
    folder.MakeFolder("x");
    ASSERT_EQ(symlink("../a/sub", folder.Path("x/link").c_str()), 0);
    ASSERT_EQ(symlink("nowhere", folder.Path("x/dangling").c_str()), 0);
    ASSERT_EQ(symlink("loop", folder.Path("x/loop").c_str()), 0);
    folder.MakeFile("a/sub/inside");

    ExpectObject("x\\link", folder.Path("x/link"), folder.Path("x"));
    ExpectObject("x\\link\\", folder.Path("a/sub"), folder.Path("a"));
    ExpectObject("x\\link\\inside", folder.Path("a/sub/inside"), folder.Path("a/sub"));
    ExpectObject("x\\link\\..\\link", folder.Path("x/link"), folder.Path("x"));  // worked off in the text
    ExpectObject("x\\dangling", folder.Path("x/dangling"), folder.Path("x"));
    ExpectObject("x\\loop", folder.Path("x/loop"), folder.Path("x"));
    EXPECT_EQ(ErrorOf("x\\dangling\\a"), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(ErrorOf("x\\loop\\a"), ERROR_CANT_RESOLVE_FILENAME);
}

TEST_F(Paths, NamesThatWindowsCannotExpressAreReachedByWhatIsShown) {
    for (const char* hostName : {"back\\slash", "C:", "..\\..\\etc", "blank ", "...", "\x01\xFF", "a:b*?"}) {
        const std::string hostPath = folder.MakeFile(std::string("a/") + hostName);
        ExpectObject("a\\" + EncodeName(hostName), hostPath, folder.Path("a"));
        ExpectObject(PathFromHost(hostPath), hostPath, folder.Path("a"));
    }
}

TEST_F(Paths, DeepPathsBeyondTheKernelsLimitAreReached) {
    const std::string name(250, 'd');
    std::string path = "T:";
    for (int level = 0; level < 20; ++level) {
        ASSERT_EQ(mkdir(name.c_str(), 0755), 0);
        ASSERT_EQ(chdir(name.c_str()), 0);
        path += "\\" + name;
    }
    const std::string current = CurrentDirectory();
    EXPECT_EQ(current, path);
    ASSERT_TRUE(SetCurrentDirectoryA("T:\\"));
    ResolvedObject resolved;
    EXPECT_EQ(ErrorOf(path), ERROR_SUCCESS);
    EXPECT_TRUE(SetCurrentDirectoryA(path.c_str()));
    EXPECT_EQ(CurrentDirectory(), path);
}

}  // namespace
}  // namespace permora::host
