// The accounts that are offered as owners, for various policies and tokens. The linker's wraps invent both.
#include "security/owner_candidates.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>

#include "platform/api/errors.h"
#include "platform/api/policy.h"
#include "platform/api/token.h"

namespace {

constexpr NTSTATUS kDenied = static_cast<NTSTATUS>(0xC0000022);
constexpr NTSTATUS kNoMoreEntries = static_cast<NTSTATUS>(0x8000001A);

struct System {
    NTSTATUS openStatus = 0;
    NTSTATUS enumerationStatus = 0;
    std::vector<std::string> holders = {};  // SIDs as texts
    bool hasToken = true;
    BOOL isAdjusted = TRUE;
    bool tellsPrivileges = true;
    bool holdsPrivilege = true;
    std::string user = "S-1-5-21-1-2-3-1000";

    DWORD policyAccess = 0;
    DWORD adjustedAttributes = 0;
} faked;

// The SIDs live as long as the process.
PSID SidOf(const std::string& text) {
    static std::map<std::string, permora::UniqueLocal<void>> sids;
    permora::UniqueLocal<void>& sid = sids[text];
    PSID made = nullptr;
    if (!sid && ConvertStringSidToSidA(text.c_str(), &made) != FALSE) sid.reset(made);
    return sid.get();
}

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

NTSTATUS __wrap_LsaOpenPolicy(PLSA_UNICODE_STRING /*system*/, PLSA_OBJECT_ATTRIBUTES /*attributes*/,
                              ACCESS_MASK access, PLSA_HANDLE policy) {
    faked.policyAccess = access;
    if (faked.openStatus == 0) *policy = &faked;
    return faked.openStatus;
}

NTSTATUS __wrap_LsaEnumerateAccountsWithUserRight(LSA_HANDLE /*policy*/, PLSA_UNICODE_STRING right,
                                                  LPVOID* buffer, PULONG count) {
    EXPECT_EQ(std::u16string(right->Buffer, right->Length / 2), u"SeTakeOwnershipPrivilege");
    EXPECT_EQ(right->MaximumLength, 48);
    if (faked.enumerationStatus != 0) return faked.enumerationStatus;
    auto* entries = static_cast<LSA_ENUMERATION_INFORMATION*>(
        LocalAlloc(LPTR, (faked.holders.size() + 1) * sizeof(LSA_ENUMERATION_INFORMATION)));
    for (std::size_t i = 0; i < faked.holders.size(); ++i)
        entries[i].Sid = SidOf(faked.holders[i]);
    *buffer = entries;
    *count = static_cast<ULONG>(faked.holders.size());
    return 0;
}

BOOL __real_OpenProcessToken(HANDLE process, DWORD access, HANDLE* token);
BOOL __wrap_OpenProcessToken(HANDLE process, DWORD access, HANDLE* token) {
    EXPECT_EQ(access, 0x28U);
    return faked.hasToken ? __real_OpenProcessToken(process, access, token) : FALSE;
}

BOOL __wrap_AdjustTokenPrivileges(HANDLE /*token*/, BOOL disableAll, PTOKEN_PRIVILEGES newState,
                                  DWORD /*size*/, PTOKEN_PRIVILEGES /*previous*/, LPDWORD /*needed*/) {
    EXPECT_FALSE(disableAll);
    faked.adjustedAttributes = newState->Privileges[0].Attributes;
    SetLastError(faked.isAdjusted ? ERROR_SUCCESS : ERROR_ACCESS_DENIED);
    return faked.isAdjusted;
}

BOOL __wrap_GetTokenInformation(HANDLE /*token*/, TOKEN_INFORMATION_CLASS informationClass,
                                LPVOID information, DWORD size, LPDWORD needed) {
    TOKEN_PRIVILEGES privileges{faked.holdsPrivilege ? 1U : 0U, {{{9, 0}, 0}}};
    const TOKEN_USER user{{SidOf(faked.user), 0}};
    const bool isUser = informationClass == TokenUser;
    *needed = isUser ? sizeof user : sizeof privileges;
    if (!isUser && !faked.tellsPrivileges) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    if (size < *needed) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::memcpy(information, isUser ? static_cast<const void*>(&user) : &privileges, *needed);
    return TRUE;
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace permora {
namespace {

// The candidates' SIDs, then the texts of the failures.
std::vector<std::string> Offered() {
    OwnerCandidates candidates = FindOwnerCandidates();
    std::vector<std::string> offered;
    if (candidates.accounts)
        for (AccountRecord& candidate : *candidates.accounts)
            offered.push_back(candidate.GetSidText());
    else
        offered.emplace_back("nothing");
    for (const Outcome& failure : candidates.failures) {
        const std::string text = BoxText(failure);
        offered.push_back(text.substr(0, text.find_last_not_of("\r\n") + 1));
    }
    return offered;
}

TEST(OwnerCandidates, AreThePolicysAccountsAndThisUserEachOnce) {
    const std::string user = System().user;
    const struct {
        const char* what;
        System system;
        std::vector<std::string> offered;
    } cases[] = {
        {"order", {.holders = {"S-1-5-32-551", "S-1-5-32-544"}}, {"S-1-5-32-551", "S-1-5-32-544", user}},
        {"user in the policy", {.holders = {user, "S-1-5-32-544"}}, {user, "S-1-5-32-544"}},
        {"doubles", {.holders = {"S-1-5-32-544", user, "S-1-5-32-544", user}}, {"S-1-5-32-544", user}},
        {"no privilege", {.holders = {"S-1-5-32-544"}, .holdsPrivilege = false}, {"S-1-5-32-544"}},
        {"no token", {.holders = {"S-1-5-32-544"}, .hasToken = false}, {"S-1-5-32-544"}},
        {"silent token", {.holders = {"S-1-5-32-544"}, .tellsPrivileges = false}, {"S-1-5-32-544"}},
        {"not enabled",
         {.holders = {"S-1-5-32-544"}, .isAdjusted = FALSE},
         {"S-1-5-32-544", user, "Permission denied."}},
        {"no policy",
         {.openStatus = kDenied},
         {"nothing", "Error: cannot open local security policy", "Permission denied."}},
        {"nobody",
         {.enumerationStatus = kNoMoreEntries},
         {"nothing", "Error: cannot enumerate users", "There are no further items."}},
    };
    for (const auto& each : cases) {
        faked = each.system;
        EXPECT_EQ(Offered(), each.offered) << each.what;
        EXPECT_EQ(faked.policyAccess, 0x801U);
        const bool reachesToken = each.system.hasToken && each.offered.front() != "nothing";
        EXPECT_EQ(faked.adjustedAttributes, reachesToken ? SE_PRIVILEGE_ENABLED : 0U) << each.what;
    }
}

}  // namespace
}  // namespace permora
