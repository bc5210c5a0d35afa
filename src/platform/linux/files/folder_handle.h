// What is behind a FolderHandle.
#pragma once

#include <optional>
#include <utility>

#include "platform/folder_files.h"
#include "platform/linux/files/folder_listing.h"
#include "platform/linux/files/object_handle.h"
#include "platform/linux/files/overwritten_file.h"

namespace permora {
namespace host {

FolderEntryKind KindOfMode(mode_t mode);

}  // namespace host

struct FolderHandle::Inside {
    explicit Inside(host::UniqueFd opened) : listing(std::move(opened)) {}

    // Opens an object that must be a folder.
    static DWORD Adopt(const host::ObjectHandle& object, FolderHandle& folder);

    int Descriptor() const { return listing.Descriptor(); }

    // Asked of the volume at the first file. Where it is not NTFS, what looks like a stream is none.
    DWORD AskNtfs(const host::ObjectHandle& object, bool& answer);
    // Asked once for all folders below.
    DWORD AskMount();
    // A hold of its own on the folder.
    DWORD Hold(host::ObjectHandle& folder) const;

    host::FolderListing listing;
    std::optional<bool> isNtfs;
    // What AskMount finds out; 0: not asked yet.
    DWORD sectorBytes = 0;
    host::Journaled journaled = host::Journaled::kNone;
    bool hasNoOwners = false;  // on the volume nothing belongs to anybody
};

}  // namespace permora
