// The 28 check boxes of the permission entry dialog, without windows: their states, and what a click on one
// changes in the others.
#pragma once

#include <array>
#include <cstddef>

#include "security/access_rights.h"

namespace permora {

enum class RightColumn : std::size_t { kAllow, kDeny };
inline constexpr std::array<RightColumn, 2> kRightColumns = {RightColumn::kAllow, RightColumn::kDeny};

struct PermissionBox {
    bool isChecked = false;
    bool isLocked = false;  // shown disabled; neither the user nor another box changes it
};

// Rows are places in kAccessRights; row 0 is "Full control".
class PermissionBoxes {
  public:
    static constexpr std::size_t kRows = kAccessRights.size();

    const PermissionBox& At(RightColumn column, std::size_t row) const { return BoxesOf(column)[row]; }

    // Checks the boxes of the rights in `mask`, and clears the others of the column.
    void SetMask(RightColumn column, DWORD mask);
    // The checked single rights of a column; the box "Full control" adds none.
    DWORD MaskOf(RightColumn column) const;

    // For an inherited entry, whose rights cannot be removed.
    void LockChecked();
    void LockAll();
    // The user has checked or cleared a box.
    void Click(RightColumn column, std::size_t row, bool isNowChecked);
    void ClearAll();  // but the locked ones
    // The user has chosen a ready-made set: the column then holds its rights and no others, and none of them
    // is left in the other column. Locked boxes stay as they are.
    void Take(RightColumn column, DWORD readyMade);

  private:
    using Column = std::array<PermissionBox, kRows>;

    Column& BoxesOf(RightColumn column) { return columns[static_cast<std::size_t>(column)]; }
    const Column& BoxesOf(RightColumn column) const { return columns[static_cast<std::size_t>(column)]; }

    std::array<Column, 2> columns;
};

}  // namespace permora
