// Filling the list: drives and folders.
#include <string>

#include "browser/address_bar.h"
#include "browser/browser_view.h"
#include "browser/drive_rows.h"
#include "browser/list_presentation.h"
#include "framework/bars.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

// A root and its NUL in the system's list of drives.
constexpr std::size_t kDriveEntryLength = 4;

// "C:\" and so on, each with its NUL; empty when the system gives none. A drive may come while we ask.
std::string DriveStrings(HWND owner) {
    DWORD size = GetLogicalDriveStringsA(0, nullptr);
    while (true) {
        const UniqueLocal<char> buffer(static_cast<char*>(LocalAlloc(LMEM_FIXED, size)));
        if (!buffer) ShowFatalLastErrorBox(owner);
        const DWORD length = GetLogicalDriveStringsA(size, buffer.get());
        if (length == 0 || length < size) return {buffer.get(), length};
        size = length;
    }
}

DWORD FileSystemFlagsOf(const std::string& root) {
    DWORD flags = 0;
    const bool isKnown =
        GetVolumeInformationA(root.c_str(), nullptr, 0, nullptr, nullptr, &flags, nullptr, 0) != FALSE;
    return isKnown ? flags : 0;
}

std::string FixedDriveSize(const std::string& root) {
    ULARGE_INTEGER available{};
    ULARGE_INTEGER total{};
    if (GetDiskFreeSpaceExA(root.c_str(), &available, &total, nullptr) == FALSE) return {};
    return DriveSizeText(total.QuadPart, available.QuadPart);
}

}  // namespace

bool BrowserView::ListFolder(const std::string& path) {
    if (!EnterFolder(path) || !list.DeleteAllItems() || !InitFolderImages()) return false;
    ShowState("Processing...");
    const bool isFilled = FillFolder();
    const DWORD error = GetLastError();
    ShowState("Ready");
    if (!isFilled || !QueryCurrentDirectory(currentFolder)) {
        if (!isFilled) SetLastError(error);
        return false;
    }
    ShowLocation(currentFolder);
    return true;
}

// Folders first, then files, each in the order of the directory search.
bool BrowserView::FillFolder() {
    int row = 0;
    return FillPass(EntryKind::kFolder, row) && FillPass(EntryKind::kFile, row);
}

bool BrowserView::FillPass(EntryKind wanted, int& row) {
    constexpr int kCountStep = 10;
    bool hasParent = false;
    FolderSearch search;
    WIN32_FIND_DATAA found{};
    while (search.Next(found)) {
        const EntryKind kind = KindOf(found);
        if (kind == EntryKind::kParent) hasParent = true;
        if (kind != wanted) continue;
        if (!AddFolderRow(row, found)) return false;
        ++row;
        if (row % kCountStep == 0) ShowItemCount(row);
    }
    if (search.Error() != ERROR_SUCCESS) {
        SetLastError(search.Error());
        return false;
    }
    ShowItemCount(row);
    PaintStatusBar();
    isDriveRoot = !hasParent;
    itemCount = row;
    driveListShown = false;
    return true;
}

bool BrowserView::AddFolderRow(int row, const WIN32_FIND_DATAA& found) {
    const std::string name = found.cFileName;
    const int image = useOwnIcons ? OwnIconIndex(found) : static_cast<int>(kFolderImageCount) + row;
    if (!list.InsertItem(row, name, image) || !list.SetItemData(row, row)) return false;
    if (!useOwnIcons) AddShellIcons(name);
    if (detailsView) FillDetails(name, row, found);
    return true;
}

bool BrowserView::ListDrives() {
    if (!list.DeleteAllItems() || !InitDriveImages()) return false;
    const std::string roots = DriveStrings(GetSafeHwnd());
    itemCount = 0;
    for (std::size_t place = 0; place + kDriveEntryLength <= roots.size(); place += kDriveEntryLength) {
        if (!AddDriveRow(itemCount, roots.c_str() + place)) return false;
        ++itemCount;
        ShowItemCount(itemCount);
        PaintStatusBar();
    }
    ShowLocation(kDriveListLocation);
    driveListShown = true;
    return true;
}

// `drive` is the drive's position in the system's list, which the rows keep among those that are shown.
bool BrowserView::AddDriveRow(int drive, const std::string& root) {
    const UINT type = GetDriveTypeA(root.c_str());
    DriveLook look = LookOfDrive(type);
    if (DependsOnFileSystem(look)) look = WithFileSystem(look, FileSystemFlagsOf(root));
    if (look.image < 0) return true;
    const std::string size = type == DRIVE_FIXED ? FixedDriveSize(root) : std::string();
    const int row = list.GetItemCount();
    return list.InsertItem(row, root, look.image) && list.SetItemData(row, drive) &&
           list.SetItemText(row, kTypeColumn, look.typeText) && list.SetItemText(row, kSizeColumn, size);
}

bool BrowserView::QueryCurrentDirectory(std::string& path) const {
    const DWORD size = GetCurrentDirectoryA(0, nullptr);
    if (size == 0) return false;
    const UniqueLocal<char> buffer(static_cast<char*>(LocalAlloc(LMEM_FIXED, size)));
    if (!buffer) ShowFatalLastErrorBox(GetSafeHwnd());
    const DWORD length = GetCurrentDirectoryA(size, buffer.get());
    if (length == 0 || length >= size) return false;  // it changed in between
    path.assign(buffer.get(), length);
    return true;
}

void BrowserView::ShowLocation(const std::string& text) {
    list.SetWindowText(text);  // as which assistive technology knows it
    if (addressBar != nullptr) addressBar->SetLocationText(text);
}

// ---- The status bar. No message loop runs while a folder is read, so what it says is painted at once. ----

void BrowserView::ShowState(const char* text) {
    if (statusBar == nullptr) return;
    statusBar->SetPaneText(kMessagePane, text);
    PaintStatusBar();
}

// Painting each tenth row of a fast folder would cost more than reading it: the display's pace is enough.
void BrowserView::ShowItemCount(int count) {
    if (statusBar == nullptr) return;
    constexpr std::chrono::milliseconds kDisplayPace(16);
    statusBar->SetPaneText(kCountPane, "Total items: " + std::to_string(count) + ' ');
    if (std::chrono::steady_clock::now() - statusPainted >= kDisplayPace) PaintStatusBar();
}

void BrowserView::PaintStatusBar() {
    if (statusBar == nullptr) return;
    statusBar->RedrawWindow();
    statusPainted = std::chrono::steady_clock::now();
}

}  // namespace permora
