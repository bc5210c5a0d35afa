// What the windows that change everything below selected items have in common.
#pragma once

#include <cstddef>
#include <string>

#include "platform/held_object.h"

namespace permora {

// Finds an item again for a walk through what is below it, and takes the turn on it, so that no other program
// hands something else down meanwhile. False for what is no folder or cannot be found, which has nothing
// below it that could be reached; that another object has the name by now, or a failure to get the turn, has
// been told.
[[nodiscard]] bool FindFolder(HWND owner, const RememberedObject& item, HeldObject& folder);

// Keeps what a walk passed over although it looks like a part of the tree alone: folders on which something
// is mounted, and files with further names. Every other object that could not be changed is passed over in
// silence.
class ForeignParts {
  public:
    void SetItem(const std::string& newItem) { item = newItem; }
    // As TreeObserver has it.
    void PassOver(const std::string& path, DWORD error);
    // Says so in an information box for each kind; nothing when there were none.
    void Tell(HWND owner) const;

  private:
    struct Parts {
        std::string first;
        std::size_t count = 0;
    };

    std::string item;
    Parts mounted;
    Parts linked;
};

}  // namespace permora
