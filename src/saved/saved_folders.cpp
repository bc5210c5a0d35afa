#include "saved/saved_folders.h"

#include <algorithm>
#include <utility>

#include "platform/api/errors.h"
#include "platform/ascii.h"
#include "platform/held_object.h"

namespace permora {
namespace {

bool IsMounted(const FolderHandle& folder, const FolderEntry& entry) {
    FolderHandle inside;
    return entry.kind == FolderEntryKind::kFolder &&
           folder.OpenFolder(entry.name, inside) == ERROR_NOT_SAME_DEVICE;
}

// Missing or exchanged for something else, which is told of the folder itself.
bool IsGone(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_DIRECTORY ||
           error == ERROR_CANT_RESOLVE_FILENAME || error == ERROR_NOT_SAME_DEVICE;
}

}  // namespace

void SavedFolders::Leave() {
    if (complete) complete(folders.back());
    folders.pop_back();
}

bool SavedFolders::PassIn(std::string_view folder, std::string_view name) {
    // Only a top need not be saved itself.
    if (folders.empty()) folders.push_back({"", {}, false, false});
    if (std::ranges::find(folders, folder, &Folder::path) == folders.end()) return false;
    while (folders.back().path != folder)
        Leave();
    Folder& inner = folders.back();
    inner.isKnown = inner.isKnown || inner.isKnownWithContents;
    return inner.contents.emplace(name).second;
}

bool SavedFolders::Pass(const SavedObject& object) {
    const std::string_view path = object.path;
    if (object.kind == SavedKind::kUnlisted) {
        if (folders.empty() || folders.back().path != path) return false;
        folders.back().isKnown = folders.back().isKnownWithContents = false;
        return true;
    }
    const std::size_t end = path.rfind('\\');
    const std::string_view folder = end == path.npos ? "" : path.substr(0, end);
    const bool isFirst = path.empty() ? folders.empty() : PassIn(folder, path.substr(end + 1));
    if (!isFirst) return false;
    const bool isFolder = object.kind == SavedKind::kFolder;
    const bool mayBeFolder = object.kind == SavedKind::kUnknown || object.kind == SavedKind::kUnread;
    if (isFolder || mayBeFolder) folders.push_back({object.path, {}, isFolder, mayBeFolder});
    return true;
}

void SavedFolders::End() {
    while (!folders.empty())
        Leave();
}

DWORD OpenFolderBelow(const FolderHandle& top, std::string_view path, FolderHandle& folder) {
    FolderHandle open;
    DWORD error = top.OpenPath("", open);
    while (error == ERROR_SUCCESS && !path.empty()) {
        FolderHandle next;
        error = open.OpenFolder(std::string(TakeUntil('\\', path)), next);
        if (error == ERROR_SUCCESS) open = std::move(next);
    }
    if (error == ERROR_SUCCESS) folder = std::move(open);
    return error;
}

DWORD FindExtra(const FolderHandle& top, const std::string& path,
                const std::function<bool(const std::string& name)>& isSaved,
                const std::function<void(const std::string& path)>& report) {
    FolderHandle folder;
    DWORD error = OpenFolderBelow(top, path, folder);
    std::vector<std::string> extra;
    FolderEntry entry;
    while (error == ERROR_SUCCESS && (error = folder.NextEntry(entry)) == ERROR_SUCCESS)
        if (!isSaved(entry.name) && !IsMounted(folder, entry)) extra.push_back(entry.name);
    if (error != ERROR_NO_MORE_FILES) return IsGone(error) ? ERROR_SUCCESS : error;
    std::ranges::sort(extra);
    const std::string above = path.empty() ? path : path + '\\';
    for (const std::string& name : extra)
        report(above + name);
    return ERROR_SUCCESS;
}

}  // namespace permora
