// What objects inherit from the folder that holds them. Rules: [MS-DTYP] 2.5.3.4 (CreateSecurityDescriptor
// and the ACL inheritance algorithms) and the SDK's "ACE Inheritance Rules" and "Automatic Propagation of
// Inheritable ACEs".
#pragma once

#include <cstdint>

#include "platform/nt/acl.h"
#include "platform/nt/security_descriptor.h"

namespace permora::nt {

enum class ObjectKind { kFile, kFolder };

// Generic bits of a mask replaced by the file object's specific rights.
std::uint32_t MapGenericRights(std::uint32_t mask);

// The entries of an object after they have replaced `before`: generic rights are mapped in every new entry
// that applies to the object itself. Entries that are only handed on keep theirs, and so do entries of
// `before`, inherited or not. Access checks ignore generic rights: mapping them would give them an effect
// because another entry was changed.
Acl MapGenericRights(Acl acl, const Acl& before);

// The entries that `parent` hands down to a child, in the parent's order, each marked inherited. An entry for
// CREATOR OWNER or CREATOR GROUP is replaced by `owner` or `group` where it applies to the child; one that
// must both apply to a folder and be handed on unchanged is split in two, the effective part first.
Acl InheritedEntries(const Acl& parent, ObjectKind child, const Sid& owner, const Sid& group);

// A child's list after its parent's changed: the child's explicit entries in their order, then what `parent`
// hands down. Previously inherited entries go.
Acl MergeInherited(const Acl& child, const Acl& parent, ObjectKind kind, const Sid& owner, const Sid& group);

// The descriptor of an object newly made in a folder by `owner` with primary group `group`. A parent without
// a list, or one that hands nothing down, gives DaclState::kAbsent: the caller chooses a default list. The
// system access list is not handed down: nothing here audits.
SecurityDescriptor NewObjectDescriptor(const SecurityDescriptor& parent, ObjectKind kind, const Sid& owner,
                                       const Sid& group);

}  // namespace permora::nt
