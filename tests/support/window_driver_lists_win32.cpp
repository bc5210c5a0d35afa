// WindowDriver's list views and trees on the Win32 back end.
#include <algorithm>

#include "framework/styles.h"
#include "framework/win32/list_view.h"
#include "framework/win32/tree_view.h"
#include "tests/support/window_driver_win32.h"

namespace permora::test {
namespace {

CListCtrl* ListOf(HWND window, unsigned int id) {
    HWND control = ControlOf(window, id);
    auto* native = dynamic_cast<win32::ListViewWindow*>(win32::MessageTarget::Of(control));
    EXPECT_NE(native, nullptr) << "no list: " << id;
    if (native == nullptr) return nullptr;
    native->ShowChanges();
    return dynamic_cast<CListCtrl*>(&native->Window());
}

bool HasRow(const CListCtrl* list, int row) {
    if (list != nullptr && list->Rows().Has(row)) return true;
    ADD_FAILURE() << "no row " << row;
    return false;
}

int HitAt(HWND control, POINT place, UINT& part) {
    LVHITTESTINFO hit{};
    hit.pt = place;
    const auto row = static_cast<int>(SendMessageW(control, LVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
    part = hit.flags;
    return row;
}

// Where the row's text, or its check box, can be clicked; beside all rows for kBesideRows.
POINT PlaceOf(HWND control, int row, UINT wanted) {
    RECT area{};
    GetClientRect(control, &area);
    UINT part = 0;
    if (row == WindowDriver::kBesideRows) {
        const POINT place{area.right - 3, area.bottom - 3};
        EXPECT_EQ(HitAt(control, place, part), -1) << "the rows fill the list";
        return place;
    }
    SendMessageW(control, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
    area.left = wanted == LVHT_ONITEMLABEL ? LVIR_LABEL : LVIR_BOUNDS;
    SendMessageW(control, LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&area));
    POINT place{area.left, (area.top + area.bottom) / 2};
    for (; place.x < area.right; ++place.x)
        if (HitAt(control, place, part) == row && (part & LVHT_ONITEM) == wanted)
            return {place.x + 2, place.y};
    ADD_FAILURE() << "row " << row << " has no such part";
    return place;
}

void ClickOnRow(HWND window, unsigned int id, int row, UINT part, MouseButton button = MouseButton::kLeft,
                WPARAM keys = 0, Clicks clicks = Clicks::kOne) {
    const CListCtrl* list = ListOf(window, id);
    if (list == nullptr || (row != WindowDriver::kBesideRows && !HasRow(list, row))) return;
    HWND control = list->GetSafeHwnd();
    ClickWindow(control, PlaceOf(control, row, part), button, keys, clicks);
}

void ClickOnItem(HWND window, unsigned int id, TreeItem item, MouseButton button) {
    HWND control = ControlOf(window, id);
    const auto* tree = dynamic_cast<win32::TreeViewWindow*>(win32::MessageTarget::Of(control));
    const auto place = tree != nullptr ? tree->RectOf(tree->HandleOf(item), TRUE) : std::nullopt;
    ASSERT_TRUE(place) << "item " << item << " is not in view";
    ClickWindow(control, {(place->left + place->right) / 2, (place->top + place->bottom) / 2}, button);
}

}  // namespace

std::vector<std::string> WindowDriver::Rows(unsigned int id) const {
    std::vector<std::string> rows;
    const CListCtrl* list = ListOf(window, id);
    for (int row = 0; list != nullptr && row < list->GetItemCount(); ++row) {
        std::string text = list->GetItemText(row, 0);
        for (int column = 1; column < static_cast<int>(list->Columns().size()); ++column)
            text += " | " + list->GetItemText(row, column);
        rows.push_back(text);
    }
    return rows;
}

// The control's own, which must be the rows'.
std::vector<int> WindowDriver::SelectedRows(unsigned int id) const {
    std::vector<int> selected;
    const CListCtrl* list = ListOf(window, id);
    if (list == nullptr) return selected;
    const auto next = [&](int row) {
        return static_cast<int>(
            SendMessageW(list->GetSafeHwnd(), LVM_GETNEXTITEM, static_cast<WPARAM>(row), LVNI_SELECTED));
    };
    for (int row = next(-1); row >= 0; row = next(row)) {
        selected.push_back(row);
        EXPECT_TRUE(list->IsSelected(row)) << row;
    }
    EXPECT_EQ(list->GetSelectedCount(), static_cast<int>(selected.size()));
    return selected;
}

bool WindowDriver::IsRowChecked(unsigned int id, int row) const {
    const CListCtrl* list = ListOf(window, id);
    if (!HasRow(list, row)) return false;
    const auto state = static_cast<UINT>(
        SendMessageW(list->GetSafeHwnd(), LVM_GETITEMSTATE, static_cast<WPARAM>(row), LVIS_STATEIMAGEMASK));
    return state == INDEXTOSTATEIMAGEMASK(2U);
}

void WindowDriver::SelectRow(unsigned int id, int row) {
    ClickOnRow(window, id, row, LVHT_ONITEMLABEL);
}

void WindowDriver::SelectRows(unsigned int id, const std::vector<int>& rows) {
    WPARAM keys = 0;
    for (const int row : rows) {
        ClickOnRow(window, id, row, LVHT_ONITEMLABEL, MouseButton::kLeft, keys);
        keys = MK_CONTROL;
    }
}

void WindowDriver::DoubleClickRow(unsigned int id, int row) {
    ClickOnRow(window, id, row, LVHT_ONITEMLABEL, MouseButton::kLeft, 0, Clicks::kTwo);
}

void WindowDriver::RightClickRow(unsigned int id, int row) {
    ClickOnRow(window, id, row, LVHT_ONITEMLABEL, MouseButton::kRight);
}

void WindowDriver::ToggleRowCheck(unsigned int id, int row) {
    ClickOnRow(window, id, row, LVHT_ONITEMSTATEICON);
}

void WindowDriver::ClickHeader(unsigned int id, int column) {
    const CListCtrl* list = ListOf(window, id);
    if (list == nullptr) return;
    HWND header = reinterpret_cast<HWND>(SendMessageW(list->GetSafeHwnd(), LVM_GETHEADER, 0, 0));
    RECT place{};
    ASSERT_NE(
        SendMessageW(header, HDM_GETITEMRECT, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&place)),
        0)
        << "no header " << column;
    ClickWindow(header, {(place.left + place.right) / 2, (place.top + place.bottom) / 2});
}

// ---- Trees ----

void WindowDriver::ClickItem(unsigned int id, int item) {
    ClickOnItem(window, id, item, MouseButton::kLeft);
}

void WindowDriver::RightClickItem(unsigned int id, int item) {
    ClickOnItem(window, id, item, MouseButton::kRight);
}

}  // namespace permora::test
