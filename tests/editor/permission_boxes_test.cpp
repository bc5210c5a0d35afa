#include "editor/permission_boxes.h"

#include <gtest/gtest.h>

#include "security/usable_combinations.h"

namespace permora {
namespace {

constexpr std::size_t kFullControl = 0;
constexpr std::size_t kReadAttributes = 3;
constexpr std::size_t kDelete = 10;
constexpr std::size_t kReadPermissions = 11;

std::size_t CheckedCount(const PermissionBoxes& boxes, RightColumn column) {
    std::size_t count = 0;
    for (std::size_t row = 0; row < PermissionBoxes::kRows; ++row)
        if (boxes.At(column, row).isChecked) ++count;
    return count;
}

TEST(PermissionBoxes, MasksAndBoxesSayTheSame) {
    struct Case {
        DWORD mask;
        std::size_t checked;
        DWORD shown;  // what is left when nothing is clicked
    };
    const Case cases[] = {
        {0, 0, 0},
        {FULL_CONTROL_RIGHTS, 14, FULL_CONTROL_RIGHTS},
        {FULL_CONTROL_RIGHTS | GENERIC_READ, 14, FULL_CONTROL_RIGHTS},
        {FULL_CONTROL_RIGHTS | SYNCHRONIZE, 13, FULL_CONTROL_RIGHTS},
        {FULL_CONTROL_RIGHTS & ~DWORD{DELETE}, 12, FULL_CONTROL_RIGHTS & ~DWORD{DELETE}},
        {GENERIC_ALL, 0, 0},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.mask);
        PermissionBoxes boxes;
        boxes.SetMask(RightColumn::kDeny, each.mask);
        EXPECT_EQ(CheckedCount(boxes, RightColumn::kDeny), each.checked);
        EXPECT_EQ(boxes.MaskOf(RightColumn::kDeny), each.shown);
        EXPECT_EQ(CheckedCount(boxes, RightColumn::kAllow), 0U);
    }
}

TEST(PermissionBoxes, FullControlTakesItsColumnAndClearsTheOther) {
    for (const RightColumn column : kRightColumns) {
        const RightColumn other = column == RightColumn::kAllow ? RightColumn::kDeny : RightColumn::kAllow;
        PermissionBoxes boxes;
        boxes.SetMask(other, FILE_READ_ATTRIBUTES);
        boxes.Click(column, kFullControl, true);
        EXPECT_EQ(CheckedCount(boxes, column), PermissionBoxes::kRows);
        EXPECT_EQ(CheckedCount(boxes, other), 0U);

        boxes.Click(column, kFullControl, false);
        EXPECT_EQ(boxes.MaskOf(column), FULL_CONTROL_RIGHTS) << "only the box itself is cleared";
    }
}

TEST(PermissionBoxes, ASingleRightIsAllowedOrDeniedAndEndsFullControl) {
    PermissionBoxes boxes;
    boxes.SetMask(RightColumn::kAllow, FULL_CONTROL_RIGHTS);
    boxes.Click(RightColumn::kAllow, kDelete, false);
    EXPECT_FALSE(boxes.At(RightColumn::kAllow, kFullControl).isChecked);
    EXPECT_EQ(boxes.MaskOf(RightColumn::kAllow), 0xE01FFU);

    boxes.Click(RightColumn::kDeny, kReadAttributes, true);
    EXPECT_FALSE(boxes.At(RightColumn::kAllow, kReadAttributes).isChecked);

    // All thirteen by hand are not "Full control" before the dialog is opened again.
    boxes.Click(RightColumn::kDeny, kReadAttributes, false);
    boxes.Click(RightColumn::kAllow, kReadAttributes, true);
    boxes.Click(RightColumn::kAllow, kDelete, true);
    EXPECT_FALSE(boxes.At(RightColumn::kAllow, kFullControl).isChecked);
    EXPECT_EQ(boxes.MaskOf(RightColumn::kAllow), FULL_CONTROL_RIGHTS);
}

TEST(PermissionBoxes, AReadyMadeSetReplacesItsColumnAndLeavesNoneOfItInTheOther) {
    PermissionBoxes boxes;
    boxes.SetMask(RightColumn::kAllow, READ_CONTROL);
    boxes.LockChecked();
    boxes.Take(RightColumn::kDeny, kFullControlAsOne);
    EXPECT_EQ(CheckedCount(boxes, RightColumn::kDeny), PermissionBoxes::kRows);
    boxes.Take(RightColumn::kAllow, kModifyRights);
    EXPECT_EQ(boxes.MaskOf(RightColumn::kAllow), WithoutSynchronize(kModifyRights));
    EXPECT_EQ(boxes.MaskOf(RightColumn::kDeny), DWORD{FILE_DELETE_CHILD | WRITE_DAC | WRITE_OWNER});
    EXPECT_FALSE(boxes.At(RightColumn::kDeny, kFullControl).isChecked);
    boxes.Take(RightColumn::kAllow, 0);
    EXPECT_EQ(boxes.MaskOf(RightColumn::kAllow), DWORD{READ_CONTROL}) << "inherited";
}

TEST(PermissionBoxes, WhatAnInheritedEntryHoldsStays) {
    PermissionBoxes boxes;
    boxes.SetMask(RightColumn::kAllow, READ_CONTROL);
    boxes.LockChecked();
    boxes.Click(RightColumn::kDeny, kReadPermissions, true);
    boxes.Click(RightColumn::kDeny, kDelete, true);
    EXPECT_EQ(boxes.MaskOf(RightColumn::kAllow), DWORD{READ_CONTROL});
    EXPECT_EQ(boxes.MaskOf(RightColumn::kDeny), DWORD{READ_CONTROL | DELETE});

    boxes.Click(RightColumn::kDeny, kFullControl, true);
    EXPECT_EQ(boxes.MaskOf(RightColumn::kAllow), DWORD{READ_CONTROL});
    boxes.ClearAll();
    EXPECT_EQ(boxes.MaskOf(RightColumn::kAllow), DWORD{READ_CONTROL});
    EXPECT_EQ(boxes.MaskOf(RightColumn::kDeny), 0U);
}

}  // namespace
}  // namespace permora
