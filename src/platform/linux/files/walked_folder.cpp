#include "platform/linux/files/walked_folder.h"

#include <algorithm>
#include <vector>

#include "platform/linux/files/name_mapping.h"

namespace permora::host {

FolderRef::FolderRef(const FolderRef& other) : folder(other.folder) {
    if (folder != nullptr) folder->users.fetch_add(1, std::memory_order_relaxed);
}

// A loop, since the last user of the lowest of 100,000 folders may be the last of all of them.
FolderRef::~FolderRef() {
    WalkedFolder* left = folder;
    while (left != nullptr && left->users.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        const std::unique_ptr<WalkedFolder> ended(left);
        left = std::exchange(ended->above.folder, nullptr);
    }
}

FolderRef WalkedFolder::Make(FolderRef above, std::string name, std::unique_ptr<FolderNotes> notes) {
    return FolderRef(new WalkedFolder(std::move(above), std::move(name), std::move(notes)));
}

std::string WalkedFolder::PathOf(const std::string& name) const {
    std::vector<const std::string*> names;
    if (!name.empty()) names.push_back(&name);
    for (const WalkedFolder* folder = this; folder->above; folder = &*folder->above)
        names.push_back(&folder->hostName);
    std::string path;
    for (auto next = names.rbegin(); next != names.rend(); ++next) {
        if (!path.empty()) path += '\\';
        path += EncodeName(**next);
    }
    return path;
}

}  // namespace permora::host
