// One list, or one owner, for everything below a folder: what is behind HeldObject::SetListsBelow and
// SetOwnersBelow, and answers as they do.
#pragma once

#include <cstddef>
#include <optional>

#include "platform/linux/files/object_handle.h"
#include "platform/linux/security/recorded_top.h"
#include "platform/nt/acl.h"
#include "platform/nt/sid.h"
#include "platform/tree_security.h"

namespace permora::host {

struct ListBelow {
    nt::Acl list;  // without generic rights
    TreeListMode mode;
    const nt::Acl* handedDown = nullptr;  // in the place of the folder's own list
};

struct OwnerBelow {
    nt::Sid owner;
    LinkedFiles linked;
    TreeListMode mode = TreeListMode::kWrite;
};

// The changes are recorded below `top`, which has begun; `threads` are those of WalkTree.
DWORD SetBelow(const ObjectHandle& folder, const ListBelow& wanted, const RecordedTop& top,
               TreeObserver& observer, TreeCounts& counts, std::optional<std::size_t> threads = std::nullopt);
DWORD SetBelow(const ObjectHandle& folder, const OwnerBelow& wanted, const RecordedTop& top,
               TreeObserver& observer, TreeCounts& counts, std::optional<std::size_t> threads = std::nullopt);

}  // namespace permora::host
