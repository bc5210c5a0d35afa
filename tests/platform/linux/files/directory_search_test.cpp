#include "platform/api/directory_search.h"

#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/files/name_mapping.h"
#include "tests/platform/linux/files/files_fixture.h"
#include "tests/support/command.h"
#include "tests/support/ntfs_volume.h"

namespace permora::host {
namespace {

using testing::ElementsAre;
using testing::Pair;
using testing::UnorderedElementsAre;

struct Found {
    std::vector<std::string> names;
    std::map<std::string, DWORD> attributes;
    DWORD error = ERROR_SUCCESS;  // that ended the search or prevented it
};

Found Search(const char* pattern) {
    Found found;
    WIN32_FIND_DATAA data{};
    HANDLE search = FindFirstFileA(pattern, &data);
    found.error = GetLastError();
    if (search == INVALID_HANDLE_VALUE) return found;
    do {
        found.names.emplace_back(data.cFileName);
        found.attributes[data.cFileName] = data.dwFileAttributes;
    } while (FindNextFileA(search, &data));
    found.error = GetLastError();
    EXPECT_FALSE(FindNextFileA(search, &data));
    EXPECT_TRUE(FindClose(search));
    EXPECT_FALSE(FindClose(search));
    EXPECT_FALSE(FindNextFileA(search, &data));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    return found;
}

using DirectorySearches = OnDriveT;

TEST_F(DirectorySearches, ListEverythingAndTheTwoDotsBelowARoot) {
    EXPECT_EQ(Search("*").error, ERROR_NO_MORE_FILES);
    EXPECT_EQ(Search("*").names.size(), 0U);
    folder.MakeFolder("folder");
    EXPECT_THAT(Search("T:folder/*").names, ElementsAre(".", ".."));

    folder.MakeFile(".hidden");
    folder.MakeFile("...");
    folder.MakeFile("*");
    folder.MakeFile(
        "\xFF"
        "\x1F.");
    folder.MakeFile("Grüße 文");
    ASSERT_EQ(symlink("folder", folder.Path("link").c_str()), 0);
    const Found root = Search("T:\\*");
    EXPECT_EQ(root.error, ERROR_NO_MORE_FILES);
    EXPECT_THAT(root.names, UnorderedElementsAre("folder", ".hidden", EncodeName("..."), EncodeName("*"),
                                                 EncodeName("\xFF"
                                                            "\x1F."),
                                                 "Grüße 文", "link"));
    // A listed name can be searched for again.
    for (const std::string& name : root.names) {
        EXPECT_THAT(Search(name.c_str()).attributes,
                    ElementsAre(Pair(name, GetFileAttributesA(name.c_str()))));
    }
    for (const char* name : {"b", "A", "_", "ä", "C"})
        folder.MakeFile("folder/" + std::string(name));
    EXPECT_THAT(Search("T:folder/*").names, ElementsAre(".", "..", "A", "b", "C", "_", "ä"));
    for (const char* name : {"b", "A", "_", "ä", "C"})
        ASSERT_EQ(unlink(folder.Path("folder/" + std::string(name)).c_str()), 0);
    folder.MakeFile("folder/inside");
    EXPECT_THAT(Search("link\\*").names, ElementsAre(".", "..", "inside"));
}

TEST_F(DirectorySearches, SayWhyThereIsNothingToFind) {
    folder.MakeFile("file");
    ASSERT_EQ(symlink("loop", folder.Path("loop").c_str()), 0);
    const std::pair<const char*, DWORD> kCases[] = {
        {"missing", ERROR_FILE_NOT_FOUND},
        {"missing\\*", ERROR_PATH_NOT_FOUND},
        {"missing\\file", ERROR_PATH_NOT_FOUND},
        {"file\\*", ERROR_DIRECTORY},
        {"Q:\\*", ERROR_PATH_NOT_FOUND},
        {"fi*", ERROR_INVALID_NAME},
        {"f?le", ERROR_INVALID_NAME},
        {"*\\file", ERROR_INVALID_NAME},
        {"loop\\*", ERROR_CANT_RESOLVE_FILENAME},
        {"\\\\server\\*", ERROR_BAD_NETPATH},
        {"T:\\", ERROR_FILE_NOT_FOUND},
        {"", ERROR_FILE_NOT_FOUND},
        {"..", ERROR_FILE_NOT_FOUND},
    };
    for (const auto& [pattern, error] : kCases)
        EXPECT_EQ(Search(pattern).error, error) << pattern;
}

TEST_F(DirectorySearches, PassOverWhatVanishesAndEndWithTheFolder) {
    folder.MakeFolder("folder");
    for (int i = 0; i < 1000; ++i)
        folder.MakeFile("folder/a long enough name for several blocks " + std::to_string(i));
    WIN32_FIND_DATAA data{};
    HANDLE search = FindFirstFileA("folder\\*", &data);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    while (data.cFileName[0] == '.')
        ASSERT_TRUE(FindNextFileA(search, &data));
    std::filesystem::remove_all(folder.Path("folder"));
    EXPECT_FALSE(FindNextFileA(search, &data));
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
    EXPECT_TRUE(FindClose(search));
}

TEST_F(DirectorySearches, ShowAnOrdinaryUserWhatHeMayList) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can become somebody else";
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(folder.MakeFolder("listed").c_str(), 0744), 0);
    ASSERT_EQ(chmod(folder.MakeFolder("closed").c_str(), 0711), 0);
    folder.MakeFolder("listed/folder");
    folder.MakeFile("listed/file");
    const auto answer = test::AsOrdinaryUser([] {
        std::string text = std::to_string(Search("closed\\*").error);
        for (const auto& [name, attributes] : Search("listed\\*").attributes)
            text += " " + name + "=" + std::to_string(attributes);
        return text;
    });
    EXPECT_EQ(answer, "5 .=16 ..=16 file=128 folder=16");
}

TEST_F(DirectorySearches, KnowEachVolumesOwnAttributes) {
    if (const std::string reason = test::NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
    test::NtfsVolume volume;
    ASSERT_EQ(volume.Problem(), "");
    folder.MakeFile("beside");
    ASSERT_TRUE(SetFileAttributesA("beside", FILE_ATTRIBUTE_HIDDEN));
    // The volume's folder as one entry among others, then from within.
    const std::string mountPoint = folder.MakeFolder("ntfs");
    ASSERT_EQ(mount(volume.Root().c_str(), mountPoint.c_str(), nullptr, MS_BIND, nullptr), 0);
    ASSERT_TRUE(SetFileAttributesA("ntfs", FILE_ATTRIBUTE_SYSTEM));
    folder.MakeFile("ntfs/file");
    ASSERT_TRUE(SetFileAttributesA("ntfs\\file", FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE));
    EXPECT_THAT(Search("*").attributes,
                UnorderedElementsAre(Pair("beside", FILE_ATTRIBUTE_HIDDEN),
                                     Pair("ntfs", FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_SYSTEM)));
    EXPECT_EQ(Search("ntfs\\*").attributes["file"], FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE);
    EXPECT_EQ(umount(mountPoint.c_str()), 0);
}

}  // namespace
}  // namespace permora::host
