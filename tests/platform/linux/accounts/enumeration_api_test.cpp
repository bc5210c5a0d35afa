// The accounts that are offered to a user: each name must mean exactly this account.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/api/account_enumeration.h"
#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/base/wide_text.h"
#include "platform/nt/sid.h"
#include "platform/resources.h"

namespace permora::host {
namespace {

std::string WellKnownSidText(int type, const nt::Sid* domain, DWORD size = SECURITY_MAX_SID_SIZE) {
    std::array<BYTE, SECURITY_MAX_SID_SIZE> sid{};
    PSID below = domain != nullptr ? const_cast<std::uint8_t*>(domain->Bytes().data()) : nullptr;
    if (CreateWellKnownSid(static_cast<WELL_KNOWN_SID_TYPE>(type), below, sid.data(), &size) == FALSE)
        return "error " + std::to_string(GetLastError());
    return nt::Sid::FromBytes(sid).value().ToText();
}

TEST(WellKnownSidTypes, MeanTheSidsOfTheirNumbers) {
    const std::pair<int, const char*> cases[] = {
        {1, "S-1-1-0"},       {3, "S-1-3-0"},       {7, "S-1-5"},         {11, "S-1-5-4"},
        {12, "S-1-5-6"},      {17, "S-1-5-11"},     {21, "S-1-5-5"},      {22, "S-1-5-18"},
        {24, "S-1-5-20"},     {26, "S-1-5-32-544"}, {34, "S-1-5-32-552"}, {35, "S-1-5-32-554"},
        {37, "S-1-5-32-556"}, {38, "error 87"},     {50, "error 87"},     {51, "error 87"},
        {-1, "error 87"},
    };
    for (const auto& [type, text] : cases)
        EXPECT_EQ(WellKnownSidText(type, nullptr), text) << type;
    EXPECT_EQ(WellKnownSidText(26, nullptr, 15), "error " + std::to_string(ERROR_INSUFFICIENT_BUFFER));
    const nt::Sid domain(5, {21, 1, 2, 3});
    int type = 38;
    for (const int relativeId : {500, 501, 502, 512, 513, 514, 515, 516, 517, 518, 519, 520, 553})
        EXPECT_EQ(WellKnownSidText(type++, &domain), "S-1-5-21-1-2-3-" + std::to_string(relativeId));
}

TEST(AccountEnumeration, HandsOutEachAccountUnderANameThatMeansIt) {
    std::vector<std::string> names;
    BYTE* block = nullptr;
    DWORD count = 0;
    DWORD total = 0;
    ASSERT_EQ(NetUserEnum(nullptr, 0, 0, &block, MAX_PREFERRED_LENGTH, &count, &total, nullptr),
              NERR_Success);
    const UniqueNetworkBuffer<USER_INFO_0> users(reinterpret_cast<USER_INFO_0*>(block));
    for (DWORD i = 0; i < count; ++i)
        names.push_back(ToAnsi(users.get()[i].usri0_name));
    EXPECT_THAT(names, testing::Contains(testing::EndsWith("\\root")));
    ASSERT_EQ(NetLocalGroupEnum(nullptr, 0, &block, MAX_PREFERRED_LENGTH, &count, &total, nullptr),
              NERR_Success);
    const UniqueNetworkBuffer<LOCALGROUP_INFO_0> groups(reinterpret_cast<LOCALGROUP_INFO_0*>(block));
    for (DWORD i = 0; i < count; ++i)
        names.push_back(ToAnsi(groups.get()[i].lgrpi0_name));

    std::set<std::string> sids;
    for (const std::string& name : names) {
        nt::Sid sid;
        Account account;
        ASSERT_EQ(FindAccountSid(name, sid), ERROR_SUCCESS) << name;
        ASSERT_EQ(FindAccountOfSid(sid, account), ERROR_SUCCESS) << name;
        EXPECT_EQ(account.domain + '\\' + account.name, name);
        sids.insert(sid.ToText());
    }
    EXPECT_EQ(sids.size(), names.size());
    EXPECT_GT(names.size(), 10U);
}

}  // namespace
}  // namespace permora::host
