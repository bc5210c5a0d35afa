// What the entries of an object do, and from which entries of its folder they come. Lists that differ may
// mean the same: generic rights or what they stand for, one entry that takes effect and is handed on or two.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/nt/inheritance.h"
#include "platform/nt/security_descriptor.h"

namespace permora::nt {

const Sid& CreatorOwner();
const Sid& CreatorGroup();

// An entry takes effect on the object, is handed on, or both. Entries here are bare: generic rights are
// mapped, and of the flags only those that say what is handed on are left, in `below`.
struct EntryEffects {
    std::vector<Ace> here;
    std::vector<Ace> below;
};

// Nothing is below a file, and an entry that is neither handed on nor takes effect has none.
void AddEffects(const Ace& entry, ObjectKind kind, EntryEffects& effects);

// Whether an entry that takes effect is the expected one. Where `expected` names a creator, any account will
// do, since a later change of the owner leaves the entry as it is.
bool IsSameEffect(const Ace& found, const Ace& expected);

// Whether the list lets nobody in: it allows nothing on the object itself, or denies it to Everyone before.
// The owner may still change it.
bool LetsNobodyIn(const SecurityDescriptor& descriptor);

// Whether the entry came from the folder above: not in a list that is protected and inherits nothing.
bool IsInheritedIn(const SecurityDescriptor& descriptor, const Ace& entry);

// For each entry of the object, the index of the entry of its folder's list `above` that hands it down.
// Nothing for entries that are not marked inherited, and for those that the folder does not hand down, as
// after a move. Of several that hand down the same, each serves one of the object's entries before any
// serves two.
std::vector<std::optional<std::size_t>> FindHandedDown(const SecurityDescriptor& object, const Acl& above,
                                                       ObjectKind kind);

}  // namespace permora::nt
