// Knowing an object again that is not held.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
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

// The same as bytes that last: also for other processes, and when the volume is mounted anew, which may
// change its device number. They contain what the volume calls itself, where it has a name that lasts.
std::vector<std::uint8_t> LastingMark(const ObjectHandle& object);

// Where a volume says when its objects were made. Asking for it asks the volume, which takes as long on FUSE
// as asking for anything else, and the answer holds for all objects of the volume.
enum class BirthPlace : std::uint8_t { kInStatus, kOnNtfs };
BirthPlace BirthPlaceOf(const ObjectHandle& object);

// When the object was made, in seconds since 1970; nothing where the volume does not know.
std::optional<std::int64_t> BirthTimeOf(const ObjectHandle& object, BirthPlace place);

}  // namespace permora::host
