#include "wizard/account_rights.h"

#include <gtest/gtest.h>

#include <string>

#include "security/dacl_builder.h"
#include "tests/security/entries.h"

namespace permora {
namespace {

using test::AccountOf;
using test::Canonical;
using test::TextOf;

AccountRights RightsOf(const std::string& entries) {
    return AccountRights(test::ListOf(entries));
}

// A digit for each box, 1 where it is checked.
std::string BoxesOf(const AccountRights& rights) {
    std::string boxes;
    for (std::size_t right = 0; right < AccountRights::kRights; ++right)
        boxes += rights.IsChecked(right) ? '1' : '0';
    return boxes;
}

struct Masks {
    DWORD explicitAllow, explicitDeny, inheritedAllow, inheritedDeny;
    friend bool operator==(const Masks& one, const Masks& other) = default;
    friend void PrintTo(const Masks& masks, std::ostream* stream) {
        *stream << std::hex << masks.explicitAllow << ' ' << masks.explicitDeny << ' ' << masks.inheritedAllow
                << ' ' << masks.inheritedDeny << std::dec;
    }
};

Masks MasksOf(const AccountRights& rights, std::size_t index) {
    const WizardAccountRow& row = rights.Accounts()[index];
    return {row.explicitAllow, row.explicitDeny, row.inheritedAllow, row.inheritedDeny};
}

// One account with these masks, selected.
AccountRights OneAccount(const Masks& masks) {
    const auto entry = [](const char* typeAndFlags, DWORD mask) {
        return '(' + std::string(typeAndFlags) + ';' + std::to_string(mask) + ";;;BA)";
    };
    AccountRights rights =
        RightsOf(entry("D;OICI", masks.explicitDeny) + entry("A;OICI", masks.explicitAllow) +
                 entry("D;OICIID", masks.inheritedDeny) + entry("A;OICIID", masks.inheritedAllow));
    rights.Select(0);
    return rights;
}

TEST(AccountRights, AccountsAreGatheredFromTheirEntries) {
    AccountRights rights = RightsOf(
        "(A;;0x100001;;;BA)(OA;;0x1;;;PU)(AU;;0x1;;;PU)(D;OICI;0x2;;;BU)(A;OIIO;0x80;;;BA)(D;OICIID;0x4;;;BA)"
        "(A;OICIID;0x100020;;;BA)");
    ASSERT_EQ(rights.Accounts().size(), 2U);
    EXPECT_EQ(MasksOf(rights, 0), (Masks{0x100081, 0, 0x100020, 4}));
    EXPECT_EQ(MasksOf(rights, 1), (Masks{0, 2, 0, 0}));
    EXPECT_TRUE(rights.Accounts()[0].Inherits());
    EXPECT_EQ(rights.Add(AccountOf("BU")), 1U);
    EXPECT_EQ(rights.Add(AccountOf("BG")), 2U);
    rights.Select(2);
    rights.ApplyRightChange(2, true);
    // One deny and one allow entry for each account; nothing inherited. What allows anything allows to
    // synchronize.
    EXPECT_EQ(TextOf(rights.Entries(ItemKind::kFolder)),
              Canonical("(D;OICI;0x2;;;BU)(A;OICI;0x100081;;;BA)(A;OICI;0x100001;;;BG)"));
    rights.Remove(1);
    EXPECT_EQ(TextOf(rights.Entries(ItemKind::kFile)), "(A;;0x100081;;;BA)(A;;0x100001;;;BG)");
    EXPECT_EQ(BoxesOf(rights), "00000000000000");
}

TEST(AccountRights, LaterMasksOverrideEarlierOnes) {
    const struct {
        Masks masks;
        const char* boxes;
    } cases[] = {
        {{0, 0, 0, 0}, "00000000000000"},          {{0x1F03FF, 0, 0, 0}, "11111111111111"},
        {{0x1F01FF, 0, 0, 0}, "11111111111111"},  // row 0 shares bits and no box is clear
        {{0x100000, 0, 0, 0}, "00000000000000"},  // SYNCHRONIZE has no box of its own
        {{0x10000000, 0, 0, 0}, "00000000000000"}, {{0, 0, 0x1F03FF, 1}, "01011111111111"},
        {{1, 0, 0, 0x1F03FF}, "00100000000000"},   {{0x1F03FF, 0x10000, 0x80, 0x1F03FF}, "01111111110111"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(BoxesOf(OneAccount(each.masks)), each.boxes) << each.boxes;
}

TEST(AccountRights, AChangedBoxChangesTheAccountsOwnRights) {
    constexpr DWORD kFull = FULL_CONTROL_RIGHTS;
    const struct {
        const char* what;
        Masks before;
        std::size_t right;
        bool isChecked;
        Masks after;
        const char* boxes;
    } cases[] = {
        {"checked: allowed", {0, 0, 0, 0}, 2, true, {1, 0, 0, 0}, "00100000000000"},
        {"checked: the own denial goes", {0, 3, 0, 0}, 2, true, {1, 2, 0, 0}, "00100000000000"},
        {"checked: no longer denied all, so not shut out",
         {0, 0x1F01FF, 0, 0},
         2,
         true,
         {1, 0xF01FE, 0, 0},
         "00100000000000"},
        {"checked: what was inherited is back", {0, 1, 1, 0}, 2, true, {0, 0, 1, 0}, "00100000000000"},
        {"checked: against an inherited denial", {0, 0, 1, 1}, 2, true, {1, 0, 1, 1}, "00100000000000"},
        {"cleared: the own right goes", {3, 0, 0, 0}, 2, false, {2, 0, 0, 0}, "00000100000000"},
        {"cleared: what is inherited is denied", {0, 0, 3, 0}, 2, false, {0, 1, 3, 0}, "00000100000000"},
        {"cleared: denied from above already", {1, 0, 1, 1}, 2, false, {0, 0, 1, 1}, "00000000000000"},
        {"full control checked", {1, 0x10000, 0, 0}, 0, true, {kFull, 0, 0, 0}, "11111111111111"},
        {"full control checked, inherited in part", {4, 2, 1, 0}, 0, true, {0, 0, 1, 0}, "11111111111111"},
        {"full control cleared", {kFull, 0, 0, 0}, 0, false, {kFull, 0, 0, 0}, "01111111111111"},
        {"one cleared of all", {kFull, 0, 0, 0}, 13, false, {0x701FF, 0, 0, 0}, "01111111111110"},
        {"nothing is left but what stands for nothing",
         {0x100201, 0x100002, 0, 0},
         2,
         false,
         {0, 0x100002, 0, 0},
         "00000000000000"},
        {"the same of a denial", {0, 0x100002, 0, 0}, 5, true, {2, 0, 0, 0}, "00000100000000"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        AccountRights rights = OneAccount(each.before);
        rights.ApplyRightChange(each.right, each.isChecked);
        EXPECT_EQ(MasksOf(rights, 0), each.after);
        EXPECT_EQ(BoxesOf(rights), each.boxes);
    }
    AccountRights rights = OneAccount({1, 0, 0, 0});
    rights.Select(std::nullopt);
    rights.ApplyRightChange(3, true);
    EXPECT_EQ(MasksOf(rights, 0), (Masks{1, 0, 0, 0})) << "no account is selected";
}

TEST(AccountRights, CombinationsChangeOneBoxAfterTheOther) {
    const Masks nothing{0, 0, 0, 0};
    const Masks mixed{0x100002, 0x40000, 0x30081, 0x80};
    const struct {
        const char* combination;
        const char* boxes;
        Masks ofNothing;
        Masks ofMixed;
    } cases[] = {
        {"Allow all",
         "11111111111111",
         {FULL_CONTROL_RIGHTS, 0, 0, 0},
         {FULL_CONTROL_RIGHTS, 0, 0x30081, 0x80}},
        {"Deny all", "00000000000000", nothing, {0, 0x70001, 0x30081, 0x80}},
        {"Modify", "01111111101100", {0x301BF, 0, 0, 0}, {0x1001BE, 0x40000, 0x30081, 0x80}},
        {"Read & execute", "01111000000100", {0x200A9, 0, 0, 0}, {0x1000A8, 0x50000, 0x30081, 0x80}},
        {"List folder", "01111000000100", {0x200A9, 0, 0, 0}, {0x1000A8, 0x50000, 0x30081, 0x80}},
        {"Read", "00111000000100", {0x20089, 0, 0, 0}, {0x100088, 0x50000, 0x30081, 0x80}},
        {"Write", "00000111100000", {0x116, 0, 0, 0}, {0x100116, 0x70001, 0x30081, 0x80}},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const auto& each = cases[i];
        SCOPED_TRACE(each.combination);
        EXPECT_STREQ(kUsableCombinations[i].text, each.combination);
        for (const auto& [before, after] : {std::pair{nothing, each.ofNothing}, {mixed, each.ofMixed}}) {
            AccountRights rights = OneAccount(before);
            rights.ApplyCombination(kUsableCombinations[i].mask);
            EXPECT_EQ(BoxesOf(rights), each.boxes);
            EXPECT_EQ(MasksOf(rights, 0), after);
        }
    }
}

TEST(AccountRights, WhatIsWrittenCanBeUsed) {
    const struct {
        Masks masks;
        const char* written;
    } cases[] = {
        {{0x1F03FF, 0x203, 0, 0}, "(D;;0x3;;;BA)(A;;FA;;;BA)"},
        {{0x10000001, FULL_CONTROL_RIGHTS, 0, 0}, "(D;;FA;;;BA)(A;;0x100001;;;BA)"},
        {{0x10000000, 0, 0, 0}, ""},  // it meant nothing, and would mean everything in a new entry
        {{0x200, 0x100002, 0, 0}, "(D;;0x100002;;;BA)"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(TextOf(OneAccount(each.masks).Entries(ItemKind::kFile)), Canonical(each.written));
}

}  // namespace
}  // namespace permora
