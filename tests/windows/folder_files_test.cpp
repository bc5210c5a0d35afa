#include "platform/folder_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include "platform/api/errors.h"
#include "platform/remembered_object.h"
#include "platform/windows/code_page.h"
#include "tests/windows/test_folder.h"

namespace permora::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class FolderFiles : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(FolderHandle::Open(top.Path(), folder), DWORD{ERROR_SUCCESS}); }

    static std::vector<std::string> NamesIn(FolderHandle& listed) {
        std::vector<std::string> names;
        FolderEntry entry;
        DWORD error = listed.NextEntry(entry);
        for (; error == ERROR_SUCCESS; error = listed.NextEntry(entry))
            names.push_back((entry.kind == FolderEntryKind::kFile     ? "file "
                             : entry.kind == FolderEntryKind::kFolder ? "folder "
                                                                      : "other ") +
                            entry.name);
        EXPECT_EQ(error, DWORD{ERROR_NO_MORE_FILES});
        return names;
    }

    const TestFolder top;
    FolderHandle folder;
};

TEST(CodePage, ANameComesBackOrIsRefused) {
    ASSERT_EQ(GetACP(), UINT{CP_UTF8}) << "the manifest asks for UTF-8";
    for (const std::wstring name : {L"plain", L"Ünïcödé 日本", L"\xD83D\xDE00"}) {
        std::string text;
        std::wstring back;
        ASSERT_EQ(ToAnsi(name, text), DWORD{ERROR_SUCCESS});
        ASSERT_EQ(ToWide(text, back), DWORD{ERROR_SUCCESS});
        EXPECT_EQ(back, name);
    }
    std::string text = "kept";
    EXPECT_EQ(ToAnsi(L"half \xD83D of a pair", text), DWORD{ERROR_NO_UNICODE_TRANSLATION});
    EXPECT_EQ(text, "kept");
    std::wstring wide = L"kept";
    EXPECT_EQ(ToWide("\xff", wide), DWORD{ERROR_INVALID_NAME});
    EXPECT_EQ(wide, L"kept");
}

TEST_F(FolderFiles, ListsMoreThanTheSystemHandsOutAtOnce) {
    top.MakeFolder("sub");
    std::vector<std::string> expected = {"folder sub"};
    for (int i = 0; i < 300; ++i) {
        const std::string name =
            "a rather long name of a file, beyond ASCII: Ünïcödé 日本 " + std::to_string(i);
        top.MakeFile(name);
        expected.push_back("file " + name);
    }
    EXPECT_THAT(NamesIn(folder), testing::UnorderedElementsAreArray(expected));
}

TEST_F(FolderFiles, OnlyBareNamesAreFound) {
    top.MakeFolder("sub");
    top.MakeFile("sub\\file");
    FolderHandle sub;
    ASSERT_EQ(folder.OpenFolder("sub", sub), DWORD{ERROR_SUCCESS});
    FileHandle file;
    ASSERT_EQ(sub.HoldFile("file", file), DWORD{ERROR_SUCCESS});
    const struct {
        const char* name;
        DWORD error;
    } rows[] = {{"", ERROR_INVALID_NAME},         {".", ERROR_INVALID_NAME},
                {"..", ERROR_INVALID_NAME},       {"sub\\file", ERROR_INVALID_NAME},
                {"sub/file", ERROR_INVALID_NAME}, {"missing", ERROR_FILE_NOT_FOUND}};
    for (const auto& row : rows) {
        EXPECT_EQ(folder.HoldFile(row.name, file), row.error) << row.name;
        EXPECT_EQ(folder.OpenFolder(row.name, sub), row.error) << row.name;
        EXPECT_EQ(folder.RemoveFolder(row.name), row.error) << row.name;
    }
    EXPECT_NE(folder.HoldFile("sub", file), DWORD{ERROR_SUCCESS});
}

TEST_F(FolderFiles, AFileIsOverwrittenAndRemovedByItsHandle) {
    const std::string path = top.MakeFile("file", "12345678");
    FileHandle file;
    ASSERT_EQ(folder.HoldFile("file", file), DWORD{ERROR_SUCCESS});
    std::vector<OverwriteObstacle> obstacles;
    ASSERT_EQ(file.FindObstacles(obstacles), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(obstacles, IsEmpty());
    std::vector<std::string> streams = {"kept"};
    ASSERT_EQ(file.ListNamedStreams(streams), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(streams, IsEmpty());
    {
        UniqueHandle contents;
        ASSERT_EQ(file.OpenForOverwriting(contents), DWORD{ERROR_SUCCESS});
        UniqueHandle second;
        EXPECT_EQ(file.OpenForOverwriting(second), DWORD{ERROR_SHARING_VIOLATION});
        FileRange range;
        ASSERT_EQ(FindAllocated(contents.get(), 0, range), DWORD{ERROR_SUCCESS});
        EXPECT_EQ(range.begin, 0);
        EXPECT_EQ(range.end, 8);
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(contents.get(), "\0\0\0\0", 4, &written, nullptr));
    }
    DWORD bytes = 0;
    ASSERT_EQ(folder.BytesPerSector(bytes), DWORD{ERROR_SUCCESS});
    EXPECT_GE(bytes, 512U);
    EXPECT_EQ(bytes & (bytes - 1), 0U);
    EXPECT_EQ(file.Remove(), DWORD{ERROR_SUCCESS});
    file = {};
    EXPECT_FALSE(Exists(path));
}

TEST_F(FolderFiles, ANameThatLeadsToAnotherFileByNowIsNotRemoved) {
    top.MakeFile("file");
    FileHandle file;
    ASSERT_EQ(folder.HoldFile("file", file), DWORD{ERROR_SUCCESS});
    const RememberedObject remembered(nullptr, top.Path("file"));
    EXPECT_EQ(remembered.Verify(file), DWORD{ERROR_SUCCESS});
    ASSERT_TRUE(MoveFileA(top.Path("file").c_str(), top.Path("moved").c_str()));
    top.MakeFile("file");
    EXPECT_EQ(file.Remove(), DWORD{ERROR_FILE_INVALID});
    EXPECT_TRUE(Exists(top.Path("file")));
    HeldObject found;
    EXPECT_EQ(remembered.Find(found), DWORD{ERROR_FILE_INVALID});
}

TEST_F(FolderFiles, AFurtherNameIsNoticed) {
    top.MakeFile("file");
    ASSERT_TRUE(CreateHardLinkA(top.Path("other").c_str(), top.Path("file").c_str(), nullptr));
    FileHandle file;
    ASSERT_EQ(folder.HoldFile("file", file), DWORD{ERROR_SUCCESS});
    std::vector<OverwriteObstacle> obstacles;
    ASSERT_EQ(file.FindObstacles(obstacles), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(obstacles, ElementsAre(OverwriteObstacle::kSeveralNames));
    bool hasSeveral = false;
    ASSERT_EQ(file.HasSeveralNames(hasSeveral), DWORD{ERROR_SUCCESS});
    EXPECT_TRUE(hasSeveral);
}

TEST_F(FolderFiles, NamedStreamsAreListedAndOpened) {
    const std::string path = top.MakeFile("file");
    HANDLE stream =
        CreateFileA((path + ":hidden").c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
    ASSERT_NE(stream, INVALID_HANDLE_VALUE);
    CloseHandle(stream);
    FileHandle file;
    ASSERT_EQ(folder.HoldFile("file", file), DWORD{ERROR_SUCCESS});
    std::vector<std::string> streams;
    ASSERT_EQ(file.ListNamedStreams(streams), DWORD{ERROR_SUCCESS});
    ASSERT_THAT(streams, ElementsAre(":hidden:$DATA"));
    UniqueHandle contents;
    EXPECT_EQ(file.OpenStreamForOverwriting(streams.front(), contents), DWORD{ERROR_SUCCESS});
}

TEST_F(FolderFiles, AFolderIsOpenedAsArgumentsAskForIt) {
    top.MakeFolder("sub");
    top.MakeFolder("sub\\inner");
    top.MakeFile("file");
    FolderHandle sub;
    ASSERT_EQ(folder.OpenPath("sub", sub), DWORD{ERROR_SUCCESS});
    FolderHandle found;
    const struct {
        const char* path;
        DWORD error;
    } rows[] = {{"", ERROR_SUCCESS},     {"inner", ERROR_SUCCESS},      {"inner\\", ERROR_SUCCESS},
                {"..\\", ERROR_SUCCESS}, {"..\\file", ERROR_DIRECTORY}, {"none", ERROR_FILE_NOT_FOUND}};
    for (const auto& row : rows)
        EXPECT_EQ(sub.OpenPath(row.path, found), row.error) << row.path;
    ASSERT_EQ(sub.OpenPath("..\\", found), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(NamesIn(found), UnorderedElementsAre("folder sub", "file file"));
    EXPECT_EQ(FolderHandle::Open(top.Path("file"), found), DWORD{ERROR_DIRECTORY});
}

TEST_F(FolderFiles, AJunctionIsRemovedAndNeverEntered) {
    top.MakeFolder("target");
    top.MakeFile("target\\file");
    ASSERT_EQ(top.MakeJunction("junction", top.Path("target")), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(NamesIn(folder), UnorderedElementsAre("folder target", "other junction"));
    FolderHandle entered;
    EXPECT_EQ(folder.OpenFolder("junction", entered), DWORD{ERROR_CANT_RESOLVE_FILENAME});
    EXPECT_EQ(FolderHandle::Open(top.Path("junction"), entered), DWORD{ERROR_CANT_RESOLVE_FILENAME});
    EXPECT_EQ(FolderHandle::Open(top.Path("junction\\"), entered), DWORD{ERROR_SUCCESS});
    entered = {};
    EXPECT_EQ(folder.RemoveLink("target"), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(folder.RemoveLink("junction"), DWORD{ERROR_SUCCESS});
    EXPECT_FALSE(Exists(top.Path("junction")));
    EXPECT_TRUE(Exists(top.Path("target\\file")));
}

}  // namespace
}  // namespace permora::test
