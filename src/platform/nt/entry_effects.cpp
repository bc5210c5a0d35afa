#include "platform/nt/entry_effects.h"

#include <algorithm>
#include <cstdint>

#include "platform/nt/ace_bits.h"

namespace permora::nt {
namespace {

// An entry of the folder, and how much of it has been found in the object.
struct Candidate {
    EntryEffects exact;     // with the object's owner and group in the place of creators
    EntryEffects tolerant;  // with the creators, who may have been any account
    bool isHereUsed = false;
    bool isBelowUsed = false;
};

EntryEffects EffectsHandedDown(const Ace& entry, ObjectKind kind, const Sid& owner, const Sid& group) {
    Acl list;
    list.entries.push_back(entry);
    EntryEffects effects;
    for (const Ace& inherited : InheritedEntries(list, kind, owner, group).entries)
        AddEffects(inherited, kind, effects);
    return effects;
}

// Whether each of the entries that were found is expected.
bool AllAreIn(const EntryEffects& found, const EntryEffects& expected) {
    const auto isIn = [](const std::vector<Ace>& some, const std::vector<Ace>& all) {
        return std::ranges::all_of(some, [&](const Ace& entry) {
            return std::ranges::any_of(all, [&](const Ace& other) { return IsSameEffect(entry, other); });
        });
    };
    return isIn(found.here, expected.here) && isIn(found.below, expected.below);
}

// Whether each of the entries that are expected was found: the object has all that the folder's entry does.
bool AreAllFound(const EntryEffects& expected, const EntryEffects& found) {
    const auto isFound = [](const std::vector<Ace>& some, const std::vector<Ace>& all) {
        return std::ranges::all_of(some, [&](const Ace& entry) {
            return std::ranges::any_of(all, [&](const Ace& other) { return IsSameEffect(other, entry); });
        });
    };
    return isFound(expected.here, found.here) && isFound(expected.below, found.below);
}

EntryEffects InheritedEffects(const Acl& list, ObjectKind kind) {
    EntryEffects effects;
    for (const Ace& entry : list.entries)
        if ((entry.flags & kInherited) != 0) AddEffects(entry, kind, effects);
    return effects;
}

enum class Match : std::uint8_t { kExactUnused, kUnused, kExact, kAny };

bool IsMatch(const EntryEffects& found, const Candidate& candidate, Match match) {
    const bool mustBeUnused = match == Match::kExactUnused || match == Match::kUnused;
    const bool mustBeExact = match == Match::kExactUnused || match == Match::kExact;
    const bool isUsed =
        (!found.here.empty() && candidate.isHereUsed) || (!found.below.empty() && candidate.isBelowUsed);
    return !(mustBeUnused && isUsed) && AllAreIn(found, mustBeExact ? candidate.exact : candidate.tolerant);
}

std::optional<std::size_t> TakeCandidate(const EntryEffects& found, std::vector<Candidate>& candidates) {
    if (found.here.empty() && found.below.empty()) return std::nullopt;
    for (const Match match : {Match::kExactUnused, Match::kUnused, Match::kExact, Match::kAny}) {
        const auto place = std::ranges::find_if(
            candidates, [&](const Candidate& candidate) { return IsMatch(found, candidate, match); });
        if (place == candidates.end()) continue;
        place->isHereUsed = place->isHereUsed || !found.here.empty();
        place->isBelowUsed = place->isBelowUsed || !found.below.empty();
        return static_cast<std::size_t>(place - candidates.begin());
    }
    return std::nullopt;
}

}  // namespace

const Sid& CreatorOwner() {
    static const Sid kSid(3, {0});
    return kSid;
}

const Sid& CreatorGroup() {
    static const Sid kSid(3, {1});
    return kSid;
}

void AddEffects(const Ace& entry, ObjectKind kind, EntryEffects& effects) {
    constexpr std::uint8_t kHandedOn = kObjectInherit | kContainerInherit;
    Ace bare = entry;
    bare.mask = MapGenericRights(entry.mask);
    bare.flags = 0;
    if ((entry.flags & kInheritOnly) == 0) effects.here.push_back(bare);
    if (kind == ObjectKind::kFile || (entry.flags & kHandedOn) == 0) return;
    bare.flags = entry.flags & (kHandedOn | kNoPropagateInherit);
    effects.below.push_back(std::move(bare));
}

bool IsSameEffect(const Ace& found, const Ace& expected) {
    if (found == expected) return true;
    if (expected.sid != CreatorOwner() && expected.sid != CreatorGroup()) return false;
    Ace other = found;
    other.sid = expected.sid;
    return found.sid && other == expected;
}

std::vector<std::optional<std::size_t>> FindHandedDown(const SecurityDescriptor& object, const Acl& above,
                                                       ObjectKind kind) {
    const EntryEffects all = InheritedEffects(object.dacl, kind);
    std::vector<Candidate> candidates;
    for (const Ace& entry : above.entries) {
        Candidate& candidate = candidates.emplace_back();
        candidate.tolerant = EffectsHandedDown(entry, kind, CreatorOwner(), CreatorGroup());
        if (AreAllFound(candidate.tolerant, all))
            candidate.exact = EffectsHandedDown(entry, kind, object.owner.value_or(CreatorOwner()),
                                                object.group.value_or(CreatorGroup()));
        else
            candidate = {};  // the object has nothing of it, or only a part
    }
    std::vector<std::optional<std::size_t>> found;
    for (const Ace& entry : object.dacl.entries) {
        EntryEffects effects;
        if ((entry.flags & kInherited) != 0) AddEffects(entry, kind, effects);
        found.push_back(TakeCandidate(effects, candidates));
    }
    return found;
}

bool LetsNobodyIn(const SecurityDescriptor& descriptor) {
    static const Sid kEveryone(1, {0});
    if (descriptor.daclState != DaclState::kList) return false;
    std::uint32_t denied = 0;
    for (const Ace& entry : descriptor.dacl.entries) {
        if ((entry.flags & kInheritOnly) != 0) continue;
        if (entry.type == kAccessDeniedType && entry.sid == kEveryone)
            denied |= entry.mask;
        else if (IsAllowType(entry.type) && (entry.mask & ~denied) != 0)
            return false;
    }
    return true;
}

bool IsInheritedIn(const SecurityDescriptor& descriptor, const Ace& entry) {
    return !descriptor.IsDaclProtected() && (entry.flags & kInherited) != 0;
}

}  // namespace permora::nt
