#include "browser/browser_view.h"

#include <chrono>
#include <utility>

#include "browser/address_bar.h"
#include "browser/clipboard_block.h"
#include "browser/drive_rows.h"
#include "browser/file_clipboard.h"
#include "browser/list_presentation.h"
#include "browser/row_order.h"
#include "browser/start_folder.h"
#include "framework/clipboard.h"
#include "framework/frame_window.h"
#include "framework/list_styles.h"
#include "framework/styles.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr int kSelectionPopup = 0;
constexpr int kNoSelectionPopup = 1;

// Positions in the frame's View menu.
constexpr int kOwnIconsEntry = 2;
constexpr int kFirstModeEntry = 4;
constexpr int kLastModeEntry = 7;
constexpr int kSecurityColumnsEntry = 9;
constexpr int kDotNamesEntry = 10;

// The commands of the context menu that not all kinds of rows have.
constexpr unsigned int kDependentCommands[] = {ID_EDIT_CUT, ID_EDIT_COPY,  ID_EDIT_PASTE, ID_DELETE,
                                               ID_RENAME,   ID_ATTRIBUTES, ID_WIZARD,     ID_SECURE_DELETION};

constexpr const char* kCannotSelect = "Error: cannot select items";

}  // namespace

const MessageMap& BrowserView::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<BrowserView>(
        CWnd::GetMessageMap(), {
                                   {kListId, Notify::kDoubleClick, &BrowserView::OnDoubleClick},
                                   {kListId, Notify::kKeyDown, &BrowserView::OnKeyDown},
                                   {kListId, Notify::kColumnClick, &BrowserView::OnColumnClick},
                                   {kListId, Notify::kRightClick, &BrowserView::OnRightClick},
                                   {kListId, Notify::kInfoTip, &BrowserView::OnInfoTip},
                                   {kListId, Notify::kHeaderMenu, &BrowserView::OnHeaderMenu},
                                   {ID_SELECT_ALL, Notify::kCommand, &BrowserView::SelectAll},
                                   {ID_INVERT_SELECTION, Notify::kCommand, &BrowserView::InvertSelection},
                                   {ID_ATTRIBUTES, Notify::kCommand, &BrowserView::OnFileCommand},
                                   {ID_EDIT_CUT, Notify::kCommand, &BrowserView::OnFileCommand},
                                   {ID_EDIT_COPY, Notify::kCommand, &BrowserView::OnFileCommand},
                                   {ID_EDIT_PASTE, Notify::kCommand, &BrowserView::OnFileCommand},
                                   {ID_DELETE, Notify::kCommand, &BrowserView::OnFileCommand},
                                   {ID_RENAME, Notify::kCommand, &BrowserView::OnFileCommand},
                                   {ID_NEW_FOLDER, Notify::kCommand, &BrowserView::OnFileCommand},
                                   {ID_PROPERTIES, Notify::kCommand, &BrowserView::OnFileCommand},
                                   {ID_COPY_HOST_PATH, Notify::kCommand, &BrowserView::OnFileCommand},
                                   {ID_GO_UP, Notify::kCommand, &BrowserView::GoUp},
                                   {ID_REFRESH, Notify::kCommand, &BrowserView::RefreshList},
                                   {ID_VIEW_ICONS, Notify::kCommand, &BrowserView::OnViewMode},
                                   {ID_VIEW_SMALL_ICONS, Notify::kCommand, &BrowserView::OnViewMode},
                                   {ID_VIEW_LIST, Notify::kCommand, &BrowserView::OnViewMode},
                                   {ID_VIEW_DETAILS, Notify::kCommand, &BrowserView::OnViewMode},
                                   {IDP_FIRST_SECURITY_COLUMN, IDP_LAST_SECURITY_COLUMN, Notify::kCommand,
                                    &BrowserView::OnSecurityColumn},
                                   {ID_VIEW_DOT_NAMES, Notify::kCommand, &BrowserView::OnDotNames},
                                   {ID_VIEW_FOLDER_TREE, Notify::kCommand, &BrowserView::OnFolderTree},
                               });
    return kMap;
}

BrowserView::BrowserView() : location(std::make_shared<DriveRows>()) {
    if (RegisterClipboardFormat(kClipboardFormatName) == 0)
        ShowFatalErrorBox(nullptr, "Error: cannot register clipboard data format.");
}

void BrowserView::Create(CWnd& owner, unsigned int id, const std::string& commandLine) {
    contextMenu = CMenu::Load(IDR_CONTEXT_MENUS);
    if (!contextMenu) ShowErrorBox(owner.GetSafeHwnd(), "Error: cannot load menu");

    if (!CreateChild(owner, {}, id) ||
        !list.Create(*this, WS_VISIBLE | WS_TABSTOP | LVS_ICON | LVS_SHOWSELALWAYS, {}, kListId) ||
        !images.Rebuild(list, {}))
        ShowFatalErrorBox(owner.GetSafeHwnd(), "Error: cannot initialize main window");
    int column = 0;
    for (const char* header : {"Name", "Type", "Size", "Modified"})
        list.InsertColumn(column++, header, kColumnWidth);
    security.Insert();
    list.SetExtendedStyle(ListStyle::kInfoTips | ListStyle::kGivenWidths);
    OpenStartFolder(commandLine);
}

// A failure is reported when the frame applies its settings, which lists again. A folder that does not answer
// is not waited for long, since the window is not shown yet, and the drives are shown instead.
void BrowserView::OpenStartFolder(const std::string& commandLine) {
    constexpr std::chrono::milliseconds kStartPatience(3000);
    const std::string folder = StartFolderOf(commandLine);
    std::shared_ptr<RowSource> start = std::make_shared<FolderRows>(folder);
    std::shared_ptr<Listing> listing;
    const std::chrono::milliseconds usual = std::exchange(wait.patience, kStartPatience);
    const Outcome outcome = folder.empty() ? Outcome{ERROR_FILE_NOT_FOUND} : Read(start, listing);
    wait.patience = usual;
    if (outcome.IsDone()) {
        location = std::move(start);
        MakeCurrent();
        history.Record(location->Folder());
    } else {
        if (IsUnanswered(outcome)) startOutcome = outcome;
        static_cast<void>(Read(location, listing));
    }
    static_cast<void>(Fill(*location, *listing));
}

void BrowserView::AttachBars(AddrBar& address, CStatusBar& status) {
    addressBar = &address;
    statusBar = &status;
    addressBar->SetLocationText(Rows().Location());
}

void BrowserView::SetViewModeObserver(std::function<void(std::uint32_t viewMode)> chosen) {
    viewModeChosen = std::move(chosen);
}

void BrowserView::OnSize(Size /*client*/) {
    LayOutPanes();
}

void BrowserView::OnSetFocus() {
    list.SetFocus();
}

CFrameWnd* BrowserView::Frame() const {
    return dynamic_cast<CFrameWnd*>(GetParent());
}

// ---- Notifications. After a double click or a key, the list reacts itself as well. ----

void BrowserView::OnDoubleClick(Notification& notification) {
    notification.handled = false;
    if (notification.row >= 0) OpenSelected();
}

void BrowserView::OnKeyDown(Notification& notification) {
    constexpr unsigned int kBackspace = 0x08;
    constexpr unsigned int kEnter = 0x0D;
    constexpr unsigned int kDelete = 0x2E;
    notification.handled = false;
    switch (notification.key) {
        case kBackspace:
            GoUp();
            break;
        case kEnter:
            OpenSelected();
            break;
        case kDelete:
            if (CFrameWnd* frame = Frame()) frame->RunCommand(ID_DELETE);
            break;
        default:
            break;
    }
}

void BrowserView::OnColumnClick(Notification& notification) {
    SortByColumn(notification.column);
}

void BrowserView::OnInfoTip(Notification& notification) {
    auto tip = std::make_shared<std::string>();
    const std::string name = list.GetItemText(notification.row, kNameColumn);
    const auto ask = [tip, rows = SharedRows(), name](PatientWork::Running&) { *tip = rows->Tip(name); };
    if (wait.DoAtOnce(Rows().VolumeOf(name), ask)) notification.tip = *tip;
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
    CFrameWnd* frame = Frame();
    if (command != 0 && frame != nullptr) frame->RunCommand(command);
}

void BrowserView::EnableContextCommands(CMenu& menu) const {
    for (const unsigned int id : kDependentCommands)
        menu.Enable(id, Rows().Offers(id) && (id != ID_EDIT_PASTE || HasFilesToPaste()));
}

void BrowserView::OnFileCommand(Notification& notification) {
    commands.Run(notification.id);
}

// ---- Selection ----

std::vector<std::string> BrowserView::SelectedNames() const {
    std::vector<std::string> names;
    for (int row = list.NextSelected(0); row >= 0; row = list.NextSelected(row + 1))
        names.push_back(list.GetItemText(row, kNameColumn));
    return names;
}

bool BrowserView::HoldSelection(Place& place) {
    const std::vector<std::string> names = SelectedNames();
    if (names.empty()) {
        ShowInfoBox(GetSafeHwnd(), kSelectItems);
        return false;
    }
    const Outcome outcome = HoldRows(names, place);
    Tell(outcome);
    return outcome.IsDone();
}

void BrowserView::SelectAll() {
    bool areAllSelected = true;
    for (int row = 0; row < list.GetItemCount(); ++row)
        areAllSelected = list.SetSelected(row, true) && areAllSelected;
    if (!areAllSelected) ShowErrorBox(GetSafeHwnd(), kCannotSelect);
}

void BrowserView::InvertSelection() {
    bool areAllInverted = true;
    for (int row = 0; row < list.GetItemCount(); ++row)
        areAllInverted = list.SetSelected(row, !list.IsSelected(row)) && areAllInverted;
    if (!areAllInverted) ShowErrorBox(GetSafeHwnd(), kCannotSelect);
}

// ---- View modes, icons and order ----

CMenu BrowserView::ViewMenu() const {
    constexpr int kViewMenu = 2;
    const CFrameWnd* frame = Frame();
    const CMenu menu = frame != nullptr ? frame->GetMenu() : CMenu();
    return menu ? menu.GetSubMenu(kViewMenu) : CMenu();
}

void BrowserView::SetViewMode(ListView mode) {
    ChangeView(mode);
    if (mode == ListView::kReport) RefreshList();
}

void BrowserView::ChangeView(ListView mode) {
    list.SetView(mode);
    const int position = static_cast<int>(mode);
    if (CMenu menu = ViewMenu())
        menu.CheckRadioByPosition(kFirstModeEntry, kLastModeEntry, kFirstModeEntry + position);
    if (viewModeChosen) viewModeChosen(static_cast<std::uint32_t>(position));
}

void BrowserView::ApplyViewSettings(std::uint32_t viewMode, RowIcons icons) {
    constexpr std::uint32_t kViewModes = 4;
    if (viewMode < kViewModes) ChangeView(static_cast<ListView>(viewMode));
    SetIcons(icons);
    RefreshList();
}

void BrowserView::SetIcons(RowIcons icons) {
    rowIcons = icons;
    if (CMenu menu = ViewMenu()) menu.CheckByPosition(kOwnIconsEntry, icons == RowIcons::kOwn);
}

// The window stays in use while the security of all rows is read: the latest click counts.
void BrowserView::SortByColumn(int column) {
    if (!security.Has(column)) {
        StopReadingSecurity();
        return SortRows(column);
    }
    awaitedColumn = column;
    if (security.IsReadingAll()) return;  // for all columns at once
    const auto progress = [this](std::size_t done, std::size_t count) {
        ShowState(("Reading the security of all items: " + std::to_string(done) + " of " +
                   std::to_string(count) + ". Escape stops it.")
                      .c_str());
    };
    security.ReadAll(progress, [this] {
        ShowState("Ready");
        SortRows(awaitedColumn);
    });
}

bool BrowserView::StopWork() {
    return wait.GiveUp() || StopReadingSecurity();
}

bool BrowserView::StopReadingSecurity() {
    if (!security.IsReadingAll()) return false;
    security.StopReadingAll();
    ShowState("Ready");
    return true;
}

void BrowserView::SortRows(int column) {
    const int count = list.GetItemCount();
    std::vector<std::string> texts;
    texts.reserve(static_cast<std::size_t>(count));
    for (int row = 0; row < count; ++row) {
        texts.push_back(list.GetItemText(row, column));
        list.SetItemData(row, row);
    }
    list.SortItems(OrderByColumn(security.OrderColumnOf(column), texts));
    for (int row = 0; row < count; ++row)
        list.SetItemData(row, row);
}

// ---- Columns about security, and names with a dot ----

// Switching one on shows the details, where it can be seen.
void BrowserView::OnSecurityColumn(Notification& notification) {
    const std::uint32_t bit = 1U << (notification.id - IDP_FIRST_SECURITY_COLUMN);
    ChooseSecurityColumns(security.Chosen() ^ bit);
    const bool isShown = (security.Chosen() & bit) != 0;
    if (isShown && list.GetView() != ListView::kReport) SetViewMode(ListView::kReport);
    choiceMade();
}

void BrowserView::ChooseSecurityColumns(std::uint32_t columns) {
    StopReadingSecurity();  // the column to be sorted by may be another afterwards
    security.Choose(columns);
    CMenu menu = ViewMenu();
    if (CMenu entries = menu ? menu.GetSubMenu(kSecurityColumnsEntry) : CMenu())
        for (int i = 0; i < static_cast<int>(kSecurityColumnCount); ++i)
            entries.CheckByPosition(i, (security.Chosen() >> i & 1U) != 0);
}

void BrowserView::OnHeaderMenu(Notification& notification) {
    const CMenu menu = ViewMenu();
    const CMenu entries = menu ? menu.GetSubMenu(kSecurityColumnsEntry) : CMenu();
    const Rect place = list.GetWindowRect();
    const Point clicked{place.left + notification.point.x, place.top + notification.point.y};
    const unsigned int command = entries ? entries.TrackPopup(clicked, *this) : 0;
    if (command != 0) Frame()->RunCommand(command);
}

void BrowserView::OnDotNames() {
    SetDotNames(dotNames == DotNames::kListed ? DotNames::kLeftOut : DotNames::kListed);
    RefreshList();
    choiceMade();
}

void BrowserView::SetDotNames(DotNames names) {
    dotNames = names;
    if (folderTree != nullptr) folderTree->SetDotNames(names);
    if (CMenu menu = ViewMenu()) menu.CheckByPosition(kDotNamesEntry, names == DotNames::kListed);
}

}  // namespace permora
