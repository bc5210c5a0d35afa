#include "platform/api/effective_rights.h"

#include <gtest/gtest.h>

#include "platform/api/errors.h"
#include "platform/resources.h"
#include "tests/support/access_lists.h"

namespace permora {
namespace {

// The service's answer for the account and the list, both as text.
DWORD Ask(const char* sidText, const std::string& sddl, DWORD& rights) {
    PSID sid = nullptr;
    EXPECT_TRUE(ConvertStringSidToSidA(sidText, &sid));
    const UniqueLocal<void> account(sid);
    const UniqueLocal<void> descriptor = test::DescriptorOf(sddl);
    EXPECT_TRUE(descriptor);
    TRUSTEE_A trustee{};
    BuildTrusteeWithSidA(&trustee, sid);
    return GetEffectiveRightsFromAclA(test::ListOf(descriptor), &trustee, &rights);
}

DWORD RightsOf(const char* sidText, const std::string& sddl) {
    DWORD rights = 0;
    EXPECT_EQ(Ask(sidText, sddl, rights), ERROR_SUCCESS) << sidText;
    return rights;
}

TEST(EffectiveRights, TheFirstEntryThatSpeaksOfARightDecides) {
    constexpr const char* kSomebody = "S-1-5-32-551";
    constexpr const char* kGuests = "S-1-5-32-546";
    const struct {
        const char* account;
        const char* sddl;
        DWORD rights;
    } cases[] = {
        {kSomebody, "D:", 0},
        {kSomebody, "D:(A;;FA;;;BA)", 0},
        {kSomebody, "D:(D;;0x3;;;WD)(A;;0x7;;;WD)", 0x4},
        {kSomebody, "D:(A;;0x1;;;WD)(D;;0x3;;;WD)(A;;0x7;;;WD)", 0x5},
        {kSomebody, "D:(D;OICIIO;FA;;;WD)(A;OICI;0x7;;;WD)", 0x7},
        {kSomebody, "D:(A;OICIIO;FA;;;WD)", 0},
        {kSomebody, "D:(D;;GR;;;BO)(A;;GA;;;WD)(A;;GW;;;WD)(A;;0x3;;;WD)", 0x3},
        {kSomebody, "D:(A;;0x1;;;AU)(A;;0x2;;;BU)", 0},
        {kGuests, "D:(A;;0x1;;;BG)(A;;0x2;;;WD)(A;;0x4;;;AU)", 0x3},
        {"S-1-5-7", "D:(A;;0x1;;;AN)(A;;0x2;;;WD)", 0x1},
        {"S-1-5-18", "D:(A;;0x1;;;BA)(A;;0x2;;;AU)(A;;0x4;;;BU)(A;;0x8;;;LS)", 0x7},
        {"S-1-5-19", "D:(A;;0x1;;;BA)(A;;0x2;;;AU)(A;;0x4;;;BU)(A;;0x8;;;WD)", 0xE},
        // Denials of other types are not denials of every caller.
        {kSomebody, "D:(OD;;0x1;bf967aba-0de6-11d0-a285-00aa003049e2;;WD)(A;;0x1;;;WD)", 0x1},
        // The host's first user, whoever runs the test.
        {"S-1-22-1-0",
         "D:(A;;0x1;;;AU)(A;;0x2;;;BU)(A;;0x4;;;BA)(A;;0x8;;;S-1-22-2-0)(D;;0x10;;;S-1-22-1-0)"
         "(A;;0x30;;;WD)",
         0x2F},
    };
    for (const auto& each : cases)
        EXPECT_EQ(RightsOf(each.account, each.sddl), each.rights) << each.account << " " << each.sddl;
}

TEST(EffectiveRights, WithoutTheGroupsThereIsNoAnswer) {
    for (const char* unknown : {"S-1-5-21-7-8-9-1001", "S-1-22-1-3999999999", "S-1-22-2-3999999999",
                                "S-1-3-0", "S-1-5-32", "S-1-16-8192", "S-1-5-80-1-2-3-4-5"}) {
        DWORD rights = 42;
        EXPECT_EQ(Ask(unknown, "D:(A;;FA;;;WD)", rights), DWORD{ERROR_NONE_MAPPED}) << unknown;
        EXPECT_EQ(rights, 42U) << unknown;
    }
}

}  // namespace
}  // namespace permora
