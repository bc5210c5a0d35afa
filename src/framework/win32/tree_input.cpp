// What the tree view's control asks for, and what the user does in it.
#include <utility>

#include "framework/win32/tree_view.h"

namespace permora::win32 {
namespace {

TreeItem ItemOf(const TVITEMW& item) {
    return static_cast<TreeItem>(item.lParam);
}

POINT ClientPlace(LPARAM position) {
    return {static_cast<short>(LOWORD(position)), static_cast<short>(HIWORD(position))};
}

}  // namespace

// ---- What the control asks for ----

void TreeViewWindow::GiveItem(TVITEMW& item) {
    const TreeItemLook& look = tree.Items().Look(ItemOf(item));
    if ((item.mask & TVIF_TEXT) != 0) {
        std::wstring& text = given[nextGiven];
        nextGiven = (nextGiven + 1) % given.size();
        text = Wide(look.text);
        item.pszText = text.data();
    }
    const int image = look.image >= 0 ? look.image : I_IMAGENONE;  // -1 would be a question again
    if ((item.mask & TVIF_IMAGE) != 0) item.iImage = image;
    if ((item.mask & TVIF_SELECTEDIMAGE) != 0) item.iSelectedImage = image;
    if ((item.mask & TVIF_CHILDREN) != 0) item.cChildren = HasBelow(ItemOf(item)) ? 1 : 0;
    // Icons may have come to the list of images since it was shown. The control is at work on it now.
    const bool isImageMissing = images == nullptr || look.image >= ImageList_GetImageCount(images);
    if (shownImages != nullptr && isImageMissing && look.image < static_cast<int>(shownImages->icons.size()))
        PostMessageW(Own(), kShowImages, 0, 0);
}

LRESULT TreeViewWindow::Draw(NMTVCUSTOMDRAW& drawing) const {
    if (drawing.nmcd.dwDrawStage == CDDS_PREPAINT) return CDRF_NOTIFYITEMDRAW;
    const auto item = static_cast<TreeItem>(drawing.nmcd.lItemlParam);
    const bool isSelected = (drawing.nmcd.uItemState & CDIS_SELECTED) != 0;
    if (drawing.nmcd.dwDrawStage == CDDS_ITEMPREPAINT && !isSelected && tree.Items().Look(item).isDimmed)
        drawing.clrText = GetSysColor(COLOR_GRAYTEXT);
    return CDRF_DODEFAULT;
}

// ---- What the user does ----

// The tree must not change while the control is at work on the event that is reported.
void TreeViewWindow::PostReport(Notify code, TreeItem item) {
    PostMessageW(Own(), kReport, static_cast<WPARAM>(code), item);
}

// The control does not tell of an item that has nothing below it that it was opened or closed.
LRESULT TreeViewWindow::OnExpanding(const NMTREEVIEWW& details) {
    const TreeItem item = ItemOf(details.itemNew);
    const bool isOpen = (details.action & TVE_TOGGLE) == TVE_EXPAND;
    if (isOpen)
        open.insert(item);
    else
        open.erase(item);
    if (!isSilent) PostReport(Notify::kItemChanged, item);
    if (tree.Items().Count(item) > 0) return FALSE;
    ShowOpen(item);
    return TRUE;
}

LRESULT TreeViewWindow::OnOwnNotification(const NMHDR& header, LPARAM details) {
    switch (header.code) {
        case static_cast<UINT>(TVN_GETDISPINFOW):
            GiveItem(reinterpret_cast<NMTVDISPINFOW*>(details)->item);
            return 0;
        case static_cast<UINT>(NM_CUSTOMDRAW):
            return Draw(*reinterpret_cast<NMTVCUSTOMDRAW*>(details));
        case static_cast<UINT>(TVN_ITEMEXPANDINGW):
            return OnExpanding(*reinterpret_cast<const NMTREEVIEWW*>(details));
        case static_cast<UINT>(TVN_SELCHANGEDW): {
            const auto& changed = *reinterpret_cast<const NMTREEVIEWW*>(details);
            if (!isSilent && changed.itemNew.hItem != nullptr)
                PostReport(Notify::kSelectionChanged, ItemOf(changed.itemNew));
            return 0;
        }
        case static_cast<UINT>(TVN_DELETEITEMW): {
            const TreeItem item = ItemOf(reinterpret_cast<const NMTREEVIEWW*>(details)->itemOld);
            handles.erase(item);
            open.erase(item);
            return 0;
        }
        case static_cast<UINT>(NM_CLICK):
            if (pressedItem != kNoTreeItem) PostReport(Notify::kClick, pressedItem);
            return 0;
        default:
            return 0;
    }
}

std::optional<LRESULT> TreeViewWindow::OnReflected(const Message& message) {
    if (message.code != WM_NOTIFY) return std::nullopt;
    return OnOwnNotification(*reinterpret_cast<const NMHDR*>(message.wider), message.wider);
}

TVHITTESTINFO TreeViewWindow::HitAt(POINT client) const {
    TVHITTESTINFO hit{};
    hit.pt = client;
    Ask(TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
    return hit;
}

// While its menu is open, the item is marked, but not selected.
void TreeViewWindow::ReportMenu(HTREEITEM item, POINT client) {
    HWND self = Own();
    Ask(TVM_SELECTITEM, TVGN_DROPHILITE, reinterpret_cast<LPARAM>(item));
    Notification wanted{.code = Notify::kRightClick,
                        .row = ItemAt(item),
                        .point = {ToLogical(client.x, Dpi()), ToLogical(client.y, Dpi())}};
    ReportNotification(wanted);
    if (Of(self) == this) Ask(TVM_SELECTITEM, TVGN_DROPHILITE, 0);
}

// At the middle of what is seen of the selected item's text.
void TreeViewWindow::ReportMenuKey() {
    HTREEITEM item = HandleOf(Selected());
    if (item == nullptr) return;
    Ask(TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(item));
    RECT client{};
    RECT seen{};
    ::GetClientRect(Own(), &client);
    const RECT text = RectOf(item, TRUE).value_or(client);
    IntersectRect(&seen, &text, &client);
    ReportMenu(item, {(seen.left + seen.right) / 2, (seen.top + seen.bottom) / 2});
}

bool TreeViewWindow::ReportKey(UINT virtualKey) {
    Notification pressed{.code = Notify::kKeyDown, .key = virtualKey};
    return ReportNotification(pressed);
}

KeyUse TreeViewWindow::OnDialogKey(UINT virtualKey) {
    if (virtualKey != VK_RETURN && virtualKey != VK_ESCAPE) return KeyUse::kDialog;
    return ReportKey(virtualKey) ? KeyUse::kTaken : KeyUse::kDialog;
}

LRESULT TreeViewWindow::OnKey(const Message& message) {
    HWND self = Own();
    isKeyTaken = false;
    const bool isTaken = ReportKey(static_cast<UINT>(message.wide));
    if (Of(self) != this) return 0;
    isKeyTaken = isTaken || message.wide == VK_MULTIPLY;
    if (!isKeyTaken) return SystemWindow::OnMessage(message);
    // The control would open all that is below as well.
    const TreeItem item = Selected();
    if (!isTaken && HasBelow(item) && !IsExpanded(item)) {
        Expand(item, true);
        PostReport(Notify::kItemChanged, item);
    }
    return 0;
}

LRESULT TreeViewWindow::OnMessage(const Message& message) {
    constexpr WPARAM kFirstLetter = L' ';  // the control sounds at what no text begins with
    switch (message.code) {
        case kReport: {
            Notification report{.code = static_cast<Notify>(message.wide),
                                .row = static_cast<TreeItem>(message.wider)};
            ReportNotification(report);
            return 0;
        }
        case kShowImages:
            ShowImages();
            return 0;
        case WM_KEYDOWN:
            return OnKey(message);
        case WM_SYSKEYDOWN:
            if (message.wide != VK_F10 || GetKeyState(VK_SHIFT) >= 0) break;
            ReportMenuKey();
            return 0;
        case WM_CHAR:
            if (isKeyTaken || message.wide < kFirstLetter) return 0;
            break;
        case WM_LBUTTONDOWN: {
            const TVHITTESTINFO hit = HitAt(ClientPlace(message.wider));
            pressedItem = (hit.flags & TVHT_ONITEM) != 0 ? ItemAt(hit.hItem) : kNoTreeItem;
            break;
        }
        // The other button asks for a menu, and selects nothing.
        case WM_RBUTTONDOWN:
            ::SetFocus(Own());
            return 0;
        case WM_RBUTTONUP: {
            const POINT client = ClientPlace(message.wider);
            if (const TVHITTESTINFO hit = HitAt(client); hit.hItem != nullptr) ReportMenu(hit.hItem, client);
            return 0;
        }
        case WM_CONTEXTMENU:
            if (message.wider == -1) ReportMenuKey();
            return 0;
        default:
            break;
    }
    return SystemWindow::OnMessage(message);
}

}  // namespace permora::win32
