#include "deletion/deletion_items.h"

#include <utility>

#include "platform/api/errors.h"

namespace permora {

DeletionItem HoldDeletionItem(const FolderHandle& folder, const std::string& name) {
    DeletionItem item;
    item.name = name;
    item.error = folder.Identify(name, item.identity, item.kind);
    return item;
}

DWORD HoldDeletionItems(std::span<const char* const> names, DeletionItems& held) {
    DeletionItems made;
    if (const DWORD error = FolderHandle::OpenCurrent(made.folder); error != ERROR_SUCCESS) return error;
    made.items.reserve(names.size());
    for (const char* name : names)
        made.items.push_back(HoldDeletionItem(made.folder, name));
    held = std::move(made);
    return ERROR_SUCCESS;
}

}  // namespace permora
