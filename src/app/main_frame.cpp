#include "app/main_frame.h"

#include <array>
#include <memory>
#include <utility>

#include "app/program_folder.h"
#include "app/settings_dialog.h"
#include "app/settings_store.h"
#include "browser/folder_entries.h"
#include "browser/folder_paths.h"
#include "deletion/secure_delete_dialog.h"
#include "editor/multi_selection_notice.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/api/messages.h"
#include "platform/api/system.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"
#include "shares/new_share_dialog.h"

namespace permora {
namespace {

constexpr unsigned int kViewId = 0xE900;  // the class library's first pane of a frame

constexpr int kItemCountPane = 1;
constexpr int kItemCountWidth = 200;

constexpr Size kToolBarImageSize{16, 16};

// In the order of the toolbar's buttons.
constexpr std::array<unsigned int, 15> kToolBarIcons = {
    IDI_BACK,        IDI_FORWARD,         IDI_UP,     IDI_REFRESH,  IDI_ROOT,
    IDI_PERMISSIONS, IDI_SECURE_DELETION, IDI_WIZARD, IDI_SHARES,   IDI_CUT,
    IDI_COPY,        IDI_PASTE,           IDI_DELETE, IDI_SETTINGS, IDI_HELP,
};

ProgramSettings DefaultSettings(const Rect& windowRect) {
    ProgramSettings defaults;
    defaults.windowRect = windowRect;
    std::array<char, sizeof(defaults.programFolder)> folder{};
    const DWORD length = GetCurrentDirectoryA(folder.size(), folder.data());
    if (length < folder.size()) SetProgramFolder(defaults, folder.data());
    return defaults;
}

}  // namespace

const MessageMap& CMainFrame::GetMessageMap() const {
    static const MessageMap kMap = MakeMessageMap<CMainFrame>(
        CFrameWnd::GetMessageMap(),
        {
            {ID_GO_BACK, Notify::kCommand, &CMainFrame::GoBack},
            {ID_GO_FORWARD, Notify::kCommand, &CMainFrame::GoForward},
            {ID_GO_TO_LOCATION, Notify::kCommand, &CMainFrame::GoToLocation},
            {ID_GO_TO_ROOT, Notify::kCommand, &CMainFrame::GoToRoot},
            {ID_SHOW_SHARES, Notify::kCommand, &CMainFrame::ToggleSharesMode},
            {ID_VIEW_OWN_ICONS, Notify::kCommand, &CMainFrame::ToggleOwnIcons},
            {ID_SETTINGS, Notify::kCommand, &CMainFrame::EditSettings},
            {ID_PERMISSIONS, Notify::kCommand, &CMainFrame::OpenSecurityEditor},
            {ID_SECURE_DELETION, Notify::kCommand, &CMainFrame::StartSecureDeletion},
            {ID_WIZARD, Notify::kCommand, &CMainFrame::StartWizard},
            {ID_SHOW_SHARES, Notify::kUpdateCommand, &CMainFrame::OnUpdateSharesMode},
            {ID_NEW_FOLDER, Notify::kCommand, &CMainFrame::CreateNewFolder},
            {ID_GO_BACK, Notify::kUpdateCommand, &CMainFrame::OnUpdateFileCommand},
            {ID_GO_FORWARD, Notify::kUpdateCommand, &CMainFrame::OnUpdateFileCommand},
            {ID_GO_UP, Notify::kUpdateCommand, &CMainFrame::OnUpdateFileCommand},
            {ID_ATTRIBUTES, Notify::kUpdateCommand, &CMainFrame::OnUpdateFileCommand},
            {ID_SECURE_DELETION, Notify::kUpdateCommand, &CMainFrame::OnUpdateFileCommand},
            {ID_WIZARD, Notify::kUpdateCommand, &CMainFrame::OnUpdateFileCommand},
            {ID_EDIT_CUT, Notify::kUpdateCommand, &CMainFrame::OnUpdateFileCommand},
            {ID_EDIT_COPY, Notify::kUpdateCommand, &CMainFrame::OnUpdateFileCommand},
            {ID_EDIT_PASTE, Notify::kUpdateCommand, &CMainFrame::OnUpdateFileCommand},
            {ID_RENAME, Notify::kUpdateCommand, &CMainFrame::OnUpdateFileCommand},
        });
    return kMap;
}

bool CMainFrame::OnCmdMsg(Notification& notification) {
    return view.OnCmdMsg(notification) || CFrameWnd::OnCmdMsg(notification);
}

bool CMainFrame::OnCreate() {
    if (!CFrameWnd::OnCreate()) return false;
    LoadOrMakeSettings();
    view.viewModeChosen = [this](std::uint32_t mode) { settings.block.viewMode = mode; };
    view.Create(*this, kViewId, GetCommandLineA());
    SetView(view);
    if (!CreateBars()) return false;

    view.addressBar = &addressBarWnd;
    view.statusBar = &statusBarWnd;
    addressBarWnd.SetLocationText(view.currentFolder.empty() ? kDriveListLocation : view.currentFolder);
    statusBarWnd.SetIndicators({CStatusBar::kSeparator, IDS_ITEM_COUNT_PANE});
    statusBarWnd.SetPaneWidth(kItemCountPane, kItemCountWidth);
    securitySheet.SetUp(this);
    shareSheet.SetUp(this);
    wizardSheet.SetUp(this);
    LoadToolBarImages();
    ApplySettings();
    return true;
}

bool CMainFrame::CreateBars() {
    constexpr int kLeastToolBar = 48;  // a button, and the one that leads to the others
    return toolBar.Create(*this) && toolBar.LoadToolBar(IDR_MAIN_FRAME) &&
           addressBarWnd.Create(*this, IDD_ADDRESS_BAR) && reBar.Create(*this) &&
           reBar.AddBar(toolBar, kLeastToolBar) && reBar.AddBar(addressBarWnd, addressBarWnd.LeastWidth()) &&
           statusBarWnd.Create(*this);
}

void CMainFrame::LoadToolBarImages() {
    toolBarImages.Create(kToolBarImageSize);
    for (const unsigned int icon : kToolBarIcons)
        toolBarImages.Add(CIcon::Load(icon));
    toolBar.SetImageList(toolBarImages);
}

void CMainFrame::OnSize(Size client) {
    CFrameWnd::OnSize(client);
    if (!addressBarWnd.HasWindow()) return;
    reBar.RedrawWindow();
    toolBar.RedrawWindow();
    addressBarWnd.RedrawWindow();
}

void CMainFrame::OnClose() {
    KeepSettings();
    CFrameWnd::OnClose();
}

// ---- Settings ----

void CMainFrame::KeepSettings() {
    if (const DWORD error = SaveSettings(); error != ERROR_SUCCESS)
        ShowErrorWithSystemText(GetSafeHwnd(), "saving settings", error);
}

DWORD CMainFrame::ReadSettings() {
    settings = DefaultSettings(GetWindowRect());
    return LoadSettings(settings);
}

DWORD CMainFrame::SaveSettings() {
    if (GetPlacement().showState == ShowState::kMaximised) {
        settings.showCommand = kShowMaximised;
    } else {
        settings.windowRect = GetWindowRect();
        settings.showCommand = kShowNormal;
    }
    return StoreSettings(settings);
}

// On a first start there is nothing to read. Then the defaults are stored and read back.
void CMainFrame::LoadOrMakeSettings() {
    if (ReadSettings() == ERROR_SUCCESS) return;
    if (const DWORD error = SaveSettings(); error != ERROR_SUCCESS) {
        ShowErrorWithSystemText(GetSafeHwnd(), "saving settings", error);
        // The help can be found all the same.
        if (const std::string folder = OwnFolderWithHelp(); !folder.empty())
            SetProgramFolder(settings, folder);
        return;
    }
    DWORD error = ReadSettings();
    if (error == ERROR_FILE_NOT_FOUND) error = TellOwnFolder();
    if (error != ERROR_SUCCESS) {
        ShowErrorWithSystemText(GetSafeHwnd(), "Reading settings", error);
        ExitProcess(0);
    }
}

// Does what no installation has done: where the help is beside the program, its folder is known.
DWORD CMainFrame::TellOwnFolder() {
    const std::string folder = OwnFolderWithHelp();
    if (folder.empty()) return ERROR_FILE_NOT_FOUND;
    const DWORD error = StoreProgramFolder(SettingsOwner::kUser, folder);
    return error == ERROR_SUCCESS ? ReadSettings() : error;
}

void CMainFrame::ApplySettings() {
    toolBar.EnableToolTips(settings.block.showToolTips != 0);
    view.ApplyViewSettings(settings.block.viewMode, settings.block.useOwnIcons != 0);
    UpdateExplorerVerb();
}

void CMainFrame::UpdateExplorerVerb() {
    const DWORD error = settings.block.explorerMenu != 0 ? RegisterExplorerVerb(ProgramFolder(settings))
                                                         : RemoveExplorerVerb();
    if (error != ERROR_SUCCESS)
        ShowErrorWithSystemText(GetSafeHwnd(), "Error: adding items to explorer menu", error);
}

void CMainFrame::RestorePlacement() {
    WindowPlacement placement = GetPlacement();
    // A rectangle off all screens is the framework's to mend; one that nobody can mean is left out.
    if (IsUsableWindow(settings.windowRect)) placement.normalRect = settings.windowRect;
    placement.showState = settings.showCommand == kShowMaximised ? ShowState::kMaximised : ShowState::kNormal;
    SetPlacement(placement);
}

// ---- Commands ----

void CMainFrame::CreateNewFolder() {
    view.CreateNewFolder();
}

void CMainFrame::ShareFolder() {
    const bool isShared = CNewShareDlg(this).DoModal() == IDOK;
    if (isShared && view.sharesMode) view.RefreshList();
}

void CMainFrame::GoBack() {
    LeaveSharesMode();
    view.MoveInHistory(-1);
}

void CMainFrame::GoForward() {
    LeaveSharesMode();
    view.MoveInHistory(1);
}

void CMainFrame::GoToLocation() {
    // Leaving shares mode puts the folder's path into the field.
    const std::string typed = addressBarWnd.locationText;
    if (view.sharesMode && typed == kShareListLocation) {
        view.RefreshList();
        return;
    }
    LeaveSharesMode();
    view.GoToLocation(typed);
}

void CMainFrame::GoToRoot() {
    LeaveSharesMode();
    view.GoToRoot();
}

void CMainFrame::ToggleSharesMode() {
    if (view.sharesMode) {
        LeaveSharesMode();
        return;
    }
    GetMenu().SetText(ID_NEW_FOLDER, "&New Share...");
    toolBar.PressButton(ID_SHOW_SHARES, true);
    view.EnterSharesMode();
}

void CMainFrame::LeaveSharesMode() {
    if (!view.sharesMode) return;
    GetMenu().SetText(ID_NEW_FOLDER, "&New Folder...");
    toolBar.PressButton(ID_SHOW_SHARES, false);
    view.LeaveSharesMode();
}

void CMainFrame::ToggleOwnIcons() {
    const bool ownIcons = !view.useOwnIcons;
    view.SetOwnIcons(ownIcons);
    settings.block.useOwnIcons = ownIcons ? 1 : 0;
    view.RefreshList();
}

void CMainFrame::EditSettings() {
    CSettingsDlg dialog(this);
    dialog.block = settings.block;
    if (dialog.DoModal() != IDOK) return;
    settings.block = dialog.block;
    ApplySettings();
    if (const DWORD error = SaveSettings(); error != ERROR_SUCCESS)
        ShowErrorWithSystemText(GetSafeHwnd(), "Error: saving settings", error);
}

// The editor shows the first selected item and works on all of them.
void CMainFrame::OpenSecurityEditor() {
    const std::span<const LPCSTR> names = view.GetSelectedNames();
    if (names.size() > 1 && settings.block.showIntermediateInfo != 0) {
        CInfoDlg1 notice(this);
        notice.showIntermediateInfo = &settings.block.showIntermediateInfo;
        notice.DoModal();
    }
    if (names.empty())
        ShowInfoBox(GetSafeHwnd(), kSelectItems);
    else if (view.sharesMode)
        EditShares(names);
    else if (Place place; HoldSelection(names, place))
        EditItems(place);
    view.ReleaseSelection();
}

void CMainFrame::EditItems(const Place& place) {
    securitySheet.SetPlace(place);
    securitySheet.DoModal();
}

void CMainFrame::EditShares(std::span<const char* const> names) {
    shareSheet.SetPlace({PlaceKind::kShares, nullptr, {names.begin(), names.end()}});
    shareSheet.DoModal();
}

// For the properties of a row. The editor works on a bare name in a folder that is held, so that nobody can
// put another folder into the path while it is open.
void CMainFrame::EditItemAt(const std::string& path) {
    const std::string folder = FolderAbove(path);
    const bool isDriveRoot = folder.empty();
    std::string before;
    bool canGoBack = false;
    if (!isDriveRoot && view.sharesMode) {
        canGoBack = view.QueryCurrentDirectory(before);
        if (!EnterFolder(folder)) {
            ShowLastErrorBox(GetSafeHwnd());
            return;
        }
    } else if (!isDriveRoot && !view.MayWorkOnRows()) {
        return;
    }
    Place place{PlaceKind::kDrives, nullptr, {path}};
    if (isDriveRoot || HoldCurrentFolder({NameInFolder(path)}, place)) EditItems(place);
    if (canGoBack) SetCurrentDirectoryA(before.c_str());
}

// What is selected is held before the question, and what is held is deleted.
void CMainFrame::StartSecureDeletion() {
    constexpr const char* kCaption = "Secure deletion";
    const std::span<const LPCSTR> names = view.GetSelectedNames();
    CSecureDelete dialog(this);
    if (names.empty()) {
        ShowInfoBox(GetSafeHwnd(), kSelectItems);
    } else if (view.currentFolder.empty()) {
        MessageBoxA(GetSafeHwnd(), "Cannot remove disk drive.", kCaption, MB_OK | MB_ICONWARNING);
    } else if (Place place; !HoldSelection(names, place)) {
        view.RefreshList();
    } else if (dialog.chosen = RememberPlace(place).items; MayDeleteSelection(kCaption)) {
        dialog.DoModal();
        view.RefreshList();
    }
    view.ReleaseSelection();
}

bool CMainFrame::HoldSelection(std::span<const char* const> names, Place& place) {
    if (!view.MayWorkOnRows()) return false;
    std::vector<std::string> selected(names.begin(), names.end());
    if (!view.driveListShown) return HoldCurrentFolder(std::move(selected), place);
    place = {PlaceKind::kDrives, nullptr, std::move(selected)};
    return true;
}

bool CMainFrame::HoldCurrentFolder(std::vector<std::string> names, Place& place) {
    auto folder = std::make_shared<FolderHandle>();
    const DWORD error = FolderHandle::OpenCurrent(*folder);
    if (error != ERROR_SUCCESS) ShowSystemErrorBox(GetSafeHwnd(), error);
    place = {PlaceKind::kFolder, std::move(folder), std::move(names)};
    return error == ERROR_SUCCESS;
}

bool CMainFrame::MayDeleteSelection(const char* caption) const {
    return settings.block.askBeforeSecureDeletion == 0 ||
           MessageBoxA(GetSafeHwnd(),
                       "You will not be able to restore information.\nAre you sure you want to delete the "
                       "selected items?",
                       caption, MB_YESNO | MB_ICONQUESTION) == IDYES;
}

void CMainFrame::StartWizard() {
    const std::span<const LPCSTR> names = view.GetSelectedNames();
    if (names.empty()) {
        ShowInfoBox(GetSafeHwnd(), kSelectItems);
        return;
    }
    Place place;
    if (!HoldSelection(names, place)) return;
    wizardSheet.SetPlace(place, {.askBeforeSecureDeletion = settings.block.askBeforeSecureDeletion != 0,
                                 .showIntermediateInfo = &settings.block.showIntermediateInfo});
    wizardSheet.DoModal();
    if (!view.currentFolder.empty()) view.RefreshList();
    view.RedrawWindow();
}

// Shares have no place in the history and nothing above them, and are no files.
void CMainFrame::OnUpdateFileCommand(Notification& notification) {
    notification.state.enabled = !view.sharesMode;
}

// Shown in the menu and as the toolbar's pressed button.
void CMainFrame::OnUpdateSharesMode(Notification& notification) {
    notification.state.checked = view.sharesMode;
}

}  // namespace permora
