#include "platform/api/file_control.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <utility>

#include "platform/api/security.h"
#include "platform/resources.h"
#include "tests/platform/linux/files/files_fixture.h"
#include "tests/support/ntfs_volume.h"

namespace permora::host {
namespace {

using FileControl = OnDriveT;

// Null when it cannot be opened; the last error is then set.
UniqueHandle Open(LPCSTR path) {
    HANDLE opened = CreateFileA(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                FILE_ATTRIBUTE_ARCHIVE, nullptr);
    return UniqueHandle(opened == INVALID_HANDLE_VALUE ? nullptr : opened);
}

DWORD Compress(HANDLE file, WORD format) {
    DWORD returned = 1;
    return DeviceIoControl(file, FSCTL_SET_COMPRESSION, &format, sizeof format, nullptr, 0, &returned,
                           nullptr)
               ? returned
               : GetLastError();
}

TEST_F(FileControl, OpensWhatIsThereForOneAlone) {
    folder.MakeFile("file");
    folder.MakeFile("readonly");
    folder.MakeFolder("folder");
    ASSERT_TRUE(SetFileAttributesA("readonly", FILE_ATTRIBUTE_READONLY));
    ASSERT_EQ(symlink("file", folder.Path("link").c_str()), 0);
    ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    for (const auto& [path, error] :
         {std::pair("missing", ERROR_FILE_NOT_FOUND), std::pair("readonly", ERROR_ACCESS_DENIED),
          std::pair("folder", ERROR_ACCESS_DENIED), std::pair("pipe", ERROR_ACCESS_DENIED),
          std::pair("link", ERROR_CANT_RESOLVE_FILENAME)}) {
        EXPECT_FALSE(Open(path)) << path;
        EXPECT_EQ(GetLastError(), error) << path;
    }
    const UniqueHandle first = Open("file");
    ASSERT_TRUE(first);
    EXPECT_FALSE(Open("file"));
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
}

TEST_F(FileControl, ChangesNothingAndSaysSo) {
    folder.MakeFile("file");
    const UniqueHandle file = Open("file");
    ASSERT_TRUE(file);
    EXPECT_EQ(Compress(file.get(), COMPRESSION_FORMAT_NONE), 0U);
    EXPECT_EQ(Compress(file.get(), COMPRESSION_FORMAT_DEFAULT), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(Compress(file.get(), 7), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Compress(nullptr, COMPRESSION_FORMAT_NONE), ERROR_INVALID_HANDLE);
    EXPECT_TRUE(DecryptFileA("file", 0));
    EXPECT_FALSE(EncryptFileA("file"));
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
}

// The driver compresses new files in a folder with the flag, and takes no other change of it.
TEST_F(FileControl, OnNtfsKnowsWhatIsCompressed) {
    if (const std::string reason = test::NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const test::NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_EQ(chdir(volume.Root().c_str()), 0);
    ASSERT_EQ(mkdir("folder", 0755), 0);
    constexpr std::array<unsigned char, 4> kCompressed{0, 0, 0x08, 0};  // big endian
    ASSERT_EQ(setxattr("folder", "system.ntfs_attrib_be", kCompressed.data(), kCompressed.size(), 0), 0);
    ASSERT_EQ(close(creat("folder/file", 0644)), 0);
    const UniqueHandle file = Open("folder\\file");
    ASSERT_TRUE(file);
    EXPECT_EQ(Compress(file.get(), COMPRESSION_FORMAT_DEFAULT), 0U);
    EXPECT_EQ(Compress(file.get(), COMPRESSION_FORMAT_NONE), ERROR_NOT_SUPPORTED);
    EXPECT_TRUE(GetFileAttributesA("folder\\file") & FILE_ATTRIBUTE_COMPRESSED);
    ASSERT_EQ(chdir("/"), 0);
}

// The volume's own time of creation against what the driver shows of it.
TEST_F(FileControl, FactsAreTheObjectsOwn) {
    constexpr timespec kTimes[2] = {{1'267'970'700, 0}, {1'267'970'701, 0}};
    const auto expectFacts = [&](const char* path) {
        ASSERT_EQ(truncate(path, 5'000'000'000), 0);
        ASSERT_EQ(utimensat(AT_FDCWD, path, kTimes, 0), 0);
        WIN32_FILE_ATTRIBUTE_DATA facts{};
        ASSERT_TRUE(GetFileAttributesExA("file", GetFileExInfoStandard, &facts));
        EXPECT_EQ(ULONGLONG{facts.nFileSizeHigh} << 32 | facts.nFileSizeLow, 5'000'000'000U);
        SYSTEMTIME times[3];
        ASSERT_TRUE(FileTimeToSystemTime(&facts.ftLastAccessTime, &times[0]));
        ASSERT_TRUE(FileTimeToSystemTime(&facts.ftLastWriteTime, &times[1]));
        ASSERT_TRUE(FileTimeToSystemTime(&facts.ftCreationTime, &times[2]));
        EXPECT_EQ(times[0].wYear, 2010);
        EXPECT_EQ(times[1].wSecond, times[0].wSecond + 1);
        EXPECT_GT(times[2].wYear, 2020);  // made just now
    };
    expectFacts(folder.MakeFile("file").c_str());
    WIN32_FILE_ATTRIBUTE_DATA facts{};
    EXPECT_FALSE(GetFileAttributesExA("missing", GetFileExInfoStandard, &facts));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);

    if (const std::string reason = test::NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    const test::NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_EQ(chdir(volume.Root().c_str()), 0);
    ASSERT_EQ(close(creat("file", 0644)), 0);
    expectFacts("file");
    ASSERT_EQ(chdir("/"), 0);
}

}  // namespace
}  // namespace permora::host
