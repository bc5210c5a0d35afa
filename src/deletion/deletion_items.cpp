#include "deletion/deletion_items.h"

namespace permora {

DeletionItem HoldDeletionItem(const FolderHandle& folder, const std::string& name) {
    DeletionItem item;
    item.name = name;
    item.error = folder.Identify(name, item.identity, item.kind);
    return item;
}

DeletionItems HoldDeletionItems(const Place& place) {
    DeletionItems held{place.folder, {}};
    held.items.reserve(place.names.size());
    for (const std::string& name : place.names)
        held.items.push_back(HoldDeletionItem(*place.folder, name));
    return held;
}

}  // namespace permora
