// Moving between locations, and opening rows.
#include <utility>

#include "browser/browser_view.h"
#include "browser/drive_rows.h"
#include "browser/folder_paths.h"
#include "browser/list_presentation.h"
#include "browser/share_rows.h"
#include "browser/shell_items.h"
#include "framework/frame_window.h"
#include "platform/api/files.h"
#include "platform/host_path.h"
#include "platform/network_path.h"
#include "platform/visible_text.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

std::unique_ptr<RowSource> RowsOf(const std::string& folder) {
    if (folder.empty()) return std::make_unique<DriveRows>();
    return std::make_unique<FolderRows>(folder);
}

}  // namespace

bool BrowserView::ShowLocationAgain() {
    if (ListAgain().IsDone()) return true;
    return IsShowing(PlaceKind::kFolder) && IsFolderGone(Rows().Folder()) && ShowNearestParent();
}

// A folder that vanishes is reported, since the user did not choose to leave it.
bool BrowserView::ShowNearestParent() {
    const std::string gone = location->Folder();
    std::string nearest = FolderAbove(gone);
    while (!Show(RowsOf(nearest)).IsDone()) {
        if (nearest.empty()) return false;
        nearest = FolderAbove(nearest);
    }
    history.Record(location->Folder());
    const std::string shown = nearest.empty() ? "the list of disk drives" : '"' + location->Folder() + '"';
    ShowInfoBox(
        GetSafeHwnd(),
        ("The folder \"" + gone + "\" does not exist any more.\nShowing " + shown + " instead.").c_str());
    return true;
}

void BrowserView::MoveInHistory(HistoryStep step) {
    const std::optional<std::string> target = history.Neighbour(step);
    if (!target) return;
    if (Show(RowsOf(*target)).IsDone())
        history.Move(step);
    else
        ShowLocationAgain();
}

void BrowserView::GoUp() {
    const auto* folder = dynamic_cast<const FolderRows*>(&Rows());
    if (folder == nullptr) return;
    std::unique_ptr<FolderRows> above = folder->From("..");
    if (const Outcome outcome = above->Open(); !outcome.IsDone()) {
        if (!IsFolderGone(folder->Folder()) || !ShowNearestParent()) ShowOutcome(GetSafeHwnd(), outcome);
        return;
    }
    // The root of a drive has nothing above it.
    const std::string left = folder->Folder();
    const bool isRoot = above->Folder() == left;
    if (isRoot)
        GoToRoot();
    else if (!GoTo(std::make_unique<FolderRows>(above->Folder())))
        return;
    if (const int row = RowNamed(isRoot ? left : NameInFolder(left)); row >= 0) SelectOnly(row);
}

void BrowserView::GoToRoot() {
    if (!Show(std::make_unique<DriveRows>()).IsDone())
        ShowFatalErrorBox(GetSafeHwnd(), "Cannot get drive list");
    history.Record({});
}

void BrowserView::GoToLocation(const std::string& text) {
    constexpr std::size_t kLongestPath = 260;
    if (text == kDriveListLocation && IsShowing(PlaceKind::kDrives)) return;
    if (text.size() > kLongestPath) {
        ShowErrorBox(GetSafeHwnd(), "The path specified is too long");
        return;
    }
    const std::string path = PathFromTyped(text);
    if (const std::string command = MountCommandFor(path); !command.empty()) {
        ShowErrorBox(
            GetSafeHwnd(),
            ("No mount of this share is known here. To mount it:\r\n\r\n" + VisibleText(command)).c_str());
        return;
    }
    const auto* folder = dynamic_cast<const FolderRows*>(&Rows());
    std::unique_ptr<FolderRows> typed =
        folder != nullptr ? folder->From(path) : std::make_unique<FolderRows>(path);
    const Outcome outcome = path.empty() ? Outcome{ERROR_FILE_NOT_FOUND} : typed->Open();
    ShowOutcome(GetSafeHwnd(), outcome);
    if (outcome.IsDone() && GoTo(std::make_unique<FolderRows>(typed->Folder()))) list.SetFocus();
}

// Shows another location and records it. On false, the reason was reported, and the previous location is
// shown.
bool BrowserView::GoTo(std::unique_ptr<RowSource> source) {
    if (const Outcome outcome = Show(std::move(source)); !outcome.IsDone()) {
        ShowOutcome(GetSafeHwnd(), outcome);
        if (!ShowLocationAgain()) ShowFatalErrorBox(GetSafeHwnd(), "Error: unknown error");
        return false;
    }
    history.Record(location->Folder());
    return true;
}

void BrowserView::ShowItem(const std::string& path) {
    const std::string folder = FolderAbove(path);
    if ((folder.empty() || Rows().Folder() != folder) && !GoTo(RowsOf(folder))) return;
    const std::string name = folder.empty() ? path : NameInFolder(path);
    if (RowNamed(name) < 0) RefreshList();  // it may be new
    const int row = RowNamed(name);
    if (row < 0) {
        ShowInfoBox(GetSafeHwnd(), ("The list does not show \"" + name + "\".").c_str());
        return;
    }
    SelectOnly(row);
}

void BrowserView::OpenSelected() {
    const int row = list.GetSelectionMark();
    if (row < 0 || IsShowing(PlaceKind::kShares)) return;
    const std::string name = list.GetItemText(row, kNameColumn);
    const DWORD error = Rows().MakeCurrent();
    // An object whose attributes cannot be read counts as a folder.
    if (error != ERROR_SUCCESS)
        ShowSystemErrorBox(GetSafeHwnd(), error);
    else if ((GetFileAttributesA(name.c_str()) & FILE_ATTRIBUTE_DIRECTORY) != 0)
        OpenFolderRow(name);
    else if (!OpenByShell(nullptr, name))
        ShowErrorBox(GetSafeHwnd(), ("Error: cannot open \"" + name + '"').c_str());
    list.RedrawWindow();
}

bool BrowserView::ShowPlace(const TreePlace& place) {
    if (IsShowing(place.kind) && Rows().Folder() == place.folder) return true;
    if (IsShowing(PlaceKind::kShares) || place.kind == PlaceKind::kShares) {
        if (CFrameWnd* frame = Frame()) frame->RunCommand(ID_SHOW_SHARES);  // and back
        if (place.kind == PlaceKind::kShares || IsShowing(PlaceKind::kShares)) return IsShowing(place.kind);
    }
    if (place.kind == PlaceKind::kFolder)
        return Rows().Folder() == place.folder || GoTo(RowsOf(place.folder));
    if (!IsShowing(PlaceKind::kDrives)) GoToRoot();
    return true;
}

void BrowserView::OpenFolderRow(const std::string& name) {
    GoTo(Rows().Enter(name));
}

void BrowserView::ShowShares() {
    aside = std::make_unique<ShareRows>();
    list.SetColumnText(kTypeColumn, aside->TypeHeader());
    ShowOutcome(GetSafeHwnd(), Fill(*aside));
    ShowLocation(*aside);
}

void BrowserView::LeaveShares() {
    aside.reset();
    list.SetColumnText(kTypeColumn, location->TypeHeader());
    RefreshList();
}

}  // namespace permora
