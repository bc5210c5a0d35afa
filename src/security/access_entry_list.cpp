#include "security/access_entry_list.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/nt/byte_io.h"

namespace permora {
namespace {

AccessEntry EntryOf(const nt::Ace& ace) {
    AccessEntry entry;
    // Most types with an unknown layout begin with a mask as well.
    const bool isOpaque = nt::ShapeOfAceType(ace.type) == nt::AceShape::kOpaque;
    entry.mask = isOpaque ? nt::ReadU32(ace.tail, 0).value_or(0) : ace.mask;
    entry.aceType = ace.type;
    entry.aceFlags = ace.flags;
    // Object entries concern different objects, so the same account does not make two of them equal.
    if (!ace.object) entry.account.sid = ace.sid;
    return entry;
}

// The flags of an allow or deny entry.
constexpr BYTE kEntryFlags = kScopeFlagsMask | NO_PROPAGATE_INHERIT_ACE | INHERITED_ACE;

BYTE FlagsOf(const PermissionChoice& choice) {
    const BYTE propagation = choice.childrenOnly ? BYTE{NO_PROPAGATE_INHERIT_ACE} : BYTE{0};
    return static_cast<BYTE>(ScopeFlagsFromIndex(choice.applyIndex) | propagation);
}

// Whether a choice for an entry is the one with which the dialog began. Only the flags that the dialog shows
// count.
bool IsUnchanged(const AccessEntry& entry, const PermissionChoice& choice) {
    const PermissionChoice before = ChoiceOf(entry);
    constexpr BYTE kShownFlags = kScopeFlagsMask | NO_PROPAGATE_INHERIT_ACE;
    return IsSameAccount(choice.account, before.account) && choice.allowMask == before.allowMask &&
           choice.denyMask == before.denyMask && FlagsOf(choice) == (entry.aceFlags & kShownFlags);
}

}  // namespace

bool AccessEntry::IsAcceptable() const {
    return account.sid && (aceFlags & ~kEntryFlags) == 0;
}

PermissionChoice ChoiceOf(const AccessEntry& entry) {
    PermissionChoice choice;
    choice.account = entry.account;
    (entry.IsAllow() ? choice.allowMask : choice.denyMask) = entry.mask & FULL_CONTROL_RIGHTS;
    choice.applyIndex = ScopeIndexFromText(ScopeTextFromFlags(entry.aceFlags));
    choice.childrenOnly = (entry.aceFlags & NO_PROPAGATE_INHERIT_ACE) != 0;
    return choice;
}

AccessEntryList::AccessEntryList(std::span<const nt::Ace> list) {
    std::ranges::transform(list, std::back_inserter(entries), EntryOf);
}

AccessEntry& AccessEntryList::Join(AccessEntry added) {
    added.aceFlags = static_cast<BYTE>(added.aceFlags & ~INHERITED_ACE);
    const auto same = std::find_if(entries.begin(), entries.end(), [&](const AccessEntry& entry) {
        return entry.aceType == added.aceType && entry.aceFlags == added.aceFlags &&
               IsSameAccount(entry.account, added.account) && !entry.HasIdleGenericRights() &&
               !added.HasIdleGenericRights();
    });
    if (same != entries.end()) {
        same->mask |= added.mask;
        return *same;
    }
    auto place = entries.begin();
    if (added.IsAllow()) {
        place = std::find_if(entries.begin(), entries.end(),
                             [](const AccessEntry& entry) { return entry.IsInherited() || entry.IsAllow(); });
    }
    return *entries.insert(place, std::move(added));
}

void AccessEntryList::AddEntry(AccountRecord account, DWORD mask, BYTE flags, BYTE type) {
    AccessEntry& entry = Join({std::move(account), mask, type, flags});
    entry.mask = MaskOfChangedEntry(type, entry.mask);
}

void AccessEntryList::AddFromDialog(const PermissionChoice& choice) {
    const BYTE flags = FlagsOf(choice);
    if (choice.allowMask != 0) AddEntry(choice.account, choice.allowMask, flags, ACCESS_ALLOWED_ACE_TYPE);
    if (choice.denyMask != 0) AddEntry(choice.account, choice.denyMask, flags, ACCESS_DENIED_ACE_TYPE);
}

void AccessEntryList::EditEntry(std::size_t index, const PermissionChoice& choice) {
    if (!entries[index].IsInherited() && IsUnchanged(entries[index], choice)) return;
    // Adding moves the entries, so the old one's values are copied first.
    const bool wasInherited = entries[index].IsInherited();
    const BYTE ownType = entries[index].aceType;
    const DWORD ownMask =
        entries[index].HasIdleGenericRights() ? entries[index].mask & ~GENERIC_RIGHTS : entries[index].mask;
    const bool isAllow = entries[index].IsAllow();

    const BYTE otherType = isAllow ? ACCESS_DENIED_ACE_TYPE : ACCESS_ALLOWED_ACE_TYPE;
    DWORD ownChoice = isAllow ? choice.allowMask : choice.denyMask;
    const DWORD otherChoice = isAllow ? choice.denyMask : choice.allowMask;
    const BYTE flags = FlagsOf(choice);
    if (wasInherited) {
        // Inherited rights cannot be removed here: only the difference becomes an entry. A generic right that
        // is only handed down would become all the rights that it stands for in an entry for the object
        // itself.
        const DWORD handedDown = (flags & INHERIT_ONLY_ACE) != 0 ? ownMask : ownMask & ~GENERIC_RIGHTS;
        ownChoice ^= WithoutSynchronize(handedDown);
    } else {
        RemoveEntry(index);
        // A denial keeps SYNCHRONIZE, unless it belonged to a denial of everything that now denies less.
        const bool wasWhole = (ownMask & FULL_CONTROL_RIGHTS) == FULL_CONTROL_RIGHTS;
        if (ownChoice != 0 && !wasWhole) ownChoice |= ownMask & SYNCHRONIZE;
    }
    if (ownChoice != 0) AddEntry(choice.account, ownChoice, flags, ownType);
    if (otherChoice != 0) AddEntry(choice.account, otherChoice, flags, otherType);
}

void AccessEntryList::RemoveEntry(std::size_t index) {
    entries.erase(std::next(entries.begin(), static_cast<std::ptrdiff_t>(index)));
}

void AccessEntryList::CopyInheritedEntries() {
    std::vector<AccessEntry> inherited;
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(inherited),
                 [](const AccessEntry& entry) { return entry.IsInherited(); });
    for (AccessEntry& entry : inherited)
        Join(std::move(entry));
}

void AccessEntryList::RemoveInheritedEntries() {
    std::erase_if(entries, [](const AccessEntry& entry) { return entry.IsInherited(); });
}

bool AccessEntryList::HasInheritedEntries() const {
    return std::any_of(entries.begin(), entries.end(),
                       [](const AccessEntry& entry) { return entry.IsInherited(); });
}

std::size_t AccessEntryList::OtherTypeCount() const {
    return static_cast<std::size_t>(std::count_if(
        entries.begin(), entries.end(), [](const AccessEntry& entry) { return entry.IsOfOtherType(); }));
}

std::size_t AccessEntryList::UnacceptableCount() const {
    return static_cast<std::size_t>(std::count_if(
        entries.begin(), entries.end(),
        [](const AccessEntry& entry) { return !entry.IsOfOtherType() && !entry.IsAcceptable(); }));
}

bool AccessEntryList::IsInCanonicalOrder() const {
    enum Group { kExplicitDeny, kExplicitAllow, kInherited };
    Group reached = kExplicitDeny;
    for (const AccessEntry& entry : entries) {
        if (!entry.IsInherited() && entry.IsOfOtherType()) continue;
        const Group group = entry.IsInherited() ? kInherited
                            : entry.IsAllow()   ? kExplicitAllow
                                                : kExplicitDeny;
        if (group < reached) return false;
        reached = group;
    }
    return true;
}

}  // namespace permora
