// What is to be deleted for good, remembered before anybody is asked: what is deleted afterwards is what the
// question was about, whatever its name leads to by then.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "platform/folder_files.h"

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

// Objects of the current directory, which is held.
struct DeletionItems {
    FolderHandle folder;
    std::vector<DeletionItem> items;
};

// 0 or a system error code, when the current directory cannot be held; `held` is then untouched.
DWORD HoldDeletionItems(std::span<const char* const> names, DeletionItems& held);

}  // namespace permora
