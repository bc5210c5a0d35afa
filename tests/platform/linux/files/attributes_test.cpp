#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/files/dos_attribute.h"
#include "tests/platform/linux/files/files_fixture.h"
#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"

namespace permora::host {
namespace {

constexpr DWORD kEverySettable = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                 FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_TEMPORARY | FILE_ATTRIBUTE_OFFLINE |
                                 FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

void ExpectFailure(LPCSTR path, DWORD attributes, DWORD error) {
    EXPECT_FALSE(SetFileAttributesA(path, attributes)) << path;
    EXPECT_EQ(GetLastError(), error) << path;
}

using Attributes = OnDriveT;

TEST_F(Attributes, ComeFromTheHostWhereNobodySetAny) {
    folder.MakeFolder("folder");
    folder.MakeFile("file");
    folder.MakeFile(".hidden");
    ASSERT_EQ(chmod(folder.MakeFile("readonly").c_str(), 0444), 0);
    ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0400), 0);
    for (const auto& [target, name] : {std::pair("file", "to file"), std::pair("folder", "folder/to folder"),
                                       std::pair("../folder", "folder/to folder again"),
                                       std::pair("nowhere", "dangling"), std::pair("loop", "loop")}) {
        ASSERT_EQ(symlink(target, folder.Path(name).c_str()), 0);
    }
    const std::pair<const char*, DWORD> kCases[] = {
        {".", FILE_ATTRIBUTE_DIRECTORY},
        {"folder", FILE_ATTRIBUTE_DIRECTORY},
        {"file", FILE_ATTRIBUTE_NORMAL},
        {".hidden", FILE_ATTRIBUTE_NORMAL},
        {"readonly", FILE_ATTRIBUTE_READONLY},
        {"pipe", FILE_ATTRIBUTE_NORMAL},
        {"to file", FILE_ATTRIBUTE_REPARSE_POINT},
        {"folder\\to folder", FILE_ATTRIBUTE_REPARSE_POINT},  // nothing of that name beside it
        {"folder\\to folder again", FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY},
        {"dangling", FILE_ATTRIBUTE_REPARSE_POINT},
        {"loop", FILE_ATTRIBUTE_REPARSE_POINT},
        {"missing", INVALID_FILE_ATTRIBUTES},
    };
    for (const auto& [path, attributes] : kCases)
        EXPECT_EQ(GetFileAttributesA(path), attributes) << path;
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(Attributes, AreSetAsAWholeAndOnlyThoseThatCanBeSet) {
    const std::string file = folder.MakeFile("file");
    folder.MakeFolder("folder");
    EXPECT_TRUE(SetFileAttributesA("file", 0xFFFFFFFF));
    EXPECT_EQ(GetFileAttributesA("file"), kEverySettable);
    EXPECT_TRUE(SetFileAttributesA("file", FILE_ATTRIBUTE_HIDDEN));
    EXPECT_EQ(GetFileAttributesA("file"), FILE_ATTRIBUTE_HIDDEN);
    EXPECT_TRUE(SetFileAttributesA("file", FILE_ATTRIBUTE_NORMAL));
    EXPECT_EQ(GetFileAttributesA("file"), FILE_ATTRIBUTE_NORMAL);
    EXPECT_TRUE(SetFileAttributesA("folder", FILE_ATTRIBUTE_SYSTEM));
    EXPECT_EQ(GetFileAttributesA("folder"), FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_DIRECTORY);
    ExpectFailure("folder", FILE_ATTRIBUTE_TEMPORARY, ERROR_INVALID_PARAMETER);
    ExpectFailure("missing", FILE_ATTRIBUTE_HIDDEN, ERROR_FILE_NOT_FOUND);

    // Once set, they also overrule the mode; a damaged value counts as none and is replaced.
    ASSERT_EQ(chmod(file.c_str(), 0444), 0);
    EXPECT_EQ(GetFileAttributesA("file"), FILE_ATTRIBUTE_NORMAL);
    ASSERT_EQ(setxattr(file.c_str(), "user.DOSATTRIB", "junk", 4, 0), 0);
    EXPECT_EQ(GetFileAttributesA("file"), FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(SetFileAttributesA("file", FILE_ATTRIBUTE_ARCHIVE));
    EXPECT_EQ(GetFileAttributesA("file"), FILE_ATTRIBUTE_ARCHIVE);

    // What cannot be set stays, here that the file is sparse.
    ASSERT_EQ(setxattr(file.c_str(), "user.DOSATTRIB", "0x220", 5, 0), 0);
    EXPECT_TRUE(SetFileAttributesA("file", FILE_ATTRIBUTE_HIDDEN));
    std::vector<std::uint8_t> stored(64);
    EXPECT_GT(getxattr(file.c_str(), "user.DOSATTRIB", stored.data(), stored.size()), 0);
    EXPECT_EQ(DosAttribute::FromBytes(stored).value_or(DosAttribute()).attributes, 0x202U);
}

TEST_F(Attributes, WhatCannotHoldThemSaysSo) {
    folder.MakeFile("file");
    ASSERT_EQ(symlink("file", folder.Path("link").c_str()), 0);
    ExpectFailure("link", FILE_ATTRIBUTE_HIDDEN, ERROR_NOT_SUPPORTED);
    EXPECT_EQ(GetFileAttributesA("file"), FILE_ATTRIBUTE_NORMAL);

    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    const std::string mountPoint = folder.MakeFolder("ram");
    ASSERT_EQ(mount("none", mountPoint.c_str(), "ramfs", 0, nullptr), 0);
    folder.MakeFile("ram/file");
    EXPECT_EQ(GetFileAttributesA("ram\\file"), FILE_ATTRIBUTE_NORMAL);
    ExpectFailure("ram\\file", FILE_ATTRIBUTE_HIDDEN, ERROR_NOT_SUPPORTED);
    EXPECT_EQ(umount(mountPoint.c_str()), 0);
}

TEST_F(Attributes, OfAFileThatMayNotBeReadAreStillSeen) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can become somebody else";
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(folder.MakeFile("private").c_str(), 0600), 0);
    ASSERT_TRUE(SetFileAttributesA("private", FILE_ATTRIBUTE_HIDDEN));
    const auto answer = test::AsOrdinaryUser([] {
        const DWORD seen = GetFileAttributesA("private");
        ExpectFailure("private", FILE_ATTRIBUTE_HIDDEN, ERROR_ACCESS_DENIED);
        return std::to_string(seen) + (HasFailure() ? " failed" : "");
    });
    EXPECT_EQ(answer, std::to_string(FILE_ATTRIBUTE_NORMAL));
}

// The attributes as the volume itself stores them, big endian.
DWORD OnVolume(const std::string& hostPath) {
    std::array<unsigned char, 4> bytes{};
    EXPECT_EQ(lgetxattr(hostPath.c_str(), "system.ntfs_attrib_be", bytes.data(), bytes.size()), 4)
        << hostPath;
    return DWORD{bytes[0]} << 24 | DWORD{bytes[1]} << 16 | DWORD{bytes[2]} << 8 | bytes[3];
}

TEST_F(Attributes, OnNtfsAreTheVolumesOwn) {
    if (const std::string reason = test::NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    test::NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_EQ(chdir(volume.Root().c_str()), 0);
    ASSERT_EQ(mkdir("folder", 0755), 0);
    ASSERT_EQ(close(creat("file", 0644)), 0);
    ASSERT_EQ(symlink("folder", "link"), 0);

    EXPECT_TRUE(SetFileAttributesA("file", 0xFFFFFFFF));
    EXPECT_EQ(GetFileAttributesA("file"), kEverySettable);
    EXPECT_EQ(OnVolume("file"), kEverySettable);
    EXPECT_TRUE(SetFileAttributesA("file", FILE_ATTRIBUTE_NORMAL));
    EXPECT_EQ(GetFileAttributesA("file"), FILE_ATTRIBUTE_NORMAL);
    EXPECT_TRUE(SetFileAttributesA("folder", FILE_ATTRIBUTE_HIDDEN));
    EXPECT_EQ(GetFileAttributesA("folder"), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_DIRECTORY);
    EXPECT_TRUE(GetFileAttributesA(".") & FILE_ATTRIBUTE_DIRECTORY);

    // A link stays one: the volume knows it by its system flag.
    EXPECT_TRUE(SetFileAttributesA("link", FILE_ATTRIBUTE_HIDDEN));
    EXPECT_EQ(GetFileAttributesA("link"), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                              FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY);
    ASSERT_EQ(chdir("/"), 0);
    volume.Unmount();
    volume.Mount(test::NtfsMount::kReadOnly);
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_EQ(chdir(volume.Root().c_str()), 0);
    EXPECT_TRUE(GetFileAttributesA("link") & FILE_ATTRIBUTE_REPARSE_POINT);
    EXPECT_EQ(OnVolume("folder") & FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_HIDDEN);
    ExpectFailure("file", FILE_ATTRIBUTE_HIDDEN, ERROR_WRITE_PROTECT);
    ASSERT_EQ(chdir("/"), 0);
}

}  // namespace
}  // namespace permora::host
