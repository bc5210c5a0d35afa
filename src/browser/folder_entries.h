// What a directory search finds, as the browser sees it.
#pragma once

#include <cstdint>
#include <string>

#include "platform/api/directory_search.h"

namespace permora {

enum class EntryKind {
    kParent,      // a name that begins with "..": the folder is not the root of a drive
    kPassedOver,  // any other name that begins with a dot; never listed
    kFolder,
    kFile,
};

EntryKind KindOf(const WIN32_FIND_DATAA& found);

// In bytes.
std::uint64_t SizeOf(const WIN32_FIND_DATAA& found);

// Makes a folder the current directory, or what a link to one leads to. A truth value and the last error.
bool EnterFolder(const std::string& path);

// Everything in the current directory, one entry after another.
class FolderSearch {
  public:
    FolderSearch() = default;
    ~FolderSearch();
    FolderSearch(const FolderSearch&) = delete;
    FolderSearch& operator=(const FolderSearch&) = delete;

    // False at the end, and on an error.
    bool Next(WIN32_FIND_DATAA& found);
    // Why Next had nothing more: ERROR_SUCCESS at the end of the folder.
    DWORD Error() const { return error; }

  private:
    HANDLE search = INVALID_HANDLE_VALUE;
    DWORD error = 0;
};

}  // namespace permora
