// Moving between locations, and opening rows.
#include <algorithm>

#include "browser/browser_view.h"
#include "browser/folder_paths.h"
#include "browser/list_presentation.h"
#include "browser/shell_items.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/host_path.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

// Attributes that cannot be read count as those of a folder.
bool MayBeFolder(const std::string& path) {
    return (GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// There is no folder of that path any more. One that merely does not answer is not gone.
bool IsGone(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) return (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    const DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

}  // namespace

void BrowserView::ReportLastError() const {
    if (GetLastError() != ERROR_SUCCESS) ShowLastErrorBox(GetSafeHwnd());
}

std::string BrowserView::PathOfRow(const std::string& name) const {
    const bool endsInSeparator = currentFolder.empty() || currentFolder.ends_with('\\');
    return currentFolder + (endsInSeparator ? "" : "\\") + name;
}

void BrowserView::RecordLocation() {
    ++historyIndex;
    history.resize(static_cast<std::size_t>(historyIndex));
    history.push_back(currentFolder);
}

void BrowserView::RefreshList() {
    const int focusedRow = list.GetFocusedRow();
    const std::string focusedName = list.GetItemText(focusedRow, kNameColumn);
    const int markedRow = list.GetSelectionMark();
    const std::string markedName = list.GetItemText(markedRow, kNameColumn);
    if (ListAgain()) {
        if (markedRow >= 0) list.SetSelectionMark(RowNamed(markedName));
        if (focusedRow >= 0) FocusAgain(focusedName, focusedRow);
        return;
    }
    if (sharesMode) return;  // has been told
    if (currentFolder.empty()) {
        ReportLastError();
        return;
    }
    const DWORD error = GetLastError();
    if (IsGone(currentFolder) && ShowNearestParent()) return;
    SetLastError(error);
    ReportLastError();
}

bool BrowserView::ListAgain() {
    if (sharesMode) return ListShares();
    return currentFolder.empty() ? ListDrives() : ListFolder(currentFolder);
}

// The keyboard goes on at the row of that name, or where it was when there is none any more.
void BrowserView::FocusAgain(const std::string& name, int row) {
    const int again = RowNamed(name);
    list.SetFocusedRow(again >= 0 ? again : std::min(row, list.GetItemCount() - 1));
}

int BrowserView::RowNamed(const std::string& name) const {
    const int count = list.GetItemCount();
    for (int row = 0; row < count; ++row)
        if (list.GetItemText(row, kNameColumn) == name) return row;
    return -1;
}

bool BrowserView::ShowLocationAgain() {
    if (currentFolder.empty()) return ListDrives();
    return ListFolder(currentFolder) || (IsGone(currentFolder) && ShowNearestParent());
}

// What the user sees vanish is told, since nobody chose to go elsewhere.
bool BrowserView::ShowNearestParent() {
    const std::string gone = currentFolder;
    std::string nearest = FolderAbove(gone);
    while (!nearest.empty() && !ListFolder(nearest))
        nearest = FolderAbove(nearest);
    if (nearest.empty() && !ListDrives()) return false;
    if (nearest.empty()) currentFolder.clear();
    RecordLocation();
    const std::string shown = nearest.empty() ? "the list of disk drives" : '"' + currentFolder + '"';
    ShowInfoBox(
        GetSafeHwnd(),
        ("The folder \"" + gone + "\" does not exist any more.\nShowing " + shown + " instead.").c_str());
    return true;
}

void BrowserView::MoveInHistory(int step) {
    const int target = historyIndex + step;
    if (target < 0 || target >= static_cast<int>(history.size())) return;
    const std::string location = history[static_cast<std::size_t>(target)];
    const bool isShown = location.empty() ? ListDrives() : ListFolder(location);
    if (!isShown) {
        ShowLocationAgain();
        return;
    }
    historyIndex = target;
    if (location.empty()) currentFolder.clear();
}

void BrowserView::GoUp() {
    if (driveListShown) return;
    if (isDriveRoot) {
        ShowDrives();
        return;
    }
    std::string above;
    if (SetCurrentDirectoryA("..") == FALSE || !QueryCurrentDirectory(above)) {
        const DWORD error = GetLastError();
        if (IsGone(currentFolder) && ShowNearestParent()) return;
        SetLastError(error);
        ReportLastError();
        return;
    }
    if (above == currentFolder) {
        ShowDrives();
        return;
    }
    if (!MayBeFolder(above)) {
        ReportLastError();
        ReturnToShownFolder();
        return;
    }
    TryFolder(above);
}

void BrowserView::ShowDrives() {
    if (!ListDrives()) ShowFatalErrorBox(GetSafeHwnd(), "Cannot get drive list");
    currentFolder.clear();
    RecordLocation();
}

void BrowserView::GoToRoot() {
    ShowDrives();
    isDriveRoot = true;
}

void BrowserView::GoToLocation(const std::string& text) {
    constexpr std::size_t kLongestPath = 260;
    if (text == kDriveListLocation && driveListShown) return;
    if (text.size() > kLongestPath) {
        ShowErrorBox(GetSafeHwnd(), "The path specified is too long");
        return;
    }
    std::string path;
    if (!EnterFolder(PathFromTyped(text)) || !QueryCurrentDirectory(path)) {
        ReportLastError();
        ReturnToShownFolder();
        return;
    }
    if (!MayBeFolder(path)) {
        ShowErrorBox(GetSafeHwnd(), "Error: specified location is not directory");
        ReturnToShownFolder();
        return;
    }
    TryFolder(path);
}

// Shows another folder and records it, or says why not and shows the location before.
bool BrowserView::TryFolder(const std::string& path) {
    if (ListFolder(path)) {
        RecordLocation();
        return true;
    }
    ReportLastError();
    if (!ShowLocationAgain()) ShowFatalErrorBox(GetSafeHwnd(), "Error: unknown error");
    return false;
}

// Rows are found by their names in the current directory: it must not stay another than the one shown.
bool BrowserView::ReturnToShownFolder() const {
    if (currentFolder.empty()) return true;
    std::string before;
    const bool canGoBack = QueryCurrentDirectory(before);
    if (canGoBack && before == currentFolder) return true;
    if (SetCurrentDirectoryA(currentFolder.c_str()) == FALSE) return false;
    std::string path;
    const DWORD error = QueryCurrentDirectory(path) ? ERROR_CANT_RESOLVE_FILENAME : GetLastError();
    if (path == currentFolder) return true;
    if (canGoBack) SetCurrentDirectoryA(before.c_str());
    SetLastError(error);
    return false;
}

void BrowserView::OpenSelected() {
    const int row = list.GetSelectionMark();
    if (row < 0) return;
    const std::string name = list.GetItemText(row, kNameColumn);
    if (MayBeFolder(name))
        OpenFolderRow(name);
    else
        OpenFileRow(name);
    list.RedrawWindow();
}

void BrowserView::OpenFolderRow(const std::string& name) {
    const std::string path = PathOfRow(name);
    if (MayBeFolder(path))
        TryFolder(path);
    else
        ReportLastError();
}

void BrowserView::OpenFileRow(const std::string& name) {
    if (OpenByShell(nullptr, name)) return;
    ShowErrorBox(GetSafeHwnd(), ("Error: cannot open \"" + name + '"').c_str());
}

}  // namespace permora
