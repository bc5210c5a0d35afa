#include "platform/nt/inheritance.h"

#include <algorithm>

#include "platform/nt/ace_bits.h"

namespace permora::nt {
namespace {

constexpr std::uint8_t kInheritanceFlags =
    kObjectInherit | kContainerInherit | kNoPropagateInherit | kInheritOnly;

bool HasFlag(const Ace& ace, std::uint8_t flag) {
    return (ace.flags & flag) != 0;
}

std::uint8_t WithoutFlags(std::uint8_t flags, std::uint8_t removed) {
    return static_cast<std::uint8_t>(flags & ~removed);
}

// An entry may be meant for one class of directory objects only, named by a GUID. Files and folders have no
// class, so no GUID means them.
bool IsForOtherObjectClass(const Ace& ace) {
    return ace.object && ace.object->inheritedObjectType;
}

// Whether the entry has an effect on the child itself. The parent's "inherit only" does not matter: it keeps
// an entry from the parent, not from the child.
bool AppliesToChild(const Ace& ace, ObjectKind child) {
    return HasFlag(ace, child == ObjectKind::kFile ? kObjectInherit : kContainerInherit);
}

// Whether the child hands the entry on. A file has nothing below it, and "no propagate" ends inheritance at
// the first level.
bool IsHandedOn(const Ace& ace, ObjectKind child) {
    return child == ObjectKind::kFolder && HasFlag(ace, kObjectInherit | kContainerInherit) &&
           !HasFlag(ace, kNoPropagateInherit);
}

// The creator placeholders stand for whoever owns the object that the entry applies to. Their "server"
// variants (S-1-3-2, S-1-3-3) name the owner of an impersonating server, which a file never has: they stay,
// and match nobody. OWNER RIGHTS (S-1-3-4) is no placeholder: the access check itself gives it its meaning.
Sid SubstituteCreator(const Sid& sid, const Sid& owner, const Sid& group) {
    static const Sid kCreatorOwner(3, {0});
    static const Sid kCreatorGroup(3, {1});
    if (sid == kCreatorOwner) return owner;
    if (sid == kCreatorGroup) return group;
    return sid;
}

// The entry as it takes effect on the child: no generic rights, no placeholders, no inheritance flags.
Ace EffectiveEntry(const Ace& ace, const Sid& owner, const Sid& group) {
    Ace effective = ace;
    effective.flags = WithoutFlags(ace.flags, kInheritanceFlags) | kInherited;
    effective.mask = MapGenericRights(ace.mask);
    if (ace.sid) effective.sid = SubstituteCreator(*ace.sid, owner, group);
    return effective;
}

// The entry as a folder keeps it only for the objects below: generic rights and placeholders stay, because
// each object that inherits them gives them their meaning.
Ace HandedOnEntry(const Ace& ace) {
    Ace handedOn = ace;
    handedOn.flags |= kInheritOnly | kInherited;
    return handedOn;
}

void AppendInherited(std::vector<Ace>& entries, const Ace& ace, ObjectKind child, const Sid& owner,
                     const Sid& group) {
    if (IsForOtherObjectClass(ace)) return;
    const bool isHandedOn = IsHandedOn(ace, child);
    if (!AppliesToChild(ace, child)) {
        if (isHandedOn) entries.push_back(HandedOnEntry(ace));
        return;
    }
    Ace& effective = entries.emplace_back(EffectiveEntry(ace, owner, group));
    if (!isHandedOn) return;
    // One entry can serve both purposes unless taking effect has changed it. Objects below would then inherit
    // the change (the folder's owner instead of their own), so the original is added for them.
    if (effective.mask == ace.mask && effective.sid == ace.sid)
        effective.flags |= ace.flags & (kObjectInherit | kContainerInherit);
    else
        entries.push_back(HandedOnEntry(ace));
}

void AppendInherited(Acl& acl, const Acl& parent, ObjectKind child, const Sid& owner, const Sid& group) {
    for (const Ace& ace : parent.entries)
        AppendInherited(acl.entries, ace, child, owner, group);
    // The revision of a list must announce its object entries.
    if (std::ranges::any_of(acl.entries, [](const Ace& ace) { return ace.object.has_value(); }))
        acl.revision = Acl::kHighestRevision;
}

// Whether two entries are equal except for the flag that marks them as inherited.
bool IsSameButOrigin(const Ace& one, Ace other) {
    other.flags = WithoutFlags(other.flags, kInherited) | (one.flags & kInherited);
    return one == other;
}

}  // namespace

std::uint32_t MapGenericRights(std::uint32_t mask) {
    std::uint32_t mapped = mask & ~kGenericRights;
    if ((mask & kGenericAll) != 0) mapped |= kFileAllAccess;
    if ((mask & kGenericExecute) != 0) mapped |= kFileGenericExecute;
    if ((mask & kGenericWrite) != 0) mapped |= kFileGenericWrite;
    if ((mask & kGenericRead) != 0) mapped |= kFileGenericRead;
    return mapped;
}

Acl MapGenericRights(Acl acl, const Acl& before) {
    for (Ace& ace : acl.entries) {
        const std::uint32_t mapped = MapGenericRights(ace.mask);
        if (mapped == ace.mask || HasFlag(ace, kInheritOnly)) continue;
        if (std::ranges::none_of(before.entries, [&](const Ace& held) { return IsSameButOrigin(held, ace); }))
            ace.mask = mapped;
    }
    return acl;
}

Acl InheritedEntries(const Acl& parent, ObjectKind child, const Sid& owner, const Sid& group) {
    Acl inherited;
    inherited.entries.reserve(parent.entries.size());
    AppendInherited(inherited, parent, child, owner, group);
    return inherited;
}

Acl MergeInherited(const Acl& child, const Acl& parent, ObjectKind kind, const Sid& owner, const Sid& group) {
    Acl merged;
    merged.revision = child.revision;
    merged.entries.reserve(child.entries.size() + parent.entries.size());
    std::ranges::copy_if(child.entries, std::back_inserter(merged.entries),
                         [](const Ace& ace) { return !HasFlag(ace, kInherited); });
    AppendInherited(merged, parent, kind, owner, group);
    return merged;
}

SecurityDescriptor NewObjectDescriptor(const SecurityDescriptor& parent, ObjectKind kind, const Sid& owner,
                                       const Sid& group) {
    SecurityDescriptor descriptor;
    descriptor.owner = owner;
    descriptor.group = group;
    if (parent.daclState != DaclState::kList) return descriptor;
    descriptor.dacl = InheritedEntries(parent.dacl, kind, owner, group);
    if (descriptor.dacl.entries.empty()) return descriptor;
    descriptor.daclState = DaclState::kList;
    descriptor.control |= kDaclPresent | kDaclAutoInherited;
    return descriptor;
}

}  // namespace permora::nt
