// Reading the access list of a file, folder or drive root, and writing one to several of them.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/held_object.h"
#include "security/access_entry_list.h"
#include "security/dacl_builder.h"

namespace permora {

// What is said of a null list.
inline constexpr const char* kNullListText =
    "There is no any access control list associated with object (All access is currently allowed).";

// What a name stands for.
enum class ItemPlace {
    kCurrentDirectory,  // something in a folder
    kDriveRoot,         // the root of a volume ("C:\"), which has no parent
};

// What a read for editing gave.
struct ObjectSecurity : ReadParts {
    std::optional<DaclInheritance> inheritance;  // nothing when the control word cannot be read
    AccessEntryList entries;
};

// What a volume that may not be asked about (access denied) means to a reader: the object's own list may
// still be readable.
enum class HiddenVolume { kReadOn, kFail };

// Reads the list of an object. Every failure shows its message box and leaves `list` as it was: volume facts
// or descriptor not readable, file system without access control. Nothing is said of a null list.
[[nodiscard]] bool ReadListOfObject(HWND owner, const HeldObject& object, HiddenVolume hidden,
                                    ReadParts& list);

// The same for editing, hidden volumes read on. A null list is told in an information box and reads as no
// entries.
[[nodiscard]] bool ReadObjectDacl(HWND owner, const HeldObject& object, ObjectSecurity& security);

// The path of what is below an item, for people; that of the item itself when there is no name below it.
std::string ChildPath(const std::string& item, const std::string& below);

// What is held while a window shows the items: names relative to the current directory, or drive roots.
std::vector<RememberedObject> RememberItems(std::span<const char* const> names, ItemPlace place);

// Finds the object again. A failure has been told in a box: that another one has its name by now, in words of
// our own.
[[nodiscard]] bool FindItem(HWND owner, const RememberedObject& item, HeldObject& object);

enum class ItemsWritten {
    kAll,       // but for those that failed, each of which was told
    kReadAnew,  // nothing: the user wants to see first what another program made of the first item
};

// The list that items get, which may be another one for those that have nothing below them.
struct ListsByKind {
    PACL forFolders;
    PACL forFiles;
};

// Writes a list to every item, with one error box for each that fails; the others are still written. Without
// a choice of `inheritance` each item keeps its own. `shown` is the descriptor of the first item as it was
// read: when that item has another list by now, the user is asked whether that is to be overwritten. An item
// that was written although something below it could not be is told with the first of those objects.
[[nodiscard]] ItemsWritten WriteListToItems(HWND owner, std::span<const RememberedObject> items,
                                            std::optional<DaclInheritance> inheritance,
                                            const ListsByKind& lists, PSECURITY_DESCRIPTOR shown);

}  // namespace permora
