// What the list view's control asks for, and what the user does in it.
#include <algorithm>
#include <utility>

#include "framework/win32/list_view.h"

namespace permora::win32 {
namespace {

SelectMode ModeOfKeys() {
    const bool isControl = GetKeyState(VK_CONTROL) < 0;
    if (GetKeyState(VK_SHIFT) < 0) return isControl ? SelectMode::kAddRange : SelectMode::kExtend;
    return isControl ? SelectMode::kToggle : SelectMode::kReplace;
}

// Input of the user that may change the selection.
bool MaySelect(const Message& message) {
    if (message.code == WM_MOUSEMOVE) return (message.wide & (MK_LBUTTON | MK_RBUTTON)) != 0;
    return (message.code >= WM_KEYFIRST && message.code <= WM_KEYLAST) ||
           (message.code >= WM_MOUSEFIRST && message.code <= WM_MOUSELAST);
}

}  // namespace

// ---- What the control asks for ----

void ListViewWindow::GiveItem(LVITEMW& item) {
    const ListRows& rows = list.Rows();
    if ((item.mask & LVIF_TEXT) != 0) {
        std::wstring& text = given[nextGiven];
        nextGiven = (nextGiven + 1) % given.size();
        text = Wide(rows.Text(item.iItem, item.iSubItem));
        item.pszText = text.data();
    }
    if ((item.mask & LVIF_IMAGE) != 0) {
        item.iImage = rows.Image(item.iItem);
        // Icons may have come to the list of images since it was shown.
        if (images == nullptr || item.iImage >= ImageList_GetImageCount(images)) {
            const CImageList::Images* known = list.Images();
            if (known != nullptr && item.iImage < static_cast<int>(known->icons.size())) AppearanceChanged();
        }
    }
    if ((item.mask & LVIF_INDENT) != 0) item.iIndent = rows.Indent(item.iItem);
    if ((item.mask & LVIF_STATE) != 0 && list.HasExtendedStyle(ListStyle::kCheckBoxes))
        item.state |= INDEXTOSTATEIMAGEMASK(rows.IsChecked(item.iItem) ? 2U : 1U);
}

LRESULT ListViewWindow::GiveEmptyText(NMLVEMPTYMARKUP& markup) const {
    const std::wstring text = Wide(list.EmptyText());
    if (text.empty()) return FALSE;
    markup.dwFlags = EMF_CENTERED;
    const std::size_t length = std::min(text.size(), std::size(markup.szMarkup) - 1);
    std::copy_n(text.begin(), length, markup.szMarkup);
    markup.szMarkup[length] = L'\0';
    return TRUE;
}

// The user types the beginning of a name.
LRESULT ListViewWindow::FindText(const NMLVFINDITEMW& search) const {
    if ((search.lvfi.flags & (LVFI_STRING | LVFI_PARTIAL)) == 0) return -1;
    const std::wstring_view wanted = search.lvfi.psz;
    const int length = static_cast<int>(wanted.size());
    const int count = list.GetItemCount();
    for (int i = 0; i < count; ++i) {
        const int row = (search.iStart + i) % count;
        const std::wstring text = Wide(list.GetItemText(row, 0));
        if (static_cast<int>(text.size()) >= length &&
            CompareStringOrdinal(text.data(), length, wanted.data(), length, TRUE) == CSTR_EQUAL)
            return row;
    }
    return -1;
}

// ---- What the user does ----

// The rows that the control no longer has selected come first, as in every change of a selection. Handlers
// run between the changes and may change the list, so nothing is kept across a call.
void ListViewWindow::TakeSelection() {
    if (isShowing || hasOtherRows) return;
    const auto hasSelected = [this](int row) {
        return Ask(LVM_GETITEMSTATE, static_cast<WPARAM>(row), LVIS_SELECTED) != 0;
    };
    const auto next = [this](int row, LPARAM kind) {
        return static_cast<int>(Ask(LVM_GETNEXTITEM, static_cast<WPARAM>(row), kind));
    };
    if (const int focus = next(-1, LVNI_FOCUSED); focus != list.GetFocusedRow())
        list.SetCursor({focus, focus, focus});
    for (int row = list.NextSelected(0); row >= 0; row = list.NextSelected(row + 1))
        if (!hasSelected(row)) list.SetSelected(row, false);
    for (int row = next(-1, LVNI_SELECTED); row >= 0; row = next(row, LVNI_SELECTED))
        if (!list.IsSelected(row)) list.SetSelected(row, true);
}

void ListViewWindow::ReportAt(Notify code, LPARAM details) {
    const auto& activation = *reinterpret_cast<const NMITEMACTIVATE*>(details);
    TakeSelection();
    if (code == Notify::kClick && std::exchange(pressedRow, -1) == activation.iItem && activation.iItem >= 0)
        SelectOnly(list, activation.iItem);
    const int row = list.Rows().Has(activation.iItem) ? activation.iItem : -1;
    list.ReportRow(code, row,
                   {ToLogical(activation.ptAction.x, Dpi()), ToLogical(activation.ptAction.y, Dpi())});
}

LRESULT ListViewWindow::OnOwnNotification(const NMHDR& header, LPARAM details) {
    switch (header.code) {
        case static_cast<UINT>(LVN_GETDISPINFOW):
            GiveItem(reinterpret_cast<NMLVDISPINFOW*>(details)->item);
            return 0;
        case static_cast<UINT>(LVN_ODFINDITEMW):
            return FindText(*reinterpret_cast<const NMLVFINDITEMW*>(details));
        case static_cast<UINT>(LVN_GETEMPTYMARKUP):
            return GiveEmptyText(*reinterpret_cast<NMLVEMPTYMARKUP*>(details));
        case static_cast<UINT>(LVN_GETINFOTIPW): {
            auto& tip = *reinterpret_cast<NMLVGETINFOTIPW*>(details);
            lstrcpynW(tip.pszText, Wide(list.AskInfoTip(tip.iItem)).c_str(), tip.cchTextMax);
            return 0;
        }
        case static_cast<UINT>(LVN_COLUMNCLICK):
            list.ReportColumnClick(reinterpret_cast<const NMLISTVIEW*>(details)->iSubItem);
            return 0;
        case static_cast<UINT>(NM_CLICK):
            ReportAt(Notify::kClick, details);
            return 0;
        case static_cast<UINT>(NM_DBLCLK):
            ReportAt(Notify::kDoubleClick, details);
            return 0;
        case static_cast<UINT>(NM_RCLICK):
            ReportAt(Notify::kRightClick, details);
            return 1;  // no WM_CONTEXTMENU as well
        default:
            return 0;
    }
}

LRESULT ListViewWindow::OnHeaderNotification(const NMHDR& header, LPARAM details) {
    const LRESULT answer = Default({WM_NOTIFY, header.idFrom, details});
    if (header.code == static_cast<UINT>(HDN_ENDTRACKW)) {
        const auto& change = *reinterpret_cast<const NMHEADERW*>(details);
        if (change.pitem != nullptr && (change.pitem->mask & HDI_WIDTH) != 0)
            list.SetColumnWidth(change.iItem, ToLogical(change.pitem->cxy, Dpi()));
    } else if (header.code == static_cast<UINT>(NM_RCLICK)) {
        const DWORD position = GetMessagePos();
        POINT point{static_cast<short>(LOWORD(position)), static_cast<short>(HIWORD(position))};
        ScreenToClient(Own(), &point);
        list.ReportHeaderMenu({ToLogical(point.x, Dpi()), ToLogical(point.y, Dpi())});
        return 1;
    }
    return answer;
}

std::optional<LRESULT> ListViewWindow::OnReflected(const Message& message) {
    if (message.code != WM_NOTIFY) return std::nullopt;
    return OnOwnNotification(*reinterpret_cast<const NMHDR*>(message.wider), message.wider);
}

LVHITTESTINFO ListViewWindow::HitAt(LPARAM position) const {
    LVHITTESTINFO hit{};
    hit.pt = {static_cast<short>(LOWORD(position)), static_cast<short>(HIWORD(position))};
    hit.iItem = static_cast<int>(Ask(LVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
    return hit;
}

// The control cannot change the check boxes of a virtual list, so the presses on them are kept from it.
LRESULT ListViewWindow::OnPress(const Message& message) {
    const LVHITTESTINFO hit = HitAt(message.wider);
    const bool isOnCheckBox = hit.iItem >= 0 && (hit.flags & LVHT_ONITEM) == LVHT_ONITEMSTATEICON;
    const bool isSelected = list.IsSelected(hit.iItem) && ModeOfKeys() == SelectMode::kReplace;
    pressedCheckBox = isOnCheckBox ? hit.iItem : -1;
    pressedRow = isSelected && !isOnCheckBox ? hit.iItem : -1;
    if (!isOnCheckBox) {
        HWND self = Own();
        const LRESULT answer = Default(message);
        if (Of(self) == this) TakeSelection();
        return answer;
    }
    ::SetFocus(Own());
    ToggleCheck(list, pressedCheckBox);
    return 0;
}

// The keyboard is seen to be in the list.
void ListViewWindow::FocusFirstRow() {
    ShowChanges();
    const auto focused = static_cast<int>(Ask(LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED));
    if (focused < 0 && list.GetItemCount() > 0) SetState(0, LVIS_FOCUSED, LVIS_FOCUSED);
}

KeyUse ListViewWindow::OnDialogKey(UINT virtualKey) {
    if (virtualKey != VK_RETURN && virtualKey != VK_ESCAPE) return KeyUse::kDialog;
    return list.ReportKey(virtualKey) ? KeyUse::kTaken : KeyUse::kDialog;
}

LRESULT ListViewWindow::OnMessage(const Message& message) {
    HWND self = Own();
    const bool isInput = MaySelect(message);
    if (isInput) ShowChanges();  // what the user then changes is not overwritten
    switch (message.code) {
        case kShowChanges:
            ShowChanges();
            return 0;
        case WM_PAINT:
            ShowChanges();
            break;
        case WM_NOTIFY: {
            const NMHDR& header = *reinterpret_cast<const NMHDR*>(message.wider);
            if (header.hwndFrom == reinterpret_cast<HWND>(Ask(LVM_GETHEADER)))
                return OnHeaderNotification(header, message.wider);
            break;
        }
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            return OnPress(message);
        case WM_LBUTTONUP:
            if (pressedCheckBox >= 0) {
                list.ReportRow(Notify::kClick, std::exchange(pressedCheckBox, -1),
                               PointOf(message.wider, Dpi()));
                return 0;
            }
            break;
        case WM_KEYDOWN: {
            list.ReportKey(static_cast<unsigned int>(message.wide));
            if (Of(self) != this) return 0;
            if (message.wide != VK_SPACE) break;
            PressSpace(list, ModeOfKeys());
            return 0;
        }
        case WM_SETFOCUS:
            FocusFirstRow();
            break;
        case WM_SIZE:
            if (Window().HasWindow()) {
                const LRESULT answer = SystemWindow::OnMessage(message);
                FitColumns();
                return answer;
            }
            break;
        default:
            break;
    }
    const LRESULT answer = SystemWindow::OnMessage(message);
    if (isInput && Of(self) == this) TakeSelection();
    return answer;
}

}  // namespace permora::win32
