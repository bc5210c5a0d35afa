#include "platform/api/libraries.h"

#include <gtest/gtest.h>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/resources.h"

namespace {

using permora::UniqueLibrary;

TEST(Libraries, AreFoundByNameInAnyCaseWithOrWithoutExtension) {
    for (const char* name : {"advapi32.dll", "ADVAPI32.DLL", "Advapi32", "netmsg.dll", "kernel32.dll"}) {
        EXPECT_TRUE(UniqueLibrary(LoadLibraryA(name))) << name;
    }
    for (const char* name : {"", ".dll", "advapi32.dll.dll", "advapi", "/lib/advapi32.dll", "libc.so.6"}) {
        EXPECT_FALSE(UniqueLibrary(LoadLibraryA(name))) << name;
        EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
    }
    EXPECT_FALSE(UniqueLibrary(LoadLibraryA(nullptr)));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(Libraries, GiveTheFunctionsThemselves) {
    const UniqueLibrary library(LoadLibraryA("advapi32.dll"));
    ASSERT_TRUE(library);
    const std::pair<const char*, decltype(&AddAccessAllowedAceEx)> functions[] = {
        {"AddAccessAllowedAceEx", AddAccessAllowedAceEx},
        {"AddAccessDeniedAceEx", AddAccessDeniedAceEx},
    };
    for (const auto& [name, function] : functions) {
        FARPROC found = GetProcAddress(library.get(), name);
        EXPECT_EQ(reinterpret_cast<decltype(&AddAccessAllowedAceEx)>(reinterpret_cast<void (*)()>(found)),
                  function);
    }
    for (const char* name : {"addaccessallowedaceex", "AddAccessAllowedAce", ""}) {
        EXPECT_EQ(GetProcAddress(library.get(), name), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_PROC_NOT_FOUND);
    }
}

TEST(Libraries, StayUntilTheirLastLoadIsFreed) {
    HMODULE library = LoadLibraryA("advapi32.dll");
    EXPECT_EQ(LoadLibraryA("advapi32"), library);
    EXPECT_TRUE(FreeLibrary(library));
    EXPECT_NE(GetProcAddress(library, "AddAccessAllowedAceEx"), nullptr);
    EXPECT_TRUE(FreeLibrary(library));
    EXPECT_EQ(GetProcAddress(library, "AddAccessAllowedAceEx"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
    EXPECT_FALSE(FreeLibrary(library));
    EXPECT_FALSE(FreeLibrary(nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

}  // namespace
