#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <string>
#include <utility>

#include "tests/platform/linux/files/files_fixture.h"
#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"

namespace permora::host {
namespace {

using Volumes = OnDriveT;

DWORD FlagsOf(LPCSTR root) {
    DWORD flags = 0;
    EXPECT_TRUE(GetVolumeInformationA(root, nullptr, 0, nullptr, nullptr, &flags, nullptr, 0));
    return flags;
}

std::string FileSystemOf(LPCSTR root) {
    char name[32] = "";
    EXPECT_TRUE(GetVolumeInformationA(root, nullptr, 0, nullptr, nullptr, nullptr, name, sizeof name));
    return name;
}

TEST_F(Volumes, TellTheirFactsOrWhyNot) {
    char label[64] = "before";
    char fileSystem[32] = "before";
    DWORD serial = 0;
    DWORD longest = 0;
    DWORD flags = 0;
    ASSERT_TRUE(GetVolumeInformationA("C:\\", label, sizeof label, &serial, &longest, &flags, fileSystem,
                                      sizeof fileSystem));
    EXPECT_STRNE(fileSystem, "before");
    EXPECT_STRNE(label, "before");
    EXPECT_EQ(longest, 255U);
    EXPECT_EQ(flags & (FILE_CASE_PRESERVED_NAMES | FILE_UNICODE_ON_DISK), 6U);

    for (LPCSTR root : {"C:", "C:\\tmp", "C:\\tmp\\", "\\", "", "tmp"}) {
        EXPECT_FALSE(GetVolumeInformationA(root, nullptr, 0, nullptr, nullptr, &flags, nullptr, 0)) << root;
        EXPECT_EQ(GetLastError(), ERROR_INVALID_NAME) << root;
    }
    EXPECT_FALSE(GetVolumeInformationA("Q:\\", nullptr, 0, nullptr, nullptr, &flags, nullptr, 0));
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
}

TEST_F(Volumes, TellTheirSpace) {
    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    const std::string mountPoint = folder.MakeFolder("ram");
    ASSERT_EQ(mount("none", mountPoint.c_str(), "tmpfs", 0, "size=64m"), 0);
    folder.MakeFile("ram/file");
    ULARGE_INTEGER available{};
    ULARGE_INTEGER total{};
    ULARGE_INTEGER free{};
    ASSERT_TRUE(GetDiskFreeSpaceExA("ram", &available, &total, &free));
    EXPECT_EQ(total.QuadPart, 64U << 20);
    EXPECT_TRUE(available.QuadPart > 0 && available.QuadPart <= free.QuadPart &&
                free.QuadPart <= (64U << 20));
    ASSERT_TRUE(GetDiskFreeSpaceExA("C:\\", nullptr, &total, nullptr));
    EXPECT_GT(total.QuadPart, 64U << 20);
    for (const auto& [path, error] :
         {std::pair("ram\\file", ERROR_DIRECTORY), std::pair("missing", ERROR_FILE_NOT_FOUND),
          std::pair("Q:\\", ERROR_PATH_NOT_FOUND)}) {
        EXPECT_FALSE(GetDiskFreeSpaceExA(path, nullptr, &total, nullptr)) << path;
        EXPECT_EQ(GetLastError(), error) << path;
    }
    EXPECT_EQ(umount(mountPoint.c_str()), 0);
}

TEST_F(Volumes, WithoutAttributesCannotHoldAccessLists) {
    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    EXPECT_TRUE(FlagsOf("T:\\") & FILE_PERSISTENT_ACLS);
    const std::string mountPoint = folder.MakeFolder("ram");
    ASSERT_EQ(mount("none", mountPoint.c_str(), "ramfs", 0, nullptr), 0);
    // The volume of the current directory is asked, not that of its drive.
    ASSERT_EQ(chdir(mountPoint.c_str()), 0);
    EXPECT_FALSE(FlagsOf(nullptr) & FILE_PERSISTENT_ACLS);
    EXPECT_EQ(FileSystemOf(nullptr), "ramfs");
    ASSERT_EQ(chdir("/"), 0);
    EXPECT_EQ(umount(mountPoint.c_str()), 0);
}

TEST_F(Volumes, NtfsIsKnownByItsAttributesWhateverTheKernelCallsTheMount) {
    if (const std::string reason = test::NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    test::NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    ASSERT_TRUE(PinDrive('N', volume.Root()));
    EXPECT_EQ(FileSystemOf("N:\\"), "NTFS");
    EXPECT_EQ(FlagsOf("N:\\") & (FILE_PERSISTENT_ACLS | FILE_READ_ONLY_VOLUME), FILE_PERSISTENT_ACLS);
    volume.Unmount();
    volume.Mount(test::NtfsMount::kReadOnly);
    ASSERT_EQ(volume.Problem(), "");
    EXPECT_TRUE(FlagsOf("N:\\") & FILE_READ_ONLY_VOLUME);
    PinDrive('N', "");
}

}  // namespace
}  // namespace permora::host
