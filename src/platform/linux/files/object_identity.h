// Knowing an object again that is not held.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <vector>

#include "platform/linux/files/object_handle.h"

namespace permora::host {

// Distinguishes an object from all others, also from one that got its number after it was deleted: where the
// file system has them, the generation that goes with the number, or else the time of its birth. Those behind
// FUSE and overlays have neither that lasts; there NTFS has a time of its own, and else the number alone must
// do.
class ObjectIdentity {
  public:
    ObjectIdentity() = default;
    explicit ObjectIdentity(const ObjectHandle& object);

    bool operator==(const ObjectIdentity& other) const = default;

  private:
    dev_t device = 0;
    ino_t number = 0;
    std::vector<std::uint8_t> mark;
};

}  // namespace permora::host
