// Finding what stands deep below a folder, one object after the other, without beginning at the top each
// time.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/held_object.h"

namespace permora {

// Keeps some of the folders on the way to what was found last. For objects that come in the order of a tree,
// the time of all grows little faster than their number, however deep they stand; for others it is that of
// HeldObject::HoldBelow. At most some 64 folders are held. One thread at a time.
class BelowFinder {
  public:
    // `folder` is borrowed.
    explicit BelowFinder(const HeldObject& folder) : top(folder) {}

    // As HoldBelow of the top. A kept folder that has been moved elsewhere is still the one below which the
    // object is looked for.
    DWORD Hold(const std::string& path, HeldObject& object);

  private:
    struct Kept {
        std::size_t length;  // of its path, with which `deepest` begins
        HeldObject folder;
    };

    void LeaveTo(std::string_view path);
    void Keep(std::string_view path, HeldObject folder);

    const HeldObject& top;
    std::vector<Kept> kept;  // each below the one before
    std::string deepest;     // the path of the last one
};

}  // namespace permora
