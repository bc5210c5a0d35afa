#include "browser/list_presentation.h"

#include <gtest/gtest.h>

#include <cstring>

#include "platform/api/files.h"

namespace permora {
namespace {

WIN32_FIND_DATAA Found(const char* name, DWORD attributes = FILE_ATTRIBUTE_NORMAL) {
    WIN32_FIND_DATAA found{};
    std::strncpy(found.cFileName, name, sizeof found.cFileName - 1);
    found.dwFileAttributes = attributes;
    return found;
}

TEST(ListPresentation, FilesTakeTheIconOfTheirExtension) {
    struct Case {
        const char* name;
        int image;
    };
    for (const Case& each : {Case{"Report.2009.DOC", 10},
                             {"archive.tar.ZIP", 2},
                             {"zip", 2},
                             {"README", 1},
                             {"page.htm", 4},
                             {"page.html", 4},
                             {"page.htmlx", 1},
                             {"song.Mp3", 6},
                             {"help.chm", 13},
                             {"ends.", 1},
                             {"ünïcode.zip", 2},
                             {"文書.xls", 11}}) {
        EXPECT_EQ(OwnIconIndex(Found(each.name)), each.image) << each.name;
    }
    EXPECT_EQ(OwnIconIndex(Found("folder.zip", FILE_ATTRIBUTE_DIRECTORY)), 0);
}

TEST(ListPresentation, SizesLoseTheirFraction) {
    struct Case {
        std::uint64_t bytes;
        const char* text;
    };
    constexpr std::uint64_t kGigabyte = std::uint64_t{1} << 30;
    for (const Case& each : {Case{0, "0 Bytes"},
                             {1023, "1023 Bytes"},
                             {1024, "1 KB"},
                             {1536, "1 KB"},
                             {5'000'000'000, "4 GB"},
                             {5 * kGigabyte, "5 GB"},
                             {kGigabyte << 10, "1 TB"},
                             {~std::uint64_t{0}, "16777215 TB"}}) {
        EXPECT_EQ(FormatSize(each.bytes), each.text);
    }
}

TEST(ListPresentation, ATimeThatNoCalendarHasIsNoText) {
    EXPECT_EQ(ModifiedText({0xFFFFFFFF, 0xFFFFFFFF}), "");
}

}  // namespace
}  // namespace permora
