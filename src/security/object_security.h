// Reading the access list of a file, folder or drive root, and writing one to several of them.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "platform/api/security.h"
#include "platform/resources.h"
#include "security/access_entry_list.h"
#include "security/dacl_builder.h"

namespace permora {

// What is said of a null list.
inline constexpr const char* kNullListText =
    "There is no any access control list associated with object (All access is currently allowed).";

// Which volume an item stands on.
enum class ItemPlace {
    kCurrentDirectory,  // a name relative to the current directory, on whose volume it is
    kDriveRoot,         // the item is itself the root of its volume ("C:\")
};

// The list of an object, in the descriptor that holds it.
struct ObjectDacl {
    UniqueLocal<void> descriptor;
    PACL dacl = nullptr;  // into `descriptor`; null: no list, everyone may do everything
};

// What a read for editing gave.
struct ObjectSecurity : ObjectDacl {
    std::optional<DaclInheritance> inheritance;  // nothing when the control word cannot be read
    AccessEntryList entries;
};

// What a volume that may not be asked about (access denied) means to a reader: the object's own list may
// still be readable.
enum class HiddenVolume { kReadOn, kFail };

// Reads the list of `path`. Every failure shows its message box and leaves `object` as it was: volume facts
// or descriptor not readable, file system without access control. Nothing is said of a null list.
[[nodiscard]] bool ReadListOfObject(HWND owner, LPCSTR path, ItemPlace place, HiddenVolume hidden,
                                    ObjectDacl& object);

// The same for editing, hidden volumes read on. A null list is told in an information box and reads as no
// entries.
[[nodiscard]] bool ReadObjectDacl(HWND owner, LPCSTR path, ItemPlace place, ObjectSecurity& object);

// Writes `dacl` to every item, with one error box for each that fails; the others are still written. Without
// a choice of `inheritance` each item keeps its own. Returns the indexes of the items that failed.
std::vector<std::size_t> WriteObjectDacl(HWND owner, std::span<const char* const> paths,
                                         std::optional<DaclInheritance> inheritance, PACL dacl);

}  // namespace permora
