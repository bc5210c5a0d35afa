#include "platform/api/effective_rights.h"

#include <gtest/gtest.h>

#include "platform/api/errors.h"
#include "platform/resources.h"
#include "tests/support/access_lists.h"

namespace permora {
namespace {

// The rights that the list leaves to the account, both as text.
DWORD RightsOf(const char* sidText, const std::string& sddl) {
    PSID sid = nullptr;
    EXPECT_TRUE(ConvertStringSidToSidA(sidText, &sid));
    const UniqueLocal<void> account(sid);
    const UniqueLocal<void> descriptor = test::DescriptorOf(sddl);
    EXPECT_TRUE(descriptor);
    BOOL present = FALSE;
    PACL dacl = nullptr;
    EXPECT_TRUE(GetSecurityDescriptorDacl(descriptor.get(), &present, &dacl, &present));
    TRUSTEE_A trustee{};
    BuildTrusteeWithSidA(&trustee, sid);
    DWORD rights = 0;
    EXPECT_EQ(GetEffectiveRightsFromAclA(dacl, &trustee, &rights), ERROR_SUCCESS);
    return rights;
}

TEST(EffectiveRights, TheFirstEntryThatSpeaksOfARightDecides) {
    constexpr const char* kSomebody = "S-1-5-21-7-8-9-1001";
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
        {kSomebody, "D:(D;;GR;;;S-1-5-21-7-8-9-1001)(A;;GA;;;WD)", FILE_ALL_ACCESS & ~FILE_GENERIC_READ},
        {kSomebody, "D:(A;;0x1;;;AU)(A;;0x2;;;BU)", 0},
        {kGuests, "D:(A;;0x1;;;BG)(A;;0x2;;;WD)(A;;0x4;;;AU)", 0x3},
        {"S-1-5-7", "D:(A;;0x1;;;AN)(A;;0x2;;;WD)", 0x1},
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

}  // namespace
}  // namespace permora
