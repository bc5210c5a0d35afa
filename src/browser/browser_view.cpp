#include "browser/browser_view.h"

#include "browser/clipboard_block.h"
#include "browser/start_folder.h"
#include "framework/clipboard.h"
#include "framework/frame_window.h"
#include "framework/list_styles.h"
#include "framework/styles.h"
#include "platform/api/files.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr int kSelectionPopup = 0;
constexpr int kNoSelectionPopup = 1;

// What needs items; where there are none of the file system's, some of it makes no sense.
constexpr unsigned int kFileCommands[] = {ID_EDIT_CUT, ID_EDIT_COPY, ID_EDIT_PASTE,
                                          ID_DELETE,   ID_RENAME,    ID_ATTRIBUTES};
constexpr unsigned int kSecurityCommands[] = {ID_WIZARD, ID_SECURE_DELETION};

}  // namespace

const MessageMap& BrowserView::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<BrowserView>(
        CWnd::GetMessageMap(), {
                                   {kListId, Notify::kDoubleClick, &BrowserView::OnDoubleClick},
                                   {kListId, Notify::kKeyDown, &BrowserView::OnKeyDown},
                                   {kListId, Notify::kColumnClick, &BrowserView::OnColumnClick},
                                   {kListId, Notify::kRightClick, &BrowserView::OnRightClick},
                                   {kListId, Notify::kInfoTip, &BrowserView::OnInfoTip},
                                   {ID_SELECT_ALL, Notify::kCommand, &BrowserView::SelectAll},
                                   {ID_INVERT_SELECTION, Notify::kCommand, &BrowserView::InvertSelection},
                                   {ID_ATTRIBUTES, Notify::kCommand, &BrowserView::EditAttributes},
                                   {ID_EDIT_CUT, Notify::kCommand, &BrowserView::CutSelected},
                                   {ID_EDIT_COPY, Notify::kCommand, &BrowserView::CopySelected},
                                   {ID_EDIT_PASTE, Notify::kCommand, &BrowserView::PasteFromClipboard},
                                   {ID_DELETE, Notify::kCommand, &BrowserView::DeleteSelected},
                                   {ID_RENAME, Notify::kCommand, &BrowserView::RenameSelected},
                                   {ID_PROPERTIES, Notify::kCommand, &BrowserView::ShowProperties},
                                   {ID_GO_UP, Notify::kCommand, &BrowserView::GoUp},
                                   {ID_REFRESH, Notify::kCommand, &BrowserView::RefreshList},
                                   {ID_VIEW_ICONS, Notify::kCommand, &BrowserView::OnViewMode},
                                   {ID_VIEW_SMALL_ICONS, Notify::kCommand, &BrowserView::OnViewMode},
                                   {ID_VIEW_LIST, Notify::kCommand, &BrowserView::OnViewMode},
                                   {ID_VIEW_DETAILS, Notify::kCommand, &BrowserView::OnViewMode},
                               });
    return sharesMode ? SharesModeMap(kMap) : kMap;
}

BrowserView::BrowserView() : clipboardFormat(RegisterClipboardFormat(kClipboardFormatName)) {
    if (clipboardFormat == 0) ShowFatalErrorBox(nullptr, "Error: cannot register clipboard data format.");
}

void BrowserView::Create(CWnd& owner, unsigned int id, const std::string& commandLine) {
    contextMenu = CMenu::Load(IDR_CONTEXT_MENUS);
    if (!contextMenu) ShowErrorBox(owner.GetSafeHwnd(), "Error: cannot load menu");

    if (!CreateChild(owner, {}, id) || !list.Create(*this, WS_VISIBLE | WS_TABSTOP | LVS_ICON, {}, kListId) ||
        !largeImages.Create(LargeIconSize()) || !smallImages.Create(SmallIconSize())) {
        ShowFatalErrorBox(owner.GetSafeHwnd(), "Error: cannot initialize main window");
    }
    constexpr int kColumnWidth = 150;
    int column = 0;
    for (const char* header : {"Name", "Type", "Size", "Modified"})
        list.InsertColumn(column++, header, kColumnWidth);
    list.SetImageList(largeImages, ImageListKind::kNormal);
    list.SetImageList(smallImages, ImageListKind::kSmall);
    list.SetExtendedStyle(ListStyle::kInfoTips);
    OpenStartFolder(commandLine);
}

void BrowserView::OpenStartFolder(const std::string& commandLine) {
    const std::string folder = StartFolderOf(commandLine);
    if (folder.empty() || !EnterFolder(folder)) {
        ListDrives();
        return;
    }
    currentFolder = folder;
    ListFolder(currentFolder);  // a failure is told when the frame's settings are applied, which lists again
    isDriveRoot = false;
    driveListShown = false;
    RecordLocation();
}

void BrowserView::OnSize(Size client) {
    list.MoveWindow({0, 0, client.cx, client.cy});
}

void BrowserView::OnSetFocus() {
    list.SetFocus();
}

CFrameWnd* BrowserView::Frame() const {
    return dynamic_cast<CFrameWnd*>(GetParent());
}

void BrowserView::RunCommand(unsigned int id) {
    if (CFrameWnd* frame = Frame()) frame->RunCommand(id);
}

// ---- Notifications. After a double click or a key the list goes on with its own reaction. ----

void BrowserView::OnDoubleClick(Notification& notification) {
    notification.handled = false;
    if (!sharesMode && notification.row >= 0) OpenSelected();
}

void BrowserView::OnKeyDown(Notification& notification) {
    constexpr unsigned int kBackspace = 0x08;
    constexpr unsigned int kEnter = 0x0D;
    constexpr unsigned int kDelete = 0x2E;
    notification.handled = false;
    switch (notification.key) {
        case kBackspace:
            if (!sharesMode) GoUp();
            break;
        case kEnter:
            if (!sharesMode) OpenSelected();
            break;
        case kDelete:
            RunCommand(ID_DELETE);
            break;
        default:
            break;
    }
}

void BrowserView::OnColumnClick(Notification& notification) {
    SortByColumn(notification.column);
}

void BrowserView::OnInfoTip(Notification& notification) {
    if (BuildInfoText(list.GetItemText(notification.row, 0))) notification.tip = infoText;
}

void BrowserView::OnViewMode(Notification& notification) {
    SetViewMode(static_cast<ListView>(notification.id - ID_VIEW_ICONS));
}

void BrowserView::OnRightClick(Notification& notification) {
    if (!contextMenu) return;
    const bool hasSelection = list.GetSelectedCount() > 0;
    CMenu popup = contextMenu.GetSubMenu(hasSelection ? kSelectionPopup : kNoSelectionPopup);
    EnableContextCommands(popup);
    const Rect place = list.GetWindowRect();
    const Point clicked{place.left + notification.point.x, place.top + notification.point.y};
    const unsigned int command = popup.TrackPopup(clicked, *this);
    if (command != 0) RunCommand(command);
}

void BrowserView::EnableContextCommands(CMenu& menu) const {
    for (const unsigned int id : kFileCommands)
        menu.Enable(id, sharesMode ? id == ID_DELETE : !driveListShown);
    for (const unsigned int id : kSecurityCommands)
        menu.Enable(id, !sharesMode);
    if (!sharesMode && !driveListShown) menu.Enable(ID_EDIT_PASTE, CanPaste());
}

}  // namespace permora
