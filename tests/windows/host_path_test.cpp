#include "platform/host_path.h"

#include <gtest/gtest.h>

#include "platform/api/errors.h"
#include "platform/terminal.h"

namespace permora {
namespace {

TEST(HostPath, WhatIsBelowTheCurrentFolderIsFoundFromThere) {
    const struct {
        const char* argument;
        std::optional<std::string> below;
    } rows[] = {
        {"name", "name"},
        {".", ""},
        {".\\name", "name"},
        {"folder/./sub\\..\\name", "folder\\name"},
        {"folder\\", "folder"},
        {"", std::nullopt},
        {"..", std::nullopt},
        {"folder\\..\\..\\name", std::nullopt},
        {"\\name", std::nullopt},
        {"/name", std::nullopt},
        {"C:name", std::nullopt},
        {"C:\\name", std::nullopt},
        {"name:stream", std::nullopt},
        // The system drops the dot and the blank; a search by handle would look for them.
        {"name.", std::nullopt},
        {"name ", std::nullopt},
    };
    for (const auto& row : rows)
        EXPECT_EQ(PathBelowCurrent(row.argument), row.below) << row.argument;
}

TEST(HostPath, BothSeparatorsMeanTheSame) {
    EXPECT_EQ(PathFromArgument("C:/folder/name"), "C:\\folder\\name");
    EXPECT_EQ(PathFromArgument("folder/."), "folder\\");
    EXPECT_EQ(PathFromArgument("."), ".");
}

TEST(HostPath, FullPathsHaveAnyLength) {
    std::string full = "kept";
    EXPECT_EQ(FullPathOf("C:\\a\\.\\b/../c\\", full), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(full, "C:\\a\\c\\");
    const std::string deep = "C:\\" + std::string(200, 'x') + '\\' + std::string(200, 'y');
    EXPECT_EQ(FullPathOf(deep, full), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(full, deep);
}

// As far as the C library of Linux agrees.
TEST(Terminal, CharactersTakeTheirColumns) {
    const struct {
        char32_t character;
        int columns;
    } rows[] = {{U'a', 1},     {0xE9, 1},  {0x0301, 0}, {0x65E5, 2},  {0xAC00, 2},  {0x1F600, 2},
                {U'\x1b', -1}, {0x7F, -1}, {0x9B, -1},  {0xD800, -1}, {0xFFFF, -1}, {0, 0}};
    for (const auto& row : rows)
        EXPECT_EQ(ColumnsOfCharacter(row.character), row.columns) << std::hex << std::size_t{row.character};
}

}  // namespace
}  // namespace permora
