#include "platform/held_object.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <sddl.h>

#include "platform/api/errors.h"
#include "platform/remembered_object.h"
#include "platform/windows/privileges.h"
#include "tests/support/descriptor_texts.h"
#include "tests/windows/test_folder.h"

namespace permora::test {
namespace {

constexpr SECURITY_INFORMATION kList = DACL_SECURITY_INFORMATION;

bool IsOn(HANDLE token, LPCSTR name) {
    PRIVILEGE_SET asked{};
    asked.PrivilegeCount = 1;
    LookupPrivilegeValueA(nullptr, name, &asked.Privilege[0].Luid);
    BOOL isOn = FALSE;
    PrivilegeCheck(token, &asked, &isOn);
    return isOn != FALSE;
}

TEST(ScopedPrivileges, AreOnInTheirScopeAndThreadAlone) {
    HANDLE opened = nullptr;
    ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened));
    const UniqueHandle process(opened);
    {
        const ScopedPrivileges outer(kChangingPrivileges);
        if (!outer.AreAnyOn()) GTEST_SKIP() << "this user holds none of the privileges";
        const ScopedPrivileges inner(kChangingPrivileges);
        ASSERT_TRUE(OpenThreadToken(GetCurrentThread(), TOKEN_QUERY | TOKEN_DUPLICATE, TRUE, &opened));
        const UniqueHandle thread(opened);
        EXPECT_TRUE(IsOn(thread.get(), SE_RESTORE_NAME));
    }
    EXPECT_FALSE(OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &opened));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_TOKEN});
}

TEST(WithPrivileges, TriesFirstWithoutAndKeepsOtherErrors) {
    int calls = 0;
    const auto failing = [&calls](DWORD error) {
        calls = 0;
        return WithPrivileges(kReadingPrivileges, [&] {
            ++calls;
            return error;
        });
    };
    EXPECT_EQ(failing(ERROR_FILE_NOT_FOUND), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(failing(ERROR_SUCCESS), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(failing(ERROR_ACCESS_DENIED), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_LE(calls, 2);
}

TEST(HeldObject, TheHeldObjectIsReadAndWrittenWhateverItsNameMeans) {
    const TestFolder folder;
    const std::string path = folder.MakeFile("Ünïcödé 日本");
    const HeldObject object = Held(path);
    ASSERT_TRUE(MoveFileA(path.c_str(), folder.Path("moved").c_str()));
    const std::string replaced = folder.MakeFile("Ünïcödé 日本");
    const std::string before = DescriptorText(replaced, kList);
    const UniqueLocal<void> full = DescriptorOf("D:(A;;FA;;;WD)");
    FailuresBelow below;
    ASSERT_EQ(object.WriteSecurity(kList, {.dacl = ListOf(full)}, nullptr, Unrecorded(), below),
              DWORD{ERROR_SUCCESS});
    EXPECT_EQ(DescriptorText(replaced, kList), before);
    EXPECT_NE(DescriptorText(folder.Path("moved"), kList), before);
    EXPECT_FALSE(object.IsFolder());
    bool isSupported = false;
    ASSERT_EQ(object.AskAccessControl(isSupported), DWORD{ERROR_SUCCESS});
    EXPECT_TRUE(isSupported);
}

TEST(HeldObject, AListThatAnotherProgramHasChangedIsNotOverwritten) {
    const TestFolder folder;
    const std::string path = folder.MakeFile("file");
    const HeldObject object = Held(path);
    ReadParts shown;
    ASSERT_EQ(object.ReadSecurity(kList, shown), DWORD{ERROR_SUCCESS});
    ASSERT_EQ(SetListText(path, "D:P(A;;FR;;;WD)"), DWORD{ERROR_SUCCESS});
    const std::string changed = DescriptorText(path, kList);
    const UniqueLocal<void> full = DescriptorOf("D:P(A;;FA;;;WD)");
    FailuresBelow below;
    EXPECT_EQ(
        object.WriteSecurity(kList, {.dacl = ListOf(full)}, shown.descriptor.get(), Unrecorded(), below),
        DWORD{ERROR_REVISION_MISMATCH});
    EXPECT_EQ(DescriptorText(path, kList), changed);
}

TEST(HeldObject, EveryListComesBackAsItWasWritten) {
    const TestFolder folder;
    const std::string path = folder.MakeFile("file");
    for (const char* sddl : {"D:P(D;;FW;;;BG)(A;;FA;;;BA)(A;;FR;;;WD)", "D:P"}) {
        const UniqueLocal<void> list = DescriptorOf(sddl);
        FailuresBelow below;
        ASSERT_EQ(Held(path).WriteSecurity(kList | PROTECTED_DACL_SECURITY_INFORMATION,
                                           {.dacl = ListOf(list)}, nullptr, Unrecorded(), below),
                  DWORD{ERROR_SUCCESS});
        EXPECT_EQ(DescriptorText(path, kList), sddl);
    }
}

TEST(HeldObject, TheSystemListIsReadByWhoHoldsThePrivilege) {
    const TestFolder folder;
    const std::string path = folder.MakeFile("file");
    ReadParts parts;
    const DWORD error = Held(path).ReadSecurity(SACL_SECURITY_INFORMATION, parts);
    const ScopedPrivileges privileges({SE_SECURITY_NAME});
    const DWORD expected = privileges.AreAnyOn() ? ERROR_SUCCESS : ERROR_PRIVILEGE_NOT_HELD;
    EXPECT_EQ(error, expected);
}

TEST(HeldObject, TurnsAreTaken) {
    const TestFolder folder;
    const std::string path = folder.MakeFile("file");
    HeldObject first = Held(path);
    ASSERT_EQ(first.TakeTurn(), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(first.TakeTurn(), DWORD{ERROR_SUCCESS});
    HeldObject other = Held(folder.MakeFile("other"));
    EXPECT_EQ(other.TakeTurn(), DWORD{ERROR_SUCCESS});
    first = {};
    HeldObject next = Held(path);
    EXPECT_EQ(next.TakeTurn(), DWORD{ERROR_SUCCESS});
}

TEST(RememberedObject, AYoungerObjectIsAnotherOne) {
    const TestFolder folder;
    const std::string path = folder.MakeFolder("folder");
    const RememberedObject remembered(nullptr, path);
    EXPECT_EQ(remembered.Kind(), FolderEntryKind::kFolder);
    HeldObject found;
    EXPECT_EQ(remembered.Find(found), DWORD{ERROR_SUCCESS});
    EXPECT_TRUE(found.IsFolder());
    ASSERT_TRUE(MoveFileA(path.c_str(), folder.Path("moved").c_str()));
    EXPECT_EQ(remembered.Find(found), DWORD{ERROR_FILE_NOT_FOUND});
    folder.MakeFolder("folder");
    EXPECT_EQ(remembered.Find(found), DWORD{ERROR_FILE_INVALID});
    EXPECT_EQ(RememberedObject(nullptr, folder.Path("none")).Error(), DWORD{ERROR_FILE_NOT_FOUND});
}

}  // namespace
}  // namespace permora::test
