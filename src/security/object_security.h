// The access list and the owner of files, folders and drive roots: reading them, and writing a list to
// several.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/held_object.h"
#include "platform/place.h"
#include "security/access_entry_list.h"
#include "security/account_record.h"
#include "security/change_results.h"
#include "security/dacl_builder.h"
#include "security/outcome.h"

namespace permora {

// The objects of a place as they were when they were remembered, for as long as a window shows them. What
// their names lead to later is compared with them.
struct RememberedPlace {
    PlaceKind kind = PlaceKind::kFolder;
    std::vector<RememberedObject> items;
    // On which all items are (VolumeOfPath); empty where they may be on several, as drives are.
    std::string volume = {};
};
// Not for shares, which are no objects of the file system.
RememberedPlace RememberPlace(const Place& place);

// Finds the object again. Step::kFindAgain when its name leads to another one by now.
Outcome FindItem(const RememberedObject& item, HeldObject& object);

// The result of a read for editing. Without a list (`dacl` is null) everyone may do everything, and there are
// no entries.
struct ObjectSecurity : ReadParts {
    std::optional<DaclInheritance> inheritance;  // nothing when the control word cannot be read
    AccessEntryList entries;
};

// The result for a volume that may not be queried (access denied): the object's own list may still be
// readable.
enum class HiddenVolume { kReadOn, kFail };

// Reads the list of an object. On failure `list` is untouched: the volume or the descriptor cannot be read,
// or the volume has no access control (Step::kUseAccessControl).
Outcome ReadListOfObject(const HeldObject& object, HiddenVolume hidden, ReadParts& list);
// The same for editing; hidden volumes are read.
Outcome ReadObjectDacl(const HeldObject& object, ObjectSecurity& security);

// An object may have no owner: `account` is then left without a SID. A system error code.
DWORD ReadObjectOwner(const HeldObject& object, AccountRecord& account);

// Why these parts can be changed on none of the items: a sentence for people, empty while they may be on one.
// Not looked for among more than a hundred items.
std::string ReadOnlyReason(std::span<const RememberedObject> items, SECURITY_INFORMATION information);

// The path of something below an item, for people. `below` has backslashes between its names; empty: the
// item.
std::string ChildPath(const std::string& item, const std::string& below);
// The same as the user would type it, who has typed the item's path.
std::string TypedChildPath(const std::string& typed, const std::string& below);

// The list that items get, which may be another one for those that have nothing below them.
struct ListsByKind {
    PACL forFolders;
    PACL forFiles;
};

// The places of all items, for a first try: each as a whole, and then again for `Contents::kToo` what is
// below it.
enum class Contents { kNone, kToo };
std::vector<ObjectPlace> PlacesOf(std::span<const RememberedObject> items, Contents contents);

// Marks what stands at `path` below `folder`, which is the object of the place.
void MarkPlace(const HeldObject& folder, const std::string& path, ObjectPlace& place);
// Finds the object of a place by its item. Step::kFindAgain as above, also when the place is marked and
// another object stands there now.
Outcome FindPlace(std::span<const RememberedObject> items, const ObjectPlace& place, HeldObject& object);

// Writes a list to the items among `places`, also after a failure unless it is Step::kRecord, and lets
// objects inherit anew whose part is kInherited; other places are not its own. Without a choice of
// `inheritance`, each item keeps its own. `shown`, which may be null, is the descriptor of the first item as
// it was read. When that item has another list now, the work ends with the result ERROR_REVISION_MISMATCH;
// nothing is written then if it is the first place. Step::kCarryDown: the item was written, but not this
// object below it, which inherits; that is left to the later walk where `places` have the item's contents,
// too. Step::kRecord: the later items are as they were.
void WriteListToItems(std::span<const RememberedObject> items, std::span<const ObjectPlace> places,
                      std::optional<DaclInheritance> inheritance, const ListsByKind& lists,
                      PSECURITY_DESCRIPTOR shown, ChangeRecorder& recorder, ChangeResults& results);

}  // namespace permora
