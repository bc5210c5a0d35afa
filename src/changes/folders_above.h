// What the folders hand down that stand above the objects of a tree, while the tree is edited in its order.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/nt/acl.h"
#include "platform/nt/security_descriptor.h"

namespace permora {

using SharedList = std::shared_ptr<const nt::Acl>;

// What a folder hands down.
struct FolderLists {
    SharedList before;
    SharedList after;  // `before` itself where nothing has changed; null: not known (any more)
};

// Of a folder that changes from `before` to `after`. Folders below each other mostly have one list, and share
// it with those above: with `above`, which may be null, and with `basis`, what that had when the change was
// made up.
FolderLists ListsOfFolder(const nt::SecurityDescriptor& before, const nt::SecurityDescriptor& after,
                          const FolderLists* above, const SharedList& basis);
// Of one that stays as it is.
FolderLists ListsOfFolder(const nt::Acl& list);

// The folders on the way to the next object of a tree that is read in its order. Paths are below the tree's
// top, with backslashes between the names; empty: the top itself.
class FoldersAbove {
  public:
    // What is above the top; null: not known.
    void SetAboveTop(std::shared_ptr<const FolderLists> lists) { aboveTop = std::move(lists); }

    // This folder is among them now. Without lists: what it hands down is not known.
    void Enter(std::string_view path, std::shared_ptr<const FolderLists> lists);
    // Only the folders that hold the object stay, which is none but the top.
    void LeaveTo(std::string_view path);
    // What the folder hands down that holds the object to which they were left; null: not known.
    std::shared_ptr<const FolderLists> ListsAbove(std::string_view path) const;

  private:
    struct Level {
        std::size_t length;                        // of its path, with which `deepest` begins
        std::shared_ptr<const FolderLists> lists;  // null: not known
    };

    std::shared_ptr<const FolderLists> aboveTop;
    std::vector<Level> levels;
    std::string deepest;  // the path of the last level
};

}  // namespace permora
