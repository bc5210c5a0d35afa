#include "editor/permission_boxes.h"

namespace permora {
namespace {

constexpr std::size_t kFullControlRow = 0;

RightColumn Opposite(RightColumn column) {
    return column == RightColumn::kAllow ? RightColumn::kDeny : RightColumn::kAllow;
}

void SetUnlessLocked(PermissionBox& box, bool isChecked) {
    if (!box.isLocked) box.isChecked = isChecked;
}

}  // namespace

void PermissionBoxes::SetMask(RightColumn column, DWORD mask) {
    Column& boxes = BoxesOf(column);
    boxes[kFullControlRow].isChecked = (mask & RIGHTS_DISPLAY_MASK) == FULL_CONTROL_RIGHTS;
    for (std::size_t row = kFullControlRow + 1; row < kRows; ++row)
        boxes[row].isChecked = (mask & kAccessRights[row].bits) != 0;
}

DWORD PermissionBoxes::MaskOf(RightColumn column) const {
    DWORD mask = 0;
    for (std::size_t row = kFullControlRow + 1; row < kRows; ++row)
        if (At(column, row).isChecked) mask |= kAccessRights[row].bits;
    return mask;
}

void PermissionBoxes::LockChecked() {
    for (Column& column : columns)
        for (PermissionBox& box : column)
            box.isLocked = box.isChecked;
}

void PermissionBoxes::LockAll() {
    for (Column& column : columns)
        for (PermissionBox& box : column)
            box.isLocked = true;
}

void PermissionBoxes::Click(RightColumn column, std::size_t row, bool isNowChecked) {
    Column& own = BoxesOf(column);
    Column& other = BoxesOf(Opposite(column));
    own[row].isChecked = isNowChecked;
    if (row == kFullControlRow) {
        if (!isNowChecked) return;
        for (PermissionBox& box : own)
            SetUnlessLocked(box, true);
        for (PermissionBox& box : other)
            SetUnlessLocked(box, false);
        return;
    }
    if (isNowChecked)
        SetUnlessLocked(other[row], false);
    else
        own[kFullControlRow].isChecked = false;  // also when it is locked: it no longer holds
}

void PermissionBoxes::Take(RightColumn column, DWORD readyMade) {
    Column& own = BoxesOf(column);
    Column& other = BoxesOf(Opposite(column));
    for (std::size_t row = kFullControlRow + 1; row < kRows; ++row) {
        SetUnlessLocked(own[row], (readyMade & kAccessRights[row].bits) != 0);
        if (own[row].isChecked) SetUnlessLocked(other[row], false);
    }
    for (const RightColumn each : kRightColumns)
        SetUnlessLocked(BoxesOf(each)[kFullControlRow], MaskOf(each) == FULL_CONTROL_RIGHTS);
}

void PermissionBoxes::ClearAll() {
    for (Column& column : columns)
        for (PermissionBox& box : column)
            SetUnlessLocked(box, false);
}

}  // namespace permora
