// Accounts that a user can choose from: each must be exactly the one that its name says.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/api/account_enumeration.h"
#include "platform/api/errors.h"
#include "platform/api/memory.h"
#include "platform/api/security.h"

namespace permora {
namespace {

using SidBytes = std::array<BYTE, SECURITY_MAX_SID_SIZE>;

std::string SidText(PSID sid) {
    char* text = nullptr;
    if (ConvertSidToStringSidA(sid, &text) == FALSE) return "error " + std::to_string(GetLastError());
    std::string result = text;
    LocalFree(text);
    return result;
}

std::string WellKnownSidText(int type, PSID domain) {
    SidBytes sid{};
    DWORD size = SECURITY_MAX_SID_SIZE;
    if (CreateWellKnownSid(static_cast<WELL_KNOWN_SID_TYPE>(type), domain, sid.data(), &size) == FALSE)
        return "error " + std::to_string(GetLastError());
    return SidText(sid.data());
}

TEST(WellKnownSidTypes, MeanTheSidsOfTheirNumbers) {
    PSID domain = nullptr;
    ASSERT_TRUE(ConvertStringSidToSidA("S-1-5-21-1-2-3", &domain));
    const std::pair<int, const char*> cases[] = {
        {1, "S-1-1-0"},       {3, "S-1-3-0"},       {7, "S-1-5"},         {11, "S-1-5-4"},
        {12, "S-1-5-6"},      {17, "S-1-5-11"},     {21, "S-1-5-5"},      {22, "S-1-5-18"},
        {24, "S-1-5-20"},     {26, "S-1-5-32-544"}, {34, "S-1-5-32-552"}, {35, "S-1-5-32-554"},
        {37, "S-1-5-32-556"}, {38, "error 87"},     {50, "error 87"},     {51, "error 87"},
        {-1, "error 87"},
    };
    for (const auto& [type, text] : cases)
        EXPECT_EQ(WellKnownSidText(type, nullptr), text) << type;
    int type = 38;
    for (const int relativeId : {500, 501, 502, 512, 513, 514, 515, 516, 517, 518, 519, 520, 553})
        EXPECT_EQ(WellKnownSidText(type++, domain), "S-1-5-21-1-2-3-" + std::to_string(relativeId));
    LocalFree(domain);

    SidBytes sid{};
    DWORD size = 15;
    EXPECT_FALSE(CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, sid.data(), &size));
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(size, 16U);
}

// All names that `enumerate` hands out in calls for at most `bytes` each.
template <class Info, class Resume, class Enumerate>
std::vector<std::u16string> Names(Enumerate enumerate, DWORD bytes) {
    std::vector<std::u16string> names;
    Resume resume = 0;
    NET_API_STATUS status = NERR_Success;
    do {
        BYTE* buffer = nullptr;
        DWORD count = 0;
        DWORD total = 0;
        status = enumerate(bytes, &buffer, &count, &total, &resume);
        EXPECT_TRUE(status == NERR_Success || status == ERROR_MORE_DATA) << status;
        EXPECT_GE(total, count);
        if (buffer == nullptr) break;
        for (DWORD i = 0; i < count; ++i)
            names.emplace_back(*reinterpret_cast<LPWSTR*>(buffer + i * sizeof(Info)));
        NetApiBufferFree(buffer);
    } while (status == ERROR_MORE_DATA);
    EXPECT_EQ(resume, Resume{0});
    return names;
}

std::vector<std::u16string> UserNames(DWORD bytes) {
    return Names<USER_INFO_0, DWORD>(
        [](DWORD length, BYTE** buffer, DWORD* count, DWORD* total, DWORD* resume) {
            return NetUserEnum(nullptr, 0, 0, buffer, length, count, total, resume);
        },
        bytes);
}

std::vector<std::u16string> GroupNames(DWORD bytes) {
    return Names<LOCALGROUP_INFO_0, DWORD_PTR>(
        [](DWORD length, BYTE** buffer, DWORD* count, DWORD* total, DWORD_PTR* resume) {
            return NetLocalGroupEnum(nullptr, 0, buffer, length, count, total, resume);
        },
        bytes);
}

TEST(AccountEnumeration, HandsOutEachAccountUnderANameThatMeansIt) {
    std::set<std::string> sids;
    std::size_t count = 0;
    for (const auto& names : {UserNames(MAX_PREFERRED_LENGTH), GroupNames(MAX_PREFERRED_LENGTH)}) {
        for (const std::u16string& wide : names) {
            const std::string name(wide.begin(), wide.end());  // the names of this machine are ASCII
            SidBytes sid{};
            DWORD sidSize = SECURITY_MAX_SID_SIZE;
            char domain[256] = "";
            DWORD domainSize = sizeof domain;
            SID_NAME_USE use = SidTypeInvalid;
            ASSERT_TRUE(
                LookupAccountNameA(nullptr, name.c_str(), sid.data(), &sidSize, domain, &domainSize, &use))
                << name;
            sids.insert(SidText(sid.data()));
            char bare[256] = "";
            DWORD bareSize = sizeof bare;
            domainSize = sizeof domain;
            ASSERT_TRUE(LookupAccountSidA(nullptr, sid.data(), bare, &bareSize, domain, &domainSize, &use));
            EXPECT_EQ(std::string(domain) + '\\' + bare, name);
            ++count;
        }
    }
    EXPECT_EQ(sids.size(), count);
    EXPECT_GT(count, 10U);
    const std::vector<std::u16string> users = UserNames(MAX_PREFERRED_LENGTH);
    EXPECT_TRUE(std::any_of(users.begin(), users.end(),
                            [](const std::u16string& name) { return name.ends_with(u"\\root"); }));
}

TEST(AccountEnumeration, GoesOnWhereTheLastCallEnded) {
    EXPECT_EQ(UserNames(1), UserNames(MAX_PREFERRED_LENGTH));
    EXPECT_EQ(GroupNames(100), GroupNames(MAX_PREFERRED_LENGTH));
}

}  // namespace
}  // namespace permora
