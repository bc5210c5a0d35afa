// What a write of new parts makes of an object's descriptor, on both systems: by the contract of
// SetNamedSecurityInfoA.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/held_object.h"
#include "platform/nt/acl.h"
#include "platform/nt/inheritance.h"
#include "platform/nt/security_descriptor.h"
#include "platform/nt/sid.h"

namespace permora {

// New parts, checked and copied from the caller's memory.
struct SecurityChange {
    SECURITY_INFORMATION information = 0;
    nt::Sid owner;
    nt::Sid group;
    std::optional<nt::Acl> dacl;     // nothing: a null list
    std::vector<std::uint8_t> sacl;  // empty: no list

    bool Has(SECURITY_INFORMATION bit) const { return (information & bit) != 0; }
};

// ERROR_INVALID_PARAMETER, ERROR_INVALID_SID or ERROR_INVALID_ACL; `change` is incomplete then.
DWORD TakeChange(SECURITY_INFORMATION information, const NewParts& parts, SecurityChange& change);

// Whether the list that the change gives the object is joined by entries from the object's folder.
bool InheritsAfter(const SecurityChange& change, const nt::SecurityDescriptor& descriptor);

// Where entries of an object come from.
struct ListAbove {
    nt::Acl list;  // the folder's
    nt::ObjectKind kind = nt::ObjectKind::kFile;
    nt::Sid owner;  // of the object, for a descriptor that names none
    nt::Sid group;
};

// `above` is needed when InheritsAfter says so, and null for the root of a volume: its list stays as given.
// A list that is not protected gets the entries that the folder hands down now. They replace the inherited
// entries that were given, which may come from another object.
void ApplyChange(const SecurityChange& change, const ListAbove* above, nt::SecurityDescriptor& descriptor);

// Replaces the inherited entries of a descriptor by those of `above`, and marks the list as kept up to date.
// The descriptor must have a list.
void JoinInherited(nt::SecurityDescriptor& descriptor, const nt::Acl& above, nt::ObjectKind kind,
                   const nt::Sid& owner, const nt::Sid& group);

// The entries that the object has of its own, which no folder has handed down, and then no longer: no own
// entry gives or takes as much of the same account at the same places.
std::vector<nt::Ace> LostOwnEntries(const nt::SecurityDescriptor& before,
                                    const nt::SecurityDescriptor& after);
// Whether the list after a change lets nobody in for want of entries, and did not before.
bool IsEmptiedBy(const nt::SecurityDescriptor& before, const nt::SecurityDescriptor& after);

// A folder hands down entries of its list. A folder that lets everyone do everything has no list.
const nt::Acl& ListOf(const nt::SecurityDescriptor& descriptor);

// What everyone may read who may read the object's list.
inline constexpr SECURITY_INFORMATION kUsualParts =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
inline constexpr SECURITY_INFORMATION kDescriptorParts = kUsualParts | SACL_SECURITY_INFORMATION;

inline SystemList SystemListFor(SECURITY_INFORMATION parts) {
    return (parts & SACL_SECURITY_INFORMATION) != 0 ? SystemList::kIncluded : SystemList::kLeftOut;
}

// The parts that were read, as a value. Nothing when there are none, or no valid ones.
std::optional<nt::SecurityDescriptor> DescriptorOf(const ReadParts& parts);

// The whole descriptor of an object; without the system's list where only a privilege would let us read it,
// or it would have to be read apart, and it is none of the `needed` parts. ERROR_INVALID_SECURITY_DESCR for a
// damaged one.
DWORD ReadDescriptor(const HeldObject& object, SECURITY_INFORMATION needed,
                     nt::SecurityDescriptor& descriptor);
// Replaces the named parts by those of `from`, and the flags of the control word that belong to them.
void TakeParts(nt::SecurityDescriptor& descriptor, const nt::SecurityDescriptor& from,
               SECURITY_INFORMATION parts);
// Keeps only the named parts and their flags.
void ReduceToParts(nt::SecurityDescriptor& descriptor, SECURITY_INFORMATION parts);

// Whether both say the same about access, protection included.
bool HasSameList(nt::SecurityDescriptor one, nt::SecurityDescriptor other);
// Whether both say the same about auditing and the inheritance of that.
bool HasSameSystemList(const nt::SecurityDescriptor& one, const nt::SecurityDescriptor& other);

}  // namespace permora
