// What is in a folder that is held open, under the names that the volume has.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include "platform/folder_files.h"

namespace permora {

struct FoundEntry {
    std::wstring name;  // may be no text: a volume takes halves of surrogate pairs
    FolderEntryKind kind = FolderEntryKind::kFile;
    ULONGLONG size = 0;  // of the contents, in bytes
};

class FolderListing {
  public:
    // `opened` is open for FILE_LIST_DIRECTORY, unless nothing is to be listed.
    explicit FolderListing(UniqueHandle opened) : folder(std::move(opened)) {}
    FolderListing(const FolderListing&) = delete;
    FolderListing& operator=(const FolderListing&) = delete;

    HANDLE Folder() const { return folder.get(); }

    // As FolderHandle::NextEntry.
    DWORD Next(FoundEntry& entry);

  private:
    UniqueHandle folder;
    // What the system listed last, and where the next entry of it begins.
    alignas(8) std::array<std::byte, 8192> block{};
    const std::byte* next = nullptr;
};

}  // namespace permora
