#include "security/access_entry_list.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <utility>

namespace permora {
namespace {

// The types whose header and mask are followed by the SID ([MS-DTYP] 2.4.4, and for the last two ntifs.h of
// the driver kit). Object types put flags and GUIDs in between, the compound type a word of its own: there,
// the same bytes could pass for some other account.
constexpr std::array<BYTE, 13> kSidFollowsMask = {
    0x00, 0x01, 0x02, 0x03,  // allowed, denied, audit, alarm
    0x09, 0x0A, 0x0D, 0x0E,  // their callback forms
    0x11, 0x12, 0x13,        // mandatory label, resource attribute, scoped policy
    0x14, 0x15,              // process trust label, access filter
};

constexpr std::size_t kSidOffset = sizeof(ACE_HEADER) + sizeof(ACCESS_MASK);
constexpr std::size_t kSidHeaderSize = 8;

// The SID in an entry of `aceSize` bytes; null when there is none, or none that is valid and lies inside.
PSID SidInAce(BYTE* ace, BYTE aceType, std::size_t aceSize) {
    if (std::find(kSidFollowsMask.begin(), kSidFollowsMask.end(), aceType) == kSidFollowsMask.end() ||
        aceSize < kSidOffset + kSidHeaderSize) {
        return nullptr;
    }
    BYTE* sid = ace + kSidOffset;
    const std::size_t subAuthorityCount = sid[1];
    if (kSidOffset + kSidHeaderSize + subAuthorityCount * sizeof(DWORD) > aceSize || IsValidSid(sid) == FALSE)
        return nullptr;
    return sid;
}

AccessEntry EntryFromAce(void* ace) {
    ACE_HEADER header{};
    std::memcpy(&header, ace, sizeof header);
    AccessEntry entry;
    entry.aceType = header.AceType;
    entry.aceFlags = header.AceFlags;
    auto* bytes = static_cast<BYTE*>(ace);
    if (header.AceSize >= kSidOffset) std::memcpy(&entry.mask, bytes + sizeof header, sizeof entry.mask);
    if (PSID sid = SidInAce(bytes, header.AceType, header.AceSize); sid != nullptr) {
        // Without memory the entry stays without an account, as it does when an account cannot be copied.
        static_cast<void>(entry.account.SetSid(sid, {}));
    }
    return entry;
}

// What the header of an allow or deny entry may say.
constexpr BYTE kEntryFlags = kScopeFlagsMask | NO_PROPAGATE_INHERIT_ACE | INHERITED_ACE;

BYTE FlagsOf(const PermissionChoice& choice) {
    const BYTE propagation = choice.childrenOnly ? BYTE{NO_PROPAGATE_INHERIT_ACE} : BYTE{0};
    return static_cast<BYTE>(ScopeFlagsFromIndex(choice.applyIndex) | propagation);
}

// Whether a choice for an entry is the one that the dialog began with. Of the flags only those count that it
// shows.
bool IsUnchanged(const AccessEntry& entry, const PermissionChoice& choice) {
    const PermissionChoice before = ChoiceOf(entry);
    constexpr BYTE kShownFlags = kScopeFlagsMask | NO_PROPAGATE_INHERIT_ACE;
    return IsSameAccount(choice.account, before.account) && choice.allowMask == before.allowMask &&
           choice.denyMask == before.denyMask && FlagsOf(choice) == (entry.aceFlags & kShownFlags);
}

}  // namespace

bool AccessEntry::IsAcceptable() const {
    return account.sid != nullptr && IsValidSid(account.sid.get()) != FALSE && (aceFlags & ~kEntryFlags) == 0;
}

PermissionChoice ChoiceOf(const AccessEntry& entry) {
    PermissionChoice choice;
    choice.account = entry.account;
    (entry.IsAllow() ? choice.allowMask : choice.denyMask) = entry.mask & FULL_CONTROL_RIGHTS;
    choice.applyIndex = ScopeIndexFromText(ScopeTextFromFlags(entry.aceFlags));
    choice.childrenOnly = (entry.aceFlags & NO_PROPAGATE_INHERIT_ACE) != 0;
    return choice;
}

DWORD GetAceCount(PACL acl) {
    ACL_SIZE_INFORMATION information{};
    if (acl == nullptr ||
        GetAclInformation(acl, &information, sizeof information, AclSizeInformation) == FALSE) {
        return 0;
    }
    return information.AceCount;
}

std::vector<AccessEntry> EntriesOfDacl(PACL acl) {
    std::vector<AccessEntry> entries;
    const DWORD count = GetAceCount(acl);
    for (DWORD index = 0; index < count; ++index)
        if (void* ace = nullptr; GetAce(acl, index, &ace) != FALSE) entries.push_back(EntryFromAce(ace));
    return entries;
}

void AccessEntryList::LoadFromDacl(PACL acl) {
    entries = EntriesOfDacl(acl);
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
    // Adding moves the entries, so what is needed of the old one is taken first.
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
        // What inheritance grants cannot be taken away here: only the difference becomes an entry. A generic
        // right that is only handed down would be all that it stands for in an entry for the object itself.
        const DWORD handedDown = (flags & INHERIT_ONLY_ACE) != 0 ? ownMask : ownMask & ~GENERIC_RIGHTS;
        ownChoice ^= WithoutSynchronize(handedDown);
    } else {
        RemoveEntry(index);
        // A denial keeps SYNCHRONIZE, unless it stood there for the whole of which less is denied now.
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
