#include "survey/handed_down.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/nt/ace_bits.h"

namespace permora {
namespace {

const nt::Sid& CreatorOwner() {
    static const nt::Sid kSid(3, {0});
    return kSid;
}

const nt::Sid& CreatorGroup() {
    static const nt::Sid kSid(3, {1});
    return kSid;
}

// An entry takes effect on the object, is handed on, or both. The two are compared apart.
struct Effects {
    std::vector<nt::Ace> here;
    std::vector<nt::Ace> below;
};

enum class Entries : std::uint8_t { kInherited, kAll };

void AddEffects(const nt::Ace& entry, nt::ObjectKind kind, Effects& effects) {
    constexpr std::uint8_t kHandedOn = nt::kObjectInherit | nt::kContainerInherit;
    nt::Ace bare = entry;
    bare.mask = nt::MapGenericRights(entry.mask);
    bare.flags = 0;
    if ((entry.flags & nt::kInheritOnly) == 0) effects.here.push_back(bare);
    // Nothing is below a file, and a file that has nothing but such entries inherits nothing.
    if (kind == nt::ObjectKind::kFile || (entry.flags & kHandedOn) == 0) return;
    bare.flags = entry.flags & (kHandedOn | nt::kNoPropagateInherit);
    effects.below.push_back(std::move(bare));
}

Effects EffectsOf(const nt::Acl& list, nt::ObjectKind kind, Entries which) {
    Effects effects;
    for (const nt::Ace& entry : list.entries)
        if (which == Entries::kAll || (entry.flags & nt::kInherited) != 0) AddEffects(entry, kind, effects);
    return effects;
}

// Where `expected` names a creator, any account will do.
bool IsSameEntry(const nt::Ace& found, const nt::Ace& expected) {
    if (found == expected) return true;
    if (expected.sid != CreatorOwner() && expected.sid != CreatorGroup()) return false;
    nt::Ace other = found;
    other.sid = expected.sid;
    return found.sid && other == expected;
}

bool AreSame(const Effects& found, const Effects& expected) {
    return std::ranges::equal(found.here, expected.here, IsSameEntry) &&
           std::ranges::equal(found.below, expected.below);
}

// An entry that stands there a second time changes nothing.
void RemoveRepeated(std::vector<nt::Ace>& entries) {
    std::unordered_set<std::string> known;
    std::vector<std::uint8_t> bytes;
    std::erase_if(entries, [&](const nt::Ace& entry) {
        bytes.clear();
        entry.AppendTo(bytes);
        return !known.emplace(bytes.begin(), bytes.end()).second;
    });
}

void RemoveRepeated(Effects& effects) {
    RemoveRepeated(effects.here);
    RemoveRepeated(effects.below);
}

bool IsMarked(const nt::SecurityDescriptor& object) {
    return (object.control & nt::kDaclAutoInherited) != 0 ||
           std::ranges::any_of(object.dacl.entries,
                               [](const nt::Ace& entry) { return (entry.flags & nt::kInherited) != 0; });
}

bool AreAlike(const nt::SecurityDescriptor& object, const nt::Acl& above, nt::ObjectKind kind,
              Entries which) {
    Effects found = EffectsOf(object.dacl, kind, which);
    const nt::Acl withCreators = nt::InheritedEntries(above, kind, CreatorOwner(), CreatorGroup());
    if (AreSame(found, EffectsOf(withCreators, kind, Entries::kAll))) return true;
    // With the owner's and the group's own entries, some may stand there twice.
    const nt::Acl handedDown = nt::InheritedEntries(above, kind, object.owner.value_or(CreatorOwner()),
                                                    object.group.value_or(CreatorGroup()));
    Effects expected = EffectsOf(handedDown, kind, Entries::kAll);
    RemoveRepeated(found);
    RemoveRepeated(expected);
    return AreSame(found, expected);
}

}  // namespace

HandedDown CompareHandedDown(const nt::SecurityDescriptor& object, const nt::Acl& above,
                             nt::ObjectKind kind) {
    if (AreAlike(object, above, kind, Entries::kInherited)) return HandedDown::kMarked;
    if (!IsMarked(object) && AreAlike(object, above, kind, Entries::kAll)) return HandedDown::kUnmarked;
    return HandedDown::kStale;
}

}  // namespace permora
