#include "browser/folder_rows.h"

#include <string_view>
#include <utility>

#include "browser/list_presentation.h"
#include "browser/shell_items.h"
#include "platform/api/directory_search.h"
#include "platform/api/files.h"
#include "platform/host_path.h"
#include "platform/shell_icons.h"
#include "platform/volume_question.h"

namespace permora {
namespace {

// One search of the current directory for "*".
class FolderSearch {
  public:
    FolderSearch() = default;
    ~FolderSearch() {
        if (search != INVALID_HANDLE_VALUE) FindClose(search);
    }
    FolderSearch(const FolderSearch&) = delete;
    FolderSearch& operator=(const FolderSearch&) = delete;

    // False at the end, and on an error.
    bool Next(WIN32_FIND_DATAA& found) {
        const bool isFirst = search == INVALID_HANDLE_VALUE;
        if (isFirst) search = FindFirstFileA("*", &found);
        if (isFirst ? search != INVALID_HANDLE_VALUE : FindNextFileA(search, &found) != FALSE) return true;
        const DWORD reason = GetLastError();
        error = reason == ERROR_NO_MORE_FILES ? ERROR_SUCCESS : reason;
        return false;
    }
    // Why Next returned false: ERROR_SUCCESS at the end of the folder.
    DWORD Error() const { return error; }

  private:
    HANDLE search = INVALID_HANDLE_VALUE;
    DWORD error = ERROR_SUCCESS;
};

bool IsFullPath(std::string_view path) {
    constexpr std::string_view kSeparators = "\\/";
    const bool isBelowDrive = path.size() > 2 && path[1] == ':' && kSeparators.find(path[2]) != path.npos;
    return isBelowDrive || path.starts_with("\\\\");
}

bool IsFolder(const WIN32_FIND_DATAA& found) {
    return (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::string SizeTextOf(const WIN32_FIND_DATAA& found) {
    return FormatSize((std::uint64_t{found.nFileSizeHigh} << 32) | found.nFileSizeLow);
}

// A link is followed only with a separator at the end.
DWORD OpenFolder(const FolderHandle* base, const std::string& path, FolderHandle& folder) {
    const auto open = [&](const std::string& each) {
        return base != nullptr ? base->OpenPath(each, folder) : FolderHandle::Open(each, folder);
    };
    const DWORD error = open(path);
    return error == ERROR_CANT_RESOLVE_FILENAME ? open(path + '\\') : error;
}

DWORD QueryCurrentDirectory(std::string& path) {
    std::string found(GetCurrentDirectoryA(0, nullptr), '\0');
    const DWORD length = GetCurrentDirectoryA(static_cast<DWORD>(found.size()), found.data());
    if (length == 0) return GetLastError();
    if (length >= found.size()) return ERROR_CANT_RESOLVE_FILENAME;  // it was renamed in between
    path.assign(found, 0, length);
    return ERROR_SUCCESS;
}

// Adds the folders, or everything else, after `count` rows.
Outcome ListPass(bool wantsFolders, const RowOptions& options, int& count, RowReceiver& receiver) {
    constexpr int kCountStep = 10;
    FolderSearch search;
    WIN32_FIND_DATAA found{};
    while (search.Next(found)) {
        if (!receiver.GoOn()) return {ERROR_CANCELLED};
        if (!IsListedName(found.cFileName, options.dots) || IsFolder(found) != wantsFolders) continue;
        Row row{.name = found.cFileName, .position = count};
        row.image = options.icons == RowIcons::kOwn ? OwnIconIndex(found) : kShellImage;
        if (options.icons == RowIcons::kShell) row.shellIcon = ShellIconKindOf(row.name.c_str());
        if (options.detail == RowDetail::kAll) {
            row.type = ShellTypeName(row.name);
            if (!wantsFolders) row.size = SizeTextOf(found);
            row.modified = ModifiedText(found.ftLastWriteTime);
        }
        if (!receiver.Add(std::move(row))) return {ERROR_NOT_ENOUGH_MEMORY};
        if (++count % kCountStep == 0) receiver.ShowCount(count);
    }
    return {search.Error()};
}

}  // namespace

bool IsListedName(std::string_view name, DotNames dots) {
    return !name.starts_with('.') || (dots == DotNames::kListed && name != "." && name != "..");
}

bool IsFolderGone(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) return (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    const DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

std::span<const unsigned int> FolderRows::Images() const {
    return kFolderImages;
}

std::string FolderRows::Volume() const {
    std::string full = above.empty() || path.starts_with('\\') ? path : above + '\\' + path;
    static_cast<void>(FullPathOf(full, full));  // without ".."; asks nothing
    return VolumeOfPath(full);
}

Outcome FolderRows::Open() {
    auto opened = std::make_shared<FolderHandle>();
    std::string base;  // not needed, but a folder that was removed has none, and nothing is relative to it
    DWORD error = held ? held->MakeCurrent() : ERROR_SUCCESS;
    if (error == ERROR_SUCCESS && held) error = QueryCurrentDirectory(base);
    if (error == ERROR_SUCCESS) error = OpenFolder(held.get(), path, *opened);
    if (error == ERROR_SUCCESS) error = opened->MakeCurrent();
    if (error == ERROR_SUCCESS) error = QueryCurrentDirectory(path);
    if (error == ERROR_SUCCESS) held = std::move(opened);
    return {error};
}

Outcome FolderRows::List(const RowOptions& options, RowReceiver& receiver) {
    if (const DWORD error = MakeCurrent(); error != ERROR_SUCCESS) return {error};
    int count = 0;
    Outcome outcome = ListPass(true, options, count, receiver);
    if (outcome.IsDone()) outcome = ListPass(false, options, count, receiver);
    if (!outcome.IsDone()) return outcome;
    receiver.ShowCount(count);
    std::string now;
    return {QueryCurrentDirectory(now)};  // fails when the folder was removed meanwhile
}

std::string FolderRows::Tip(const std::string& name) const {
    WIN32_FIND_DATAA found{};
    if (MakeCurrent() != ERROR_SUCCESS) return {};
    HANDLE search = FindFirstFileA(name.c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return {};
    FindClose(search);
    std::string tip;
    if (const std::string type = ShellTypeName(name); !type.empty()) tip = "Type: " + type + '\n';
    if (!IsFolder(found)) tip += "Size: " + SizeTextOf(found) + '\n';
    return tip + "Modified: " + ModifiedText(found.ftLastWriteTime);
}

Outcome FolderRows::FindPath(const std::string& name, std::string& found) const {
    const DWORD error = Verify();
    if (error == ERROR_SUCCESS) found = path + (path.ends_with('\\') ? "" : "\\") + name;
    return {error};
}

std::unique_ptr<RowSource> FolderRows::Enter(const std::string& name) const {
    return From(name);
}

std::unique_ptr<FolderRows> FolderRows::From(const std::string& location) const {
    auto rows = std::make_unique<FolderRows>(location);
    // What a full path leads to has nothing to do with this folder, which may hang.
    if (IsFullPath(location)) return rows;
    rows->held = held;
    rows->above = path;
    return rows;
}

Outcome FolderRows::Hold(std::vector<std::string> names, Place& place) const {
    const DWORD error = Verify();
    if (error == ERROR_SUCCESS) place = {PlaceKind::kFolder, held, std::move(names)};
    return {error};
}

DWORD FolderRows::MakeCurrent() const {
    return held->MakeCurrent();
}

// The system reports the folder's path without links. If that is the shown path, the shown path leads here.
DWORD FolderRows::Verify() const {
    std::string now;
    if (held->MakeCurrent() == ERROR_SUCCESS && QueryCurrentDirectory(now) == ERROR_SUCCESS && now == path)
        return ERROR_SUCCESS;
    FolderHandle other;
    const DWORD error = OpenFolder(nullptr, path, other);
    return error == ERROR_SUCCESS ? ERROR_CANT_RESOLVE_FILENAME : error;
}

}  // namespace permora
