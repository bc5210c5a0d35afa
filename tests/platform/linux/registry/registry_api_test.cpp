#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/api/errors.h"
#include "platform/api/registry.h"
#include "platform/linux/registry/registry_places.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"

namespace permora::host {
namespace {

// The user's registry is a file of the test's own.
class Registry : public testing::Test {
  protected:
    static HKEY Create(const char* path, REGSAM access = KEY_READ | KEY_WRITE) {
        HKEY key = nullptr;
        EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, path, 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                                  nullptr, &key, nullptr),
                  0);
        return key;
    }
    static LSTATUS SetText(HKEY key, const char* name, const char* text) {
        const std::string copy = text;
        return RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(copy.c_str()),
                              static_cast<DWORD>(copy.size() + 1));
    }

    test::TemporaryFolder base;
    const test::ScopedVariable configuration{"XDG_CONFIG_HOME", base.Path()};
};

TEST_F(Registry, KeepsValuesFromOneOpeningToTheNext) {
    HKEY key = nullptr;
    DWORD disposition = 0;
    const auto create = [&] {
        return RegCreateKeyExA(HKEY_CURRENT_USER, "Software\\Maker", 0, nullptr, 0, KEY_WRITE, nullptr, &key,
                               &disposition);
    };
    EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Maker", 0, KEY_READ, &key), ERROR_FILE_NOT_FOUND);
    ASSERT_EQ(create(), 0);
    EXPECT_EQ(disposition, REG_CREATED_NEW_KEY);
    EXPECT_EQ(SetText(key, nullptr, "default"), 0);
    EXPECT_EQ(SetText(key, "Text", "C:\\x"), 0);
    EXPECT_EQ(RegCloseKey(key), 0);
    ASSERT_EQ(create(), 0);
    EXPECT_EQ(disposition, REG_OPENED_EXISTING_KEY);
    EXPECT_EQ(RegCloseKey(key), 0);

    ASSERT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, "SOFTWARE\\maker\\", 0, KEY_READ, &key), 0);
    BYTE data[8] = {77, 77};
    DWORD type = 0;
    DWORD size = 4;
    EXPECT_EQ(RegQueryValueExA(key, "text", nullptr, &type, data, &size), ERROR_MORE_DATA);
    EXPECT_EQ(size, 5U);
    EXPECT_EQ(data[0], 77);
    EXPECT_EQ(RegQueryValueExA(key, "text", nullptr, &type, data, &size), 0);
    EXPECT_EQ(type, REG_SZ);
    EXPECT_EQ(std::memcmp(data, "C:\\x", 5), 0);
    EXPECT_EQ(RegQueryValueExA(key, "", nullptr, nullptr, nullptr, &size), 0);
    EXPECT_EQ(size, 8U);
    EXPECT_EQ(RegQueryValueExA(key, "missing", nullptr, &type, data, &size), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegCloseKey(key), 0);
}

TEST_F(Registry, HoldsHandlesToWhatTheyWereOpenedFor) {
    HKEY readable = Create("A", KEY_READ);
    HKEY writable = Create("A", KEY_WRITE);
    HKEY other = nullptr;
    BYTE data[4] = {};
    DWORD size = sizeof data;
    EXPECT_EQ(SetText(readable, "v", "x"), ERROR_ACCESS_DENIED);
    EXPECT_EQ(SetText(writable, "v", "x"), 0);
    EXPECT_EQ(RegQueryValueExA(writable, "v", nullptr, nullptr, data, &size), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegQueryValueExA(readable, "v", nullptr, nullptr, data, &size), 0);
    EXPECT_EQ(RegCreateKeyExA(readable, "B", 0, nullptr, 0, KEY_READ, nullptr, &other, nullptr),
              ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegCloseKey(readable), 0);
    EXPECT_EQ(RegQueryValueExA(readable, "v", nullptr, nullptr, data, &size), ERROR_INVALID_HANDLE);
    EXPECT_EQ(SetText(writable, "line\nbreak", "x"), ERROR_INVALID_PARAMETER);
    for (const auto& [path, error] :
         {std::pair("\\A", ERROR_BAD_PATHNAME), std::pair("A\\\\B", ERROR_BAD_PATHNAME),
          std::pair("A\n[B]", ERROR_INVALID_PARAMETER)}) {
        EXPECT_EQ(RegOpenKeyExA(HKEY_CURRENT_USER, path, 0, KEY_READ, &other), error) << path;
    }
    EXPECT_EQ(RegCloseKey(writable), 0);
    EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), 0);
}

TEST_F(Registry, DeletesTreesFromTheirLeaves) {
    EXPECT_EQ(RegCloseKey(Create("Shell\\Verb\\command")), 0);
    EXPECT_EQ(RegCloseKey(Create("Shell\\Verb\\other")), 0);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Shell\\Verb"), ERROR_ACCESS_DENIED);
    HKEY verb = Create("Shell\\Verb");
    char name[8];
    DWORD size = 7;
    EXPECT_EQ(RegEnumKeyExA(verb, 0, name, &size, nullptr, nullptr, nullptr, nullptr), ERROR_MORE_DATA);
    for (const char* expected : {"command", "other"}) {
        size = sizeof name;
        ASSERT_EQ(RegEnumKeyExA(verb, 0, name, &size, nullptr, nullptr, nullptr, nullptr), 0);
        EXPECT_EQ(std::string(name, size), expected);
        EXPECT_EQ(RegDeleteKeyA(verb, name), 0);
    }
    EXPECT_EQ(RegEnumKeyExA(verb, 0, name, &size, nullptr, nullptr, nullptr, nullptr), ERROR_NO_MORE_ITEMS);
    EXPECT_EQ(RegCloseKey(verb), 0);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Shell\\Verb"), 0);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, "Shell\\Verb"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, ""), ERROR_INVALID_PARAMETER);
}

TEST_F(Registry, OfRootIsNotWhereAnotherUsersEnvironmentPoints) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give folders away";
    EXPECT_EQ(UserRegistryFolder(), base.Path("permora"));
    ASSERT_EQ(chown(base.Path().c_str(), 65534, 65534), 0);
    setenv("XDG_CONFIG_HOME", base.Path("missing").c_str(), 1);
    const test::ScopedVariable home("HOME", base.Path());
    EXPECT_EQ(UserRegistryFolder(), "/root/.config/permora");
    setenv("HOME", "relative", 1);
    unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(UserRegistryFolder(), "/root/.config/permora");
}

}  // namespace
}  // namespace permora::host
