#include "security/access_rights.h"

#include <bit>
#include <set>

#include "gtest/gtest.h"

namespace permora {
namespace {

TEST(AccessRights, TheThirteenRightsAreSingleBitsThatMakeUpFullControlAndNameThemselves) {
    DWORD all = 0;
    std::set<int> boxes;
    for (const AccessRight& right : kAccessRights) {
        boxes.insert({right.allowBox, right.denyBox});
        EXPECT_STREQ(MaskDisplayName(right.bits), right.rowName);
        if (&right != &kAccessRights.front()) {
            EXPECT_TRUE(std::has_single_bit(right.bits)) << right.listName;
            EXPECT_EQ(all & right.bits, 0U) << right.listName;
            all |= right.bits;
        }
    }
    EXPECT_EQ(all, FULL_CONTROL_RIGHTS);
    EXPECT_EQ(boxes.size(), 2 * kAccessRights.size());
    EXPECT_EQ(*boxes.begin(), 1050);
    EXPECT_EQ(*boxes.rbegin(), 1086);
}

TEST(AccessRights, AMaskIsNamedByTheBitsThatAreLookedAt) {
    const struct {
        DWORD mask;
        const char* name;
    } cases[] = {
        {0, "None"},
        {GENERIC_ALL, "None"},
        {0xFC00, "None"},
        {0xF01FF, "Full control"},
        {0xF01FF | GENERIC_READ | 0x8000, "Full control"},
        {0x1F01FF, "Special"},
        {0xF03FF, "Special"},
        {0xE01FF, "Special"},
        {0x3, "Special"},
        {SYNCHRONIZE | FILE_READ_DATA, "Special"},
        {FILE_READ_DATA, "List directory/Read data"},
        {FILE_READ_DATA | GENERIC_WRITE, "List directory/Read data"},
        {WRITE_OWNER, "Change owner"},
        {SYNCHRONIZE, "Synchronize"},
        {0x200, ""},
    };
    for (const auto& c : cases)
        EXPECT_STREQ(MaskDisplayName(c.mask), c.name) << std::hex << c.mask;
}

TEST(AccessRights, FlagsTextAndIndexOfAScopeLeadToEachOther) {
    for (int index = 0; index < 7; ++index)
        EXPECT_EQ(ScopeIndexFromText(ScopeTextFromFlags(ScopeFlagsFromIndex(index))), index);
    const struct {
        BYTE flags;
        const char* text;
    } texts[] = {
        {0x13, "This folder, subfolders and files"},
        {0x0F, "Subfolders and files only"},
        {0x0A, "Subfolders only"},
        {0x09, "Files only"},
        {0x08, ""},
        {0x04, "This folder only"},
        {0xE1, "This folder and files"},
    };
    for (const auto& c : texts)
        EXPECT_STREQ(ScopeTextFromFlags(c.flags), c.text) << int{c.flags};
    for (const int index : {7, -1, -2147483647 - 1, 2147483647})
        EXPECT_EQ(ScopeFlagsFromIndex(index), 0) << index;
    for (const char* text : {"", "files only", "Files only ", "Files"})
        EXPECT_EQ(ScopeIndexFromText(text), 0) << text;
}

}  // namespace
}  // namespace permora
