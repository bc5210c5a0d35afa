#include "browser/drive_rows.h"

#include <gtest/gtest.h>

namespace permora {
namespace {

// The rows of drives with and without access lists.
std::string Describe(UINT type, DWORD flags) {
    DriveLook look = LookOfDrive(type);
    if (DependsOnFileSystem(look)) look = WithFileSystem(look, flags);
    return std::to_string(look.image) + look.typeText;
}

TEST(DriveRows, TheTypeAndTheFileSystemGiveTheLook) {
    struct Case {
        UINT type;
        const char* plain;
        const char* withLists;
    };
    for (const Case& each : {Case{DRIVE_REMOVABLE, "0Removable", "0Removable"},
                             {DRIVE_FIXED, "1Fixed", "3Fixed"},
                             {DRIVE_REMOTE, "4Remote", "4Remote"},
                             {DRIVE_CDROM, "2CD-ROM", "3CD-ROM"},
                             {DRIVE_RAMDISK, "1RAM disk", "3RAM disk"},
                             {DRIVE_UNKNOWN, "-1", "3"},
                             {DRIVE_NO_ROOT_DIR, "-1", "3"}}) {
        EXPECT_EQ(Describe(each.type, FILE_UNICODE_ON_DISK), each.plain);
        EXPECT_EQ(Describe(each.type, FILE_PERSISTENT_ACLS), each.withLists);
    }
    EXPECT_EQ(DriveSizeText(std::uint64_t{50} << 30, 2047), "50 GB (Available: 1 KB)");
}

}  // namespace
}  // namespace permora
