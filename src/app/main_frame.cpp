#include "app/main_frame.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <iterator>
#include <memory>
#include <utility>

#include "app/program_folder.h"
#include "app/settings_dialog.h"
#include "app/settings_store.h"
#include "browser/drive_rows.h"
#include "browser/folder_paths.h"
#include "browser/share_rows.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/api/messages.h"
#include "platform/api/system.h"
#include "platform/volume_question.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"
#include "security/object_security.h"
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

RowIcons IconsOf(const ProgramSettings& settings) {
    return settings.block.useOwnIcons != 0 ? RowIcons::kOwn : RowIcons::kShell;
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
            {ID_EDIT_UNDO, Notify::kCommand, &CMainFrame::UndoLastChange},
            {ID_HISTORY, Notify::kCommand, &CMainFrame::ShowHistory},
            {ID_FIND, Notify::kCommand, &CMainFrame::Find},
            {ID_FIND, Notify::kUpdateCommand, &CMainFrame::OnUpdateSurvey},
            {ID_REPORT, Notify::kCommand, &CMainFrame::Report},
            {ID_RESTART_AS_ADMINISTRATOR, Notify::kCommand, &CMainFrame::RestartAsAdministrator},
            {ID_REPORT, Notify::kUpdateCommand, &CMainFrame::OnUpdateSurvey},
            {ID_EDIT_UNDO, Notify::kUpdateCommand, &CMainFrame::OnUpdateUndo},
            {ID_SHOW_SHARES, Notify::kUpdateCommand, &CMainFrame::OnUpdateSharesMode},
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
    view.SetViewModeObserver([this](std::uint32_t mode) { settings.block.viewMode = mode; });
    view.SetChoiceObserver([this] { KeepBrowserChoices(); });
    view.SetFolderEditor([this](const std::string& path) { EditItemAt(path); });
    view.Create(*this, kViewId, commandLine);
    SetView(view);
    if (!CreateBars()) return false;
    OfferAdministrator();

    view.AttachBars(addressBarWnd, statusBarWnd);
    statusBarWnd.SetIndicators({CStatusBar::kSeparator, IDS_ITEM_COUNT_PANE, CStatusBar::kSeparator});
    statusBarWnd.SetPaneWidth(kItemCountPane, kItemCountWidth);
    LoadToolBarImages();
    LoadBrowserChoices();
    ApplySettings();
    constexpr std::chrono::milliseconds kPause(500);
    stateTimer.Start(kPause, [this] { ShowWhatIsMissing(); });
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
    toolBar.TurnImagesWithLayout({ID_GO_BACK, ID_GO_FORWARD});
}

void CMainFrame::OnSize(Size client) {
    CFrameWnd::OnSize(client);
    if (!addressBarWnd.HasWindow()) return;
    reBar.RedrawWindow();
    toolBar.RedrawWindow();
    addressBarWnd.RedrawWindow();
}

void CMainFrame::OnClose() {
    if (view.GiveUpFor([this] { OnClose(); })) return;
    KeepSettings();
    CFrameWnd::OnClose();
}

void CMainFrame::OnDestroy() {
    survey.CloseWindows();
    help.reset();
    CFrameWnd::OnDestroy();
}

bool CMainFrame::ShowHelpPage(const std::string& place) {
    if (!help) help = std::make_unique<CHelpWindow>(this, ProgramFolder(settings));
    return help->Show(place);
}

// ---- Settings ----

void CMainFrame::KeepSettings() {
    if (const DWORD error = SaveSettings(); error != ERROR_SUCCESS)
        ShowErrorWithSystemText(GetSafeHwnd(), "saving settings", error);
}

DWORD CMainFrame::ReadSettings() {
    settings = DefaultSettings(GetWindowRect());
    sheetSize = LoadSheetSize();
    return LoadSettings(settings);
}

DWORD CMainFrame::SaveSettings() {
    if (GetPlacement().showState == ShowState::kMaximised) {
        settings.showCommand = kShowMaximised;
    } else {
        settings.windowRect = GetWindowRect();
        settings.showCommand = kShowNormal;
    }
    const DWORD error = sheetSize == LoadSheetSize() ? ERROR_SUCCESS : StoreSheetSize(sheetSize);
    return error == ERROR_SUCCESS ? StoreSettings(settings) : error;
}

// On a first start there is nothing to read. Then the defaults are stored and read back.
void CMainFrame::LoadOrMakeSettings() {
    if (ReadSettings() == ERROR_SUCCESS) return;
    if (const DWORD error = SaveSettings(); error != ERROR_SUCCESS) {
        ShowErrorWithSystemText(GetSafeHwnd(), "saving settings", error);
        // The help can be found nevertheless.
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

// Stands in for an installation: if the help is beside the program, the program's folder is stored.
DWORD CMainFrame::TellOwnFolder() {
    const std::string folder = OwnFolderWithHelp();
    if (folder.empty()) return ERROR_FILE_NOT_FOUND;
    const DWORD error = StoreProgramFolder(SettingsOwner::kUser, folder);
    return error == ERROR_SUCCESS ? ReadSettings() : error;
}

void CMainFrame::ApplySettings() {
    toolBar.EnableToolTips(settings.block.showToolTips != 0);
    view.ApplyViewSettings(settings.block.viewMode, IconsOf(settings));
    UpdateExplorerVerb();
}

void CMainFrame::LoadBrowserChoices() {
    const BrowserChoices choices = permora::LoadBrowserChoices();
    view.ChooseSecurityColumns(choices.securityColumns);
    view.SetDotNames(choices.showsDotNames ? DotNames::kListed : DotNames::kLeftOut);
    const auto width = static_cast<int>(choices.folderTreeWidth);
    view.ShowFolderTree(choices.showsFolderTree, width > 0 ? width : BrowserView::kUsualTreeWidth);
}

void CMainFrame::KeepBrowserChoices() {
    const DWORD error =
        StoreBrowserChoices({view.ChosenSecurityColumns(), view.GetDotNames() == DotNames::kListed,
                             view.ShowsFolderTree(), static_cast<std::uint32_t>(view.TreeWidth())});
    if (error != ERROR_SUCCESS) ShowErrorWithSystemText(GetSafeHwnd(), "saving settings", error);
}

void CMainFrame::UpdateExplorerVerb() {
    const DWORD error = settings.block.explorerMenu != 0 ? RegisterExplorerVerb(ProgramFolder(settings))
                                                         : RemoveExplorerVerb();
    if (error != ERROR_SUCCESS)
        ShowErrorWithSystemText(GetSafeHwnd(), "Error: adding items to explorer menu", error);
}

void CMainFrame::RestorePlacement() {
    WindowPlacement placement = GetPlacement();
    // The framework corrects a rectangle outside all screens. An impossible one is ignored.
    if (IsUsableWindow(settings.windowRect)) placement.normalRect = settings.windowRect;
    placement.showState = settings.showCommand == kShowMaximised ? ShowState::kMaximised : ShowState::kNormal;
    SetPlacement(placement);
}

// ---- Commands ----

void CMainFrame::ShareFolder() {
    const bool isShared = CNewShareDlg(this).DoModal() == IDOK;
    if (isShared && view.IsShowing(PlaceKind::kShares)) view.RefreshList();
}

void CMainFrame::GoBack() {
    if (LeaveSharesMode()) view.MoveInHistory(HistoryStep::kBack);
}

void CMainFrame::GoForward() {
    if (LeaveSharesMode()) view.MoveInHistory(HistoryStep::kForward);
}

void CMainFrame::GoToLocation() {
    // Leaving shares mode puts the folder's path into the field.
    const std::string typed = addressBarWnd.locationText;
    if (view.IsShowing(PlaceKind::kShares) && typed == kShareListLocation) {
        view.RefreshList();
        return;
    }
    if (LeaveSharesMode()) view.GoToLocation(typed);
}

void CMainFrame::GoToRoot() {
    if (LeaveSharesMode()) view.GoToRoot();
}

void CMainFrame::ToggleSharesMode() {
    if (view.IsShowing(PlaceKind::kShares))
        view.LeaveShares();
    else
        view.ShowShares();
    ShowSharesMode();
}

// False: the user gave up the location that would be shown, and with it what comes next.
bool CMainFrame::LeaveSharesMode() {
    if (!view.IsShowing(PlaceKind::kShares)) return true;
    const bool isLeft = view.LeaveShares();
    ShowSharesMode();
    return isLeft;
}

void CMainFrame::ShowSharesMode() {
    const bool isOn = view.IsShowing(PlaceKind::kShares);
    GetMenu().SetText(ID_NEW_FOLDER, isOn ? "&New Share..." : "&New Folder...");
    toolBar.PressButton(ID_SHOW_SHARES, isOn);
}

void CMainFrame::ToggleOwnIcons() {
    settings.block.useOwnIcons = settings.block.useOwnIcons != 0 ? 0 : 1;
    view.SetIcons(IconsOf(settings));
    view.RefreshList();
}

void CMainFrame::EditSettings() {
    CSettingsDlg dialog(this);
    dialog.block = settings.block;
    dialog.asksBeforeLosses = LoadAskBeforeLosses();
    if (dialog.DoModal() != IDOK) return;
    settings.block = dialog.block;
    ApplySettings();
    DWORD error = StoreAskBeforeLosses(dialog.asksBeforeLosses);
    if (error == ERROR_SUCCESS) error = SaveSettings();
    if (error != ERROR_SUCCESS) ShowErrorWithSystemText(GetSafeHwnd(), "Error: saving settings", error);
}

// For the properties of a row.
void CMainFrame::EditItemAt(const std::string& path) {
    Place place;
    const Outcome outcome = HoldItemAt(path, place);
    RememberedPlace remembered;
    view.Tell(outcome);
    if (outcome.IsDone() && Remember(VolumeOfPath(path), place, remembered))
        items.Edit(this, remembered, place.names.front());
}

// The editor works on a name in a held folder, so that nobody can put another folder into the path while it
// is open.
Outcome CMainFrame::HoldItemAt(const std::string& path, Place& place) {
    const std::string folder = FolderAbove(path);
    if (folder.empty()) return DriveRows().Hold({path}, place);
    if (view.IsShowing(PlaceKind::kFolder) && view.Rows().Folder() == folder)
        return view.HoldRows({NameInFolder(path)}, place);
    // A share's folder, or one of the tree. The separator follows it if it is a link.
    const auto hold = [folder, name = NameInFolder(path)](Place& held, PatientWork::Running&) {
        auto opened = std::make_shared<FolderHandle>();
        const DWORD error = FolderHandle::Open(folder + (folder.ends_with('\\') ? "" : "\\"), *opened);
        held = {PlaceKind::kFolder, std::move(opened), {name}};
        return Outcome{error};
    };
    return view.AskFor<Place>(VolumeOfPath(folder), place, hold);
}

// On false, the reason was reported. Each drive is a volume of its own.
bool CMainFrame::Remember(const std::string& volume, const Place& place, RememberedPlace& remembered) {
    if (place.kind != PlaceKind::kDrives) return RememberItems(volume, place, remembered);
    remembered.kind = place.kind;
    return std::ranges::all_of(place.names, [&](const std::string& name) {
        RememberedPlace drive;
        if (!RememberItems(VolumeOfPath(name), {place.kind, place.folder, {name}}, drive)) return false;
        std::ranges::move(drive.items, std::back_inserter(remembered.items));
        return true;
    });
}

bool CMainFrame::RememberItems(const std::string& volume, const Place& place, RememberedPlace& remembered) {
    const auto remember = [volume, place](RememberedPlace& found, PatientWork::Running& running) {
        found.kind = place.kind;
        if (place.kind != PlaceKind::kDrives) found.volume = volume;
        for (const std::string& name : place.names) {
            if (running.isGivenUp) break;
            found.items.emplace_back(place.folder, name);
            ++running.done;
        }
        // The kernel may have known all of this. What the editor reads first, it asks the volume for.
        HeldObject first;
        ObjectSecurity security;
        if (!found.items.empty() && FindItem(found.items.front(), first).IsDone())
            static_cast<void>(ReadObjectDacl(first, security));
        return Outcome();
    };
    const Outcome outcome = view.AskFor<RememberedPlace>(volume, remembered, remember);
    view.Tell(outcome);
    return outcome.IsDone();
}

void CMainFrame::UndoLastChange() {
    history.Undo();
}

void CMainFrame::ShowHistory() {
    history.Show();
}

void CMainFrame::Find() {
    survey.Find();
}

void CMainFrame::Report() {
    survey.Report();
}

void CMainFrame::OnUpdateSurvey(Notification& notification) {
    notification.state.enabled = survey.IsOffered();
}

// For the windows of results.
void CMainFrame::ShowInFolder(const ResultObject& object) {
    if (view.GiveUpFor([this, object] { ShowInFolder(object); }) || !LeaveSharesMode()) return;
    Activate();
    view.ShowItem(object.path);
}

// Asked for when the menu opens and when the key is pressed, not while the program is idle.
void CMainFrame::OnUpdateUndo(Notification& notification) {
    GetMenu().SetText(ID_EDIT_UNDO, history.UndoEntry(notification.state.enabled));
}

// Shares are not files, have nothing above them, and are not in the history.
void CMainFrame::OnUpdateFileCommand(Notification& notification) {
    notification.state.enabled = !view.IsShowing(PlaceKind::kShares);
}

// Shown in the menu and as the toolbar's pressed button.
void CMainFrame::OnUpdateSharesMode(Notification& notification) {
    notification.state.checked = view.IsShowing(PlaceKind::kShares);
}

}  // namespace permora
