// The check boxes of the attributes dialog without their windows: what they say, and what they do to items.
#pragma once

#include <bitset>
#include <cstddef>
#include <functional>

#include "platform/api/base.h"
#include "platform/place.h"

namespace permora {

enum class AttributeBox : std::size_t {
    kArchive,
    kReadonly,
    kHidden,
    kSystem,
    kAllowIndexing,
    kTemporary,
    kOffline,
    kCompressed,
    kEncrypted,
};
inline constexpr std::size_t kAttributeBoxCount = 9;

// Which boxes are checked, by AttributeBox.
using CheckedBoxes = std::bitset<kAttributeBoxCount>;

// The boxes of an item with these FILE_ATTRIBUTE_ flags.
CheckedBoxes BoxesOf(DWORD attributes);

// The flags that are written to every item: FILE_ATTRIBUTE_NORMAL when there are no others. Compression and
// encryption are no matter of flags.
DWORD AttributeWordOf(const CheckedBoxes& boxes);

// The FILE_ATTRIBUTE_ flags of the first item of a folder. Returns 0 or a system error code. Like
// AssignAttributes it makes the folder current.
DWORD ReadFirstAttributes(const Place& place, DWORD& attributes);

// Gives each item of a folder, in order, the attributes of the boxes. Compression and encryption are changed
// only if their boxes differ from `before`, the first item's. Returns 0, or the error of the first step that
// failed; ERROR_CANCELLED when `goOn`, which is called before each item, returns false. Then nothing more is
// done, and earlier changes stay.
DWORD AssignAttributes(const Place& place, const CheckedBoxes& boxes, const CheckedBoxes& before,
                       const std::function<bool()>& goOn);

}  // namespace permora
