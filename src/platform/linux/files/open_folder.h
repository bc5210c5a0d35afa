// A folder whose names several threads take one by one.
#pragma once

#include <sys/types.h>

#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "platform/linux/base/unique_fd.h"
#include "platform/linux/files/folder_listing.h"
#include "platform/linux/files/walked_folder.h"

namespace permora::host {

class OpenFolder {
  public:
    // Goes on behind a position that Position() gave for the same folder; 0 is the beginning.
    OpenFolder(FolderRef walked, UniqueFd opened, off_t position)
        : folder(std::move(walked)), listing(std::move(opened), position) {}

    const FolderRef& Folder() const { return folder; }
    int Descriptor() const { return listing.Descriptor(); }
    off_t Position() const {
        const std::lock_guard lock(guard);
        return listing.Position();
    }

    // Whether it is known that there are names left.
    bool HasMore() const {
        const std::lock_guard lock(guard);
        return listing.HasMore();
    }

    // The next name, with its DT_ type. False at the end; the thread that comes upon an error gets it.
    bool Next(std::string& name, unsigned char& type, DWORD& error) {
        const std::lock_guard lock(guard);
        FolderListing::Entry entry{};
        if (hasEnded || !listing.Next(entry, error)) {
            hasEnded = true;
            return false;
        }
        name = entry.name;
        type = entry.type;
        return true;
    }

  private:
    const FolderRef folder;
    mutable std::mutex guard;
    FolderListing listing;
    bool hasEnded = false;
};

// The folders in which there may be names left, oldest and so mostly highest first.
using OpenFolders = std::list<std::shared_ptr<OpenFolder>>;

}  // namespace permora::host
