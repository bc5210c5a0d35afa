#include "platform/link_target.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string_view>
#include <vector>

#include "platform/api/errors.h"
#include "platform/windows/code_page.h"
#include "platform/windows/link_text.h"
#include "tests/windows/test_folder.h"

namespace permora {
namespace {

using test::TestFolder;

// The block of a symbolic link with one name for both of its texts.
std::vector<std::byte> LinkBlock(std::wstring_view text) {
    const auto bytes = static_cast<WORD>(text.size() * sizeof(wchar_t));
    struct {
        DWORD tag = IO_REPARSE_TAG_SYMLINK;
        WORD dataLength, reserved, substituteOffset, substituteLength, printOffset, printLength;
        DWORD flags = 1;
    } head{};
    head.dataLength = static_cast<WORD>(12 + bytes);
    head.substituteLength = head.printLength = bytes;
    std::vector<std::byte> block(sizeof head + bytes);
    std::memcpy(block.data(), &head, sizeof head);
    std::memcpy(block.data() + sizeof head, text.data(), bytes);
    return block;
}

TEST(LinkText, NoByteOfADamagedBlockIsBelieved) {
    std::vector<std::byte> block = LinkBlock(L"..\\target");
    LinkText link;
    ASSERT_EQ(ReadLinkText(block, link), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(link.text, L"..\\target");
    EXPECT_TRUE(link.isRelative);
    for (std::size_t size = 0; size < block.size(); ++size)
        EXPECT_EQ(ReadLinkText(std::span(block).first(size), link), DWORD{ERROR_INVALID_REPARSE_DATA})
            << size;
    // A name that ends behind the block, one of half a character, one with a NUL, and none.
    constexpr std::size_t kOffset = 8;
    constexpr std::size_t kLength = 10;
    for (const auto& [place, value] : {std::pair{kOffset, 2}, {kLength, 0xFF}, {kLength, 3}, {kLength, 0}}) {
        std::vector<std::byte> damaged = block;
        damaged[place] = static_cast<std::byte>(value);
        EXPECT_EQ(ReadLinkText(damaged, link), DWORD{ERROR_INVALID_REPARSE_DATA}) << place;
    }
    block.back() = block[block.size() - 2] = std::byte{0};
    EXPECT_EQ(ReadLinkText(block, link), DWORD{ERROR_INVALID_REPARSE_DATA});
    block[0] = std::byte{0x13};
    EXPECT_EQ(ReadLinkText(block, link), DWORD{ERROR_INVALID_FUNCTION});
    EXPECT_EQ(link.text, L"..\\target");
}

TEST(LinkTarget, WhatIsNoLinkLeadsNowhere) {
    const TestFolder folder;
    std::string target = "kept";
    EXPECT_EQ(ReadLinkTarget(folder.MakeFile("file").c_str(), target), DWORD{ERROR_INVALID_FUNCTION});
    EXPECT_EQ(ReadLinkTarget(folder.Path("none").c_str(), target), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(target, "kept");
}

TEST(LinkTarget, AJunctionLeadsToAFullPath) {
    const TestFolder folder;
    std::string target;
    ASSERT_EQ(folder.MakeJunction("junction", folder.Path("gone")), DWORD{ERROR_SUCCESS});
    ASSERT_EQ(ReadLinkTarget(folder.Path("junction").c_str(), target), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(target, folder.Path("gone"));
}

TEST(LinkTarget, ARelativeLinkLeadsFromItsFolder) {
    const TestFolder folder;
    folder.MakeFolder("sub");
    const auto link = [&](const wchar_t* text) {
        const std::string path = folder.Path("sub\\link");
        constexpr DWORD kAsAnyUser = 2;
        DeleteFileA(path.c_str());
        if (CreateSymbolicLinkW(test::VerbatimPath(path).c_str(), text, kAsAnyUser) == FALSE)
            return "error " + std::to_string(GetLastError());
        std::string target;
        const DWORD error = ReadLinkTarget(path.c_str(), target);
        return error == ERROR_SUCCESS ? target : "error " + std::to_string(error);
    };
    EXPECT_EQ(link(L"..\\.\\gone"), folder.Path("gone"));
    EXPECT_EQ(link(L"near"), folder.Path("sub\\near"));
    EXPECT_EQ(link(L"\\top"), folder.Path().substr(0, 3) + "top");
    EXPECT_EQ(link(L"..\\..\\..\\..\\..\\..\\..\\..\\..\\.."), folder.Path().substr(0, 3));
}

}  // namespace
}  // namespace permora
