#include "platform/linux/files/current_directory.h"

#include <unistd.h>

#include <string>
#include <utility>

#include "tests/platform/linux/files/files_fixture.h"

namespace permora::host {
namespace {

using CurrentDirectoryTest = OnDriveT;

TEST_F(CurrentDirectoryTest, IsEnteredAndToldWithItsDrive) {
    folder.MakeFolder("a");
    folder.MakeFolder("a/o:o");
    EXPECT_EQ(CurrentDirectory(), "T:\\");
    ASSERT_TRUE(SetCurrentDirectoryA("a"));
    EXPECT_EQ(CurrentDirectory(), "T:\\a");
    ASSERT_TRUE(SetCurrentDirectoryA("o\uF03Ao\\"));
    EXPECT_EQ(CurrentDirectory(), "T:\\a\\o\uF03Ao");
    ASSERT_TRUE(SetCurrentDirectoryA(CurrentDirectory().c_str()));
    ASSERT_TRUE(SetCurrentDirectoryA("..\\..\\.."));
    EXPECT_EQ(CurrentDirectory(), "T:\\");
    ASSERT_TRUE(SetCurrentDirectoryA("C:\\"));
    EXPECT_EQ(CurrentDirectory(), "C:\\");
}

TEST_F(CurrentDirectoryTest, OnlyFoldersAreEnteredAndALinkOnlyWhenAskedFor) {
    folder.MakeFolder("a");
    folder.MakeFile("file");
    ASSERT_EQ(symlink("a", "link"), 0);
    ASSERT_EQ(symlink("file", "filelink"), 0);
    const std::pair<const char*, DWORD> kRefused[] = {
        {"file", ERROR_DIRECTORY},
        {"missing", ERROR_FILE_NOT_FOUND},
        {"link", ERROR_CANT_RESOLVE_FILENAME},
        {"filelink", ERROR_CANT_RESOLVE_FILENAME},
        {"filelink\\", ERROR_DIRECTORY},
    };
    for (const auto& [path, error] : kRefused) {
        EXPECT_FALSE(SetCurrentDirectoryA(path)) << path;
        EXPECT_EQ(GetLastError(), error) << path;
    }
    EXPECT_EQ(CurrentDirectory(), "T:\\");
    ASSERT_TRUE(SetCurrentDirectoryA("link\\"));
    EXPECT_EQ(CurrentDirectory(), "T:\\a");
}

TEST_F(CurrentDirectoryTest, StaysTheSameFolderWhenItIsRenamed) {
    folder.MakeFolder("a");
    folder.MakeFile("a/file");
    ASSERT_TRUE(SetCurrentDirectoryA("a"));
    ASSERT_EQ(rename(folder.Path("a").c_str(), folder.Path("renamed").c_str()), 0);
    folder.MakeFolder("a");  // someone puts another folder in its place
    EXPECT_EQ(CurrentDirectory(), "T:\\renamed");
    EXPECT_NE(GetFileAttributesA("file"), INVALID_FILE_ATTRIBUTES);
}

TEST_F(CurrentDirectoryTest, ADeletedOneIsAnErrorThatAWayOutLeavesBehind) {
    folder.MakeFolder("gone");
    ASSERT_TRUE(SetCurrentDirectoryA("gone"));
    ASSERT_EQ(rmdir(folder.Path("gone").c_str()), 0);
    char buffer[300];
    EXPECT_EQ(GetCurrentDirectoryA(sizeof buffer, buffer), 0U);
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    EXPECT_EQ(GetFullPathNameA("x", sizeof buffer, buffer, nullptr), 0U);
    EXPECT_EQ(GetFileAttributesA("x"), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetFileAttributesA(".."), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetFileAttributesA("\\"), INVALID_FILE_ATTRIBUTES);  // of which drive?
    EXPECT_TRUE(SetCurrentDirectoryA("T:\\"));
}

TEST_F(CurrentDirectoryTest, FullPathsAreWorkedOutInTheTextAlone) {
    folder.MakeFolder("sub");
    ASSERT_TRUE(SetCurrentDirectoryA("sub"));
    const std::pair<const char*, const char*> kCases[] = {
        {"x", "T:\\sub\\x"},    {".", "T:\\sub"},
        {"..\\x", "T:\\x"},     {"..\\..\\..\\x", "T:\\x"},
        {"\\x", "T:\\x"},       {"t:x", "T:\\sub\\x"},
        {"C:x", "C:\\x"},       {"c:/a//b/../c/", "C:\\a\\c\\"},
        {"C:\\..\\..", "C:\\"}, {"C:", "C:\\"},
        {"a\\.", "T:\\sub\\a"}, {"missing*\\?", "T:\\sub\\missing*\\?"},
    };
    for (const auto& [path, expected] : kCases) {
        char buffer[64];
        LPSTR filePart = nullptr;
        EXPECT_EQ(GetFullPathNameA(path, sizeof buffer, buffer, &filePart), std::string(expected).size());
        EXPECT_STREQ(buffer, expected) << path;
        const std::size_t nameStart = std::string(expected).rfind('\\') + 1;
        EXPECT_EQ(filePart, expected[nameStart] != 0 ? buffer + nameStart : nullptr) << path;
    }
    EXPECT_EQ(GetFullPathNameA("x", 8, nullptr, nullptr), 9U);
}

}  // namespace
}  // namespace permora::host
