// The machine's policy and the process's token.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <string>

#include "platform/api/errors.h"
#include "platform/api/policy.h"
#include "platform/api/token.h"
#include "platform/raw_security.h"
#include "platform/resources.h"
#include "tests/support/command.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

constexpr const char* kHeading = "Windows Registry Editor Version 5.00\n\n";
constexpr const char* kAccounts = "HKEY_LOCAL_MACHINE\\SECURITY\\Policy\\Accounts";

// The accounts that hold the right, or "error" and the code.
std::string HoldersOf(std::u16string right) {
    LSA_OBJECT_ATTRIBUTES attributes{};
    LSA_HANDLE policy = nullptr;
    EXPECT_EQ(
        LsaOpenPolicy(nullptr, &attributes, POLICY_VIEW_LOCAL_INFORMATION | POLICY_LOOKUP_NAMES, &policy), 0);
    const UniquePolicy open(policy);
    const auto bytes = static_cast<WORD>(right.size() * sizeof(WCHAR));
    LSA_UNICODE_STRING name{bytes, bytes, right.data()};
    LPVOID block = nullptr;
    ULONG count = 0;
    const NTSTATUS status = LsaEnumerateAccountsWithUserRight(policy, &name, &block, &count);
    const UniqueLsaMemory<LSA_ENUMERATION_INFORMATION> accounts(
        static_cast<LSA_ENUMERATION_INFORMATION*>(block));
    if (status != 0) return "error " + std::to_string(LsaNtStatusToWinError(status));
    std::string holders;
    for (ULONG i = 0; i < count; ++i)
        holders += SidOf(accounts.get()[i].Sid).value().ToText() + ' ';
    return holders;
}

std::string PrivilegesOf(const char* account, const char* value) {
    return "[" + std::string(kAccounts) + "\\" + account + "\\Privilgs]\n@=hex:" + value + "\n\n";
}

// In a mount namespace of its own, where /etc holds nothing but the registry.
TEST(PolicyTest, TheRegistryTellsWhoHoldsARight) {
    if (const std::string reason = CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_EQ(EnterOwnMounts(), "");
    ASSERT_EQ(mount("tmpfs", "/etc", "tmpfs", 0, "mode=0755"), 0);
    ASSERT_EQ(mkdir("/etc/permora", 0755), 0);
    const std::string holds = "01,00,00,00,00,00,00,00,09,00,00,00,00,00,00,00,00,00,00,00";
    const std::string holdsBeside =
        "02,00,00,00,00,00,00,00,11,00,00,00,00,00,00,00,00,00,00,00,09,00,00,00,00,00,00,00,03,00,00,00";
    const std::string holdsOther = "01,00,00,00,00,00,00,00,11,00,00,00,00,00,00,00,00,00,00,00";
    const struct {
        std::string file;
        std::string holders;
    } cases[] = {
        {"", "S-1-5-32-544 "},
        {PrivilegesOf("S-1-5-21-7-8-9-1001", holdsBeside.c_str()) +
             PrivilegesOf("S-1-5-32-551", holds.c_str()),
         "S-1-5-21-7-8-9-1001 S-1-5-32-551 "},
        {PrivilegesOf("S-1-5-32-544", holdsOther.c_str()) + "[" + kAccounts + "\\S-1-1-0]\n", "error 259"},
        {PrivilegesOf("S-1-5-32-544", holds.substr(0, holds.size() - 3).c_str()), "error 1009"},
        {PrivilegesOf("Administrators", holds.c_str()), "error 1009"},
        {PrivilegesOf("S-1-5-32-544", "ff,ff,ff,ff,00,00,00,00"), "error 1009"},
    };
    for (const auto& each : cases) {
        std::ofstream("/etc/permora/registry.reg") << kHeading << each.file;
        EXPECT_EQ(HoldersOf(u"SeTakeOwnershipPrivilege"), each.holders) << each.file;
    }
    EXPECT_EQ(HoldersOf(u"SeNoSuchPrivilege"), "error " + std::to_string(ERROR_NO_SUCH_PRIVILEGE));
}

// What the token holds and whether it is switched on, after `attributes` were asked for.
std::string Adjusted(DWORD attributes) {
    HANDLE handle = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY | TOKEN_ADJUST_PRIVILEGES, &handle))
        return "no token";
    const UniqueHandle token(handle);
    TOKEN_PRIVILEGES wanted{1, {{{}, attributes}}};
    if (!LookupPrivilegeValueA(nullptr, "SeTakeOwnershipPrivilege", &wanted.Privileges[0].Luid))
        return "no name";
    SetLastError(4711);
    if (!AdjustTokenPrivileges(handle, FALSE, &wanted, sizeof wanted, nullptr, nullptr))
        return "not adjusted";
    std::string result = std::to_string(GetLastError());
    DWORD size = 0;
    EXPECT_FALSE(GetTokenInformation(handle, TokenPrivileges, nullptr, 0, &size));
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    const UniqueLocal<TOKEN_PRIVILEGES> held(static_cast<TOKEN_PRIVILEGES*>(LocalAlloc(LPTR, size + 64)));
    EXPECT_TRUE(GetTokenInformation(handle, TokenPrivileges, held.get(), size, &size));
    for (DWORD i = 0; i < held->PrivilegeCount; ++i) {
        std::array<char, 64> name{};
        DWORD length = name.size();
        EXPECT_TRUE(LookupPrivilegeNameA(nullptr, &held->Privileges[i].Luid, name.data(), &length));
        result +=
            ' ' + std::string(name.data(), length) + ' ' + std::to_string(held->Privileges[i].Attributes);
    }
    return result;
}

TEST(TokenTest, TheCapabilityIsThePrivilege) {
    if (geteuid() != 0) GTEST_SKIP() << "without root there is no capability to switch";
    const TemporaryFolder folder;
    const std::string file = folder.MakeFile("file");
    EXPECT_EQ(Adjusted(0), "0 SeTakeOwnershipPrivilege 0 SeRestorePrivilege 2");
    EXPECT_NE(chown(file.c_str(), 1, 1), 0);
    EXPECT_EQ(Adjusted(SE_PRIVILEGE_ENABLED), "0 SeTakeOwnershipPrivilege 2 SeRestorePrivilege 2");
    EXPECT_EQ(chown(file.c_str(), 1, 1), 0);
    EXPECT_EQ(AsOrdinaryUser([] { return Adjusted(SE_PRIVILEGE_ENABLED); }).value_or(""),
              std::to_string(ERROR_NOT_ALL_ASSIGNED));
}

}  // namespace
}  // namespace permora::test
