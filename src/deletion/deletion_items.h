// What is to be deleted for good, remembered before anybody is asked: what is deleted afterwards is what the
// question was about, whatever its name leads to by then.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/folder_files.h"
#include "platform/place.h"

namespace permora {

// An object of a folder.
struct DeletionItem {
    std::string name;  // bare
    DWORD error = 0;   // why it could not be looked at
    FolderEntryKind kind = FolderEntryKind::kFile;
    EntryIdentity identity;
};

// What cannot be looked at is remembered with the error, which is told when its turn comes.
DeletionItem HoldDeletionItem(const FolderHandle& folder, const std::string& name);

// Objects of a folder, which is held; null: of none.
struct DeletionItems {
    std::shared_ptr<const FolderHandle> folder;
    std::vector<DeletionItem> items;
};

// Of a place of PlaceKind::kFolder.
DeletionItems HoldDeletionItems(const Place& place);

}  // namespace permora
