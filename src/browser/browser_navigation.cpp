// Moving between locations, and opening rows.
#include <memory>
#include <string>
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
#include "platform/volume_question.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

std::shared_ptr<RowSource> RowsOf(const std::string& folder) {
    if (folder.empty()) return std::make_shared<DriveRows>();
    return std::make_shared<FolderRows>(folder);
}

// What was typed as a location, once its volume has answered.
struct TypedLocation {
    std::string mountCommand;  // of a share that is not mounted
    std::string folder;
};

// A row that the user opens.
struct OpenedRow {
    bool isFolder = false;
    bool isFailed = false;  // no program opens the file
};

Outcome FindTyped(const std::string& text, const FolderRows* shown, TypedLocation& location) {
    const std::string path = PathFromTyped(text);
    location.mountCommand = MountCommandFor(path);
    if (!location.mountCommand.empty()) return {};
    if (path.empty()) return {ERROR_FILE_NOT_FOUND};
    const std::unique_ptr<FolderRows> typed =
        shown != nullptr ? shown->From(path) : std::make_unique<FolderRows>(path);
    Outcome outcome = typed->Open();
    if (outcome.IsDone()) location.folder = typed->Folder();
    return outcome;
}

// Without asking where a share is mounted, which may hang as well.
std::string VolumeOfTyped(const std::string& text, const FolderRows* shown) {
    if (IsNetworkPath(text)) return text;
    const std::string path = PathFromTyped(text);
    return shown != nullptr ? shown->From(path)->Volume() : VolumeOfPath(path);
}

}  // namespace

bool BrowserView::IsGone(const std::string& folder) {
    bool isGone = false;
    const Outcome outcome =
        AskFor<bool>(VolumeOfPath(folder), isGone, [folder](bool& answer, PatientWork::Running&) {
            answer = IsFolderGone(folder);
            return Outcome();
        });
    return outcome.IsDone() && isGone;
}

// After a failure, which has been reported. What cannot be listed stays as it is shown.
void BrowserView::ShowLocationAgain() {
    const Outcome outcome = ListAgain();
    if (outcome.IsDone() || IsUnanswered(outcome)) return;
    if (IsShowing(PlaceKind::kFolder) && IsGone(Rows().Folder()) && ShowNearestParent()) return;
    if (outcome.code == ERROR_NOT_ENOUGH_MEMORY) ShowFatalErrorBox(GetSafeHwnd(), "Error: unknown error");
}

// A folder that vanishes is reported, since the user did not choose to leave it.
bool BrowserView::ShowNearestParent() {
    const std::string gone = location->Folder();
    std::string nearest = FolderAbove(gone);
    for (Outcome outcome = Show(RowsOf(nearest)); !outcome.IsDone(); outcome = Show(RowsOf(nearest))) {
        if (nearest.empty() || IsUnanswered(outcome)) return false;
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
    const Outcome outcome = Show(RowsOf(*target));
    if (outcome.IsDone())
        history.Move(step);
    else if (IsUnanswered(outcome))
        Tell(outcome);
    else
        ShowLocationAgain();
}

void BrowserView::GoUp() {
    if (GiveUpFor([this] { GoUp(); })) return;
    const auto* folder = dynamic_cast<const FolderRows*>(&Rows());
    if (folder == nullptr) return;
    const std::string left = folder->Folder();
    std::string above;
    const Outcome outcome = AskFor<std::string>(
        folder->Volume(), above,
        [rows = std::shared_ptr(folder->From(".."))](std::string& found, PatientWork::Running&) {
            Outcome opened = rows->Open();
            found = rows->Folder();
            return opened;
        });
    if (outcome.code == ERROR_TIMEOUT) return LeaveSilentFolder(left);
    if (!outcome.IsDone()) {
        if (IsUnanswered(outcome) || !IsGone(left) || !ShowNearestParent()) Tell(outcome);
        return;
    }
    // The root of a drive has nothing above it.
    const bool isRoot = above == left;
    if (isRoot)
        GoToRoot();
    else if (!GoTo(RowsOf(above)))
        return;
    if (const int row = RowNamed(isRoot ? left : NameInFolder(left)); row >= 0) SelectOnly(row);
}

// By its path, since nobody tells what is above it: to the first folder of another volume, or to the drives.
void BrowserView::LeaveSilentFolder(const std::string& folder) {
    std::string above = FolderAbove(folder);
    while (!above.empty() && VolumeOfPath(above) == VolumeOfPath(folder))
        above = FolderAbove(above);
    if (above.empty())
        GoToRoot();
    else
        GoTo(RowsOf(above));
}

void BrowserView::GoToRoot() {
    if (const Outcome outcome = Show(std::make_shared<DriveRows>()); !outcome.IsDone()) {
        if (IsUnanswered(outcome)) return Tell(outcome);
        ShowFatalErrorBox(GetSafeHwnd(), "Cannot get drive list");
    }
    history.Record({});
}

void BrowserView::GoToLocation(const std::string& text) {
    constexpr std::size_t kLongestPath = 260;
    if (text == kDriveListLocation && IsShowing(PlaceKind::kDrives)) return;
    if (text.size() > kLongestPath) {
        ShowErrorBox(GetSafeHwnd(), "The path specified is too long");
        return;
    }
    const auto shown = std::dynamic_pointer_cast<const FolderRows>(SharedRows());
    TypedLocation typed;
    const Outcome outcome = AskFor<TypedLocation>(VolumeOfTyped(text, shown.get()), typed,
                                                  [text, shown](TypedLocation& found, PatientWork::Running&) {
                                                      return FindTyped(text, shown.get(), found);
                                                  });
    if (!typed.mountCommand.empty()) {
        ShowErrorBox(GetSafeHwnd(), ("No mount of this share is known here. To mount it:\r\n\r\n" +
                                     VisibleText(typed.mountCommand))
                                        .c_str());
        return;
    }
    Tell(outcome);
    if (outcome.IsDone() && GoTo(RowsOf(typed.folder))) list.SetFocus();
}

// Shows another location and records it. On false, the reason was reported, and the previous location is
// shown.
bool BrowserView::GoTo(std::shared_ptr<RowSource> source) {
    if (const Outcome outcome = Show(std::move(source)); !outcome.IsDone()) {
        Tell(outcome);
        if (!IsUnanswered(outcome)) ShowLocationAgain();
        return false;
    }
    history.Record(location->Folder());
    return true;
}

void BrowserView::ShowItem(const std::string& path) {
    if (GiveUpFor([this, path] { ShowItem(path); })) return;
    const std::string folder = FolderAbove(path);
    if ((folder.empty() || Rows().Folder() != folder) && !GoTo(RowsOf(folder))) return;
    const std::string name = folder.empty() ? path : NameInFolder(path);
    if (RowNamed(name) < 0 && !RefreshList({})) return;  // it may be new
    const int row = RowNamed(name);
    if (row < 0) {
        ShowInfoBox(GetSafeHwnd(), ("The list does not show \"" + name + "\".").c_str());
        return;
    }
    SelectOnly(row);
}

void BrowserView::OpenSelected() {
    if (GiveUpFor([this] { OpenSelected(); })) return;
    const int row = list.GetSelectionMark();
    if (row < 0 || IsShowing(PlaceKind::kShares)) return;
    const std::string name = list.GetItemText(row, kNameColumn);
    auto opened = std::make_shared<OpenedRow>();
    const Outcome outcome =
        Ask(Rows().VolumeOf(name), [opened, rows = SharedRows(), name](PatientWork::Running& running) {
            if (const DWORD error = rows->MakeCurrent(); error != ERROR_SUCCESS) return Outcome{error};
            // An object whose attributes cannot be read counts as a folder.
            opened->isFolder = (GetFileAttributesA(name.c_str()) & FILE_ATTRIBUTE_DIRECTORY) != 0;
            opened->isFailed = !opened->isFolder && !running.isGivenUp && !OpenByShell(nullptr, name);
            return Outcome();
        });
    if (!outcome.IsDone()) return Tell(outcome);  // and the thread may still write to `opened`
    if (opened->isFolder) OpenFolderRow(name);
    if (opened->isFailed) ShowErrorBox(GetSafeHwnd(), ("Error: cannot open \"" + name + '"').c_str());
    list.RedrawWindow();
}

bool BrowserView::ShowPlace(const TreePlace& place) {
    if (GiveUpFor([this, place] { ShowPlace(place); })) return false;
    if (IsShowing(place.kind) && Rows().Folder() == place.folder) return true;
    if (IsShowing(PlaceKind::kShares) || place.kind == PlaceKind::kShares) {
        if (CFrameWnd* frame = Frame()) frame->RunCommand(ID_SHOW_SHARES);  // and back
        if (place.kind == PlaceKind::kShares || IsShowing(PlaceKind::kShares)) return IsShowing(place.kind);
    }
    if (place.kind == PlaceKind::kFolder)
        return Rows().Folder() == place.folder || GoTo(RowsOf(place.folder));
    if (!IsShowing(PlaceKind::kDrives)) GoToRoot();
    return IsShowing(PlaceKind::kDrives);
}

void BrowserView::OpenFolderRow(const std::string& name) {
    GoTo(Rows().Enter(name));
}

// After a failure, the list has the shares before it.
bool BrowserView::ShowShares() {
    const auto shares = std::make_shared<ShareRows>();
    std::shared_ptr<Listing> listing;
    const Outcome read = Read(shares, listing);
    if (IsUnanswered(read)) {
        Tell(read);
        return false;
    }
    aside = shares;
    const Outcome filled = Fill(*shares, *listing);
    Tell(read.IsDone() ? filled : read);
    ShowLocation(*shares);
    return true;
}

bool BrowserView::LeaveShares() {
    const Outcome outcome = Show(location->Anew());
    if (outcome.IsDone()) return true;
    const bool isFolder = location->Kind() == PlaceKind::kFolder;
    if (!IsUnanswered(outcome) && isFolder && IsGone(location->Folder()) && ShowNearestParent()) return true;
    Tell(outcome);
    if (outcome.code != ERROR_CANCELLED) GoToRoot();
    return !IsShowing(PlaceKind::kShares);
}

}  // namespace permora
