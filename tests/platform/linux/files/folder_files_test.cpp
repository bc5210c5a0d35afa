// Folders that are found by a path: from another folder that is held, or as the system's calls would.
#include "platform/folder_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>

#include "tests/platform/linux/files/files_fixture.h"
#include "tests/support/command.h"

namespace permora::host {
namespace {

class FolderFiles : public OnDriveT {
  protected:
    // top holds "one", which holds "two"; each has a file with its own name in it.
    FolderFiles() {
        for (const char* name : {"top", "top/one", "top/one/two"}) {
            const std::filesystem::path made = folder.MakeFolder(name);
            folder.MakeFile(std::string(name) + "/in " + made.filename().string());
        }
        EXPECT_EQ(symlink("one/two", folder.Path("top/link").c_str()), 0);
    }

    // The files in a folder that `open` opens, or why it cannot be opened or listed.
    static std::string FilesIn(const std::function<DWORD(FolderHandle&)>& open) {
        FolderHandle opened;
        DWORD error = open(opened);
        std::string files;
        for (FolderEntry entry; error == ERROR_SUCCESS && (error = opened.NextEntry(entry)) == ERROR_SUCCESS;)
            if (entry.kind == FolderEntryKind::kFile) files += entry.name;
        return error == ERROR_NO_MORE_FILES ? files : std::to_string(error);
    }
};

TEST_F(FolderFiles, FoldersAreFoundFromAFolderThatIsHeld) {
    FolderHandle one;
    ASSERT_EQ(FolderHandle::Open("T:\\top\\one", one), ERROR_SUCCESS);
    const std::string renamed = folder.Path("renamed");
    std::filesystem::rename(folder.Path("top"), renamed);
    std::filesystem::create_directory(folder.Path("top"));
    struct Case {
        const char* path;
        std::string expected;
    };
    for (const Case& each : {
             Case{"", "in one"},
             {".", "in one"},
             {"two", "in two"},
             {"two\\", "in two"},
             {"two\\..", "in one"},
             {"..", "in top"},
             {"..\\", "in top"},
             {"..\\one\\two", "in two"},
             {"..\\link\\", "in two"},
             {"..\\link", std::to_string(ERROR_CANT_RESOLVE_FILENAME)},
             {"..\\..\\..\\..\\renamed", "in top"},  // no further than the root of the drive
             {"\\renamed", "in top"},
             {"T:\\renamed\\one", "in one"},
             {"in one", std::to_string(ERROR_DIRECTORY)},
             {"missing", std::to_string(ERROR_FILE_NOT_FOUND)},
             {"missing\\two", std::to_string(ERROR_PATH_NOT_FOUND)},
         }) {
        EXPECT_EQ(FilesIn([&](FolderHandle& opened) { return one.OpenPath(each.path, opened); }),
                  each.expected)
            << each.path;
    }
    EXPECT_EQ(CurrentDirectory(), "T:\\");
    EXPECT_EQ(FilesIn([](FolderHandle& opened) { return FolderHandle::Open("", opened); }),
              std::to_string(ERROR_PATH_NOT_FOUND));
    ASSERT_EQ(chdir(renamed.c_str()), 0);
    EXPECT_EQ(FilesIn([](FolderHandle& opened) { return FolderHandle::Open(".", opened); }), "in top");
}

TEST_F(FolderFiles, WhatMayOnlyBeEnteredCanBeWorkedIn) {
    if (geteuid() != 0) GTEST_SKIP() << "becoming an ordinary user needs root";
    ASSERT_EQ(chmod(folder.Path().c_str(), 0755), 0);
    ASSERT_EQ(chmod(folder.Path("top").c_str(), 0711), 0);
    EXPECT_EQ(test::AsOrdinaryUser([] {
                  FolderHandle top;
                  FolderHandle one;
                  FolderEntry entry;
                  std::string codes;
                  for (const DWORD error : {FolderHandle::Open("top", top), top.NextEntry(entry),
                                            top.OpenPath("one", one), one.NextEntry(entry)})
                      codes += std::to_string(error) + ' ';
                  return codes;
              }),
              "0 " + std::to_string(ERROR_ACCESS_DENIED) + " 0 0 ");
}

}  // namespace
}  // namespace permora::host
