#include "survey/handed_down.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/nt/ace_bits.h"
#include "platform/nt/entry_effects.h"

namespace permora {
namespace {

enum class Entries : std::uint8_t { kInherited, kAll };

nt::EntryEffects EffectsOf(const nt::Acl& list, nt::ObjectKind kind, Entries which) {
    nt::EntryEffects effects;
    for (const nt::Ace& entry : list.entries)
        if (which == Entries::kAll || (entry.flags & nt::kInherited) != 0)
            nt::AddEffects(entry, kind, effects);
    return effects;
}

bool AreSame(const nt::EntryEffects& found, const nt::EntryEffects& expected) {
    return std::ranges::equal(found.here, expected.here, nt::IsSameEffect) &&
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

void RemoveRepeated(nt::EntryEffects& effects) {
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
    nt::EntryEffects found = EffectsOf(object.dacl, kind, which);
    const nt::Acl withCreators = nt::InheritedEntries(above, kind, nt::CreatorOwner(), nt::CreatorGroup());
    if (AreSame(found, EffectsOf(withCreators, kind, Entries::kAll))) return true;
    // With the owner's and the group's own entries, some may stand there twice.
    const nt::Acl handedDown = nt::InheritedEntries(above, kind, object.owner.value_or(nt::CreatorOwner()),
                                                    object.group.value_or(nt::CreatorGroup()));
    nt::EntryEffects expected = EffectsOf(handedDown, kind, Entries::kAll);
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
