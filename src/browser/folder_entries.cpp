#include "browser/folder_entries.h"

#include <string_view>

#include "platform/api/errors.h"
#include "platform/api/files.h"

namespace permora {

EntryKind KindOf(const WIN32_FIND_DATAA& found) {
    const std::string_view name(found.cFileName);
    if (name.starts_with("..")) return EntryKind::kParent;
    if (name.starts_with(".")) return EntryKind::kPassedOver;
    return (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? EntryKind::kFolder : EntryKind::kFile;
}

std::uint64_t SizeOf(const WIN32_FIND_DATAA& found) {
    return (std::uint64_t{found.nFileSizeHigh} << 32) | found.nFileSizeLow;
}

// A link is only entered when a separator asks for what is inside.
bool EnterFolder(const std::string& path) {
    if (SetCurrentDirectoryA(path.c_str()) != FALSE) return true;
    if (GetLastError() != ERROR_CANT_RESOLVE_FILENAME) return false;
    return SetCurrentDirectoryA((path + '\\').c_str()) != FALSE;
}

FolderSearch::~FolderSearch() {
    if (search != INVALID_HANDLE_VALUE) FindClose(search);
}

bool FolderSearch::Next(WIN32_FIND_DATAA& found) {
    bool isFound = false;
    if (search == INVALID_HANDLE_VALUE) {
        search = FindFirstFileA("*", &found);
        isFound = search != INVALID_HANDLE_VALUE;
    } else {
        isFound = FindNextFileA(search, &found) != FALSE;
    }
    if (isFound) return true;
    const DWORD reason = GetLastError();
    error = reason == ERROR_NO_MORE_FILES ? ERROR_SUCCESS : reason;
    return false;
}

}  // namespace permora
