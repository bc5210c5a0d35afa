// What becomes of the security of one object when a whole tree is edited. Values alone: nothing is read from
// a volume or written to it.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/nt/acl.h"
#include "platform/nt/inheritance.h"
#include "platform/nt/security_descriptor.h"

namespace permora {

// Where an object stands in the tree that is edited.
enum class EditPlace : std::uint8_t {
    kTop,    // what it inherits comes from a folder that is not edited
    kBelow,  // its folder is edited too
};

// The list of the folder that holds an object, before and after its own edit. One and the same object where
// nothing has changed.
struct ListsAbove {
    const nt::Acl& before;
    const nt::Acl& after;
};

struct ObjectToEdit {
    const nt::SecurityDescriptor& present;
    nt::ObjectKind kind;
    EditPlace place;
    const ListsAbove* above;     // null: not known; the root of a volume has empty ones
    std::string_view path = {};  // below the tree's top, with backslashes; empty: the top
    bool hasContents = true;     // a file or a folder; else a link, a device, a pipe or a socket
};

enum class EditFault : std::uint8_t {
    kNone,
    kHiddenAccount,  // nt::ExchangeResult::kHidden
    kUnknownFolder,  // what its folder hands down is needed and not known
    kNoList,         // it has no list, so everyone may do everything, and the edit would end that
};

struct EditedSecurity {
    nt::SecurityDescriptor wanted;  // the present one when nothing changes, and with a fault
    EditFault fault = EditFault::kNone;
    // The edit says who owns the object, on the host as well: what `present` cannot tell.
    bool rulesOwner = false;
    // Entries that the edit is about are inherited from a folder that is not edited, and stay.
    bool inheritedStay = false;
    // Entries that the edit is about stay, since they are of other types than allow and deny.
    bool otherTypesStay = false;
};

// What a walk passes over.
enum class EditGap : std::uint8_t {
    kMounted,   // another volume is mounted there
    kUnread,    // the object's security cannot be read; what is in it may be come to all the same
    kUnlisted,  // what is in the folder is not known to its end
};

class DescriptorEdit {
  public:
    virtual ~DescriptorEdit() = default;
    virtual EditedSecurity Edit(const ObjectToEdit& object) = 0;
    // Whether it is about system access lists, too.
    virtual bool EditsSystemLists() const { return false; }
    // Whether objects that are alike in everything else may become different by their paths.
    virtual bool DependsOnPath() const { return false; }
    // The walk passes this over. Whether that is a failure, since the edit may be about any of it. What is
    // not read is one in any case where it was to inherit something else.
    virtual bool Misses(std::string_view /*path*/, EditGap /*gap*/) { return true; }
    // Whether it may be about anything below the folder, beside what that hands down anew.
    virtual bool Enters(std::string_view /*folder*/) const { return true; }
};

// What a folder with the list `above` hands down to the object.
nt::Acl HandedDownTo(const nt::SecurityDescriptor& descriptor, nt::ObjectKind kind, const nt::Acl& above);

}  // namespace permora
