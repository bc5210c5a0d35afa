#include "browser/folder_entries.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/host_path.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

using testing::UnorderedElementsAre;

TEST(FolderEntries, NamesWithDotsAreNeverListed) {
    struct Case {
        const char* name;
        DWORD attributes;
        EntryKind kind;
    };
    constexpr DWORD kFolder = FILE_ATTRIBUTE_DIRECTORY;
    for (const Case& each : {Case{"..", kFolder, EntryKind::kParent},
                             {"..name", FILE_ATTRIBUTE_NORMAL, EntryKind::kParent},
                             {".", kFolder, EntryKind::kPassedOver},
                             {".profile", FILE_ATTRIBUTE_NORMAL, EntryKind::kPassedOver},
                             {"a.b", kFolder | FILE_ATTRIBUTE_REPARSE_POINT, EntryKind::kFolder},
                             {"a", FILE_ATTRIBUTE_REPARSE_POINT, EntryKind::kFile}}) {
        WIN32_FIND_DATAA found{};
        std::strncpy(found.cFileName, each.name, sizeof found.cFileName - 1);
        found.dwFileAttributes = each.attributes;
        EXPECT_EQ(KindOf(found), each.kind) << each.name;
    }
    WIN32_FIND_DATAA large{};
    large.nFileSizeHigh = 1;
    large.nFileSizeLow = 0xFFFFFFFF;
    EXPECT_EQ(SizeOf(large), 0x1FFFFFFFFU);
}

}  // namespace
}  // namespace permora
