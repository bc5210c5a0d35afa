#include "policy/policy_edit.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/nt/ace_bits.h"
#include "platform/nt/entry_effects.h"
#include "platform/path_below.h"
#include "platform/security_change.h"
#include "policy/path_pattern.h"

namespace permora {
namespace {

constexpr std::uint8_t kHandedDownBits =
    nt::kObjectInherit | nt::kContainerInherit | nt::kNoPropagateInherit | nt::kInheritOnly;

// What leads from the folder to the path; nothing: that is elsewhere. Both are below the top.
std::optional<std::string_view> PathFrom(std::string_view folder, std::string_view path) {
    if (folder.empty()) return path;
    if (!IsAtOrBelow(path, folder)) return std::nullopt;
    return path.substr(std::min(folder.size() + 1, path.size()));
}

bool IsFor(const RuleInTree& each, const ObjectToEdit& object) {
    const bool isFolder = object.kind == nt::ObjectKind::kFolder;
    if (each.rule->kinds != PolicyKinds::kAll && (each.rule->kinds == PolicyKinds::kFolders) != isFolder)
        return false;
    if (each.rule->below.empty()) return object.path == each.start;
    const std::optional<std::string_view> path = PathFrom(each.start, object.path);
    return object.hasContents && path && !path->empty() && MatchesPattern(each.rule->below, *path);
}

// Whether the rule may be about something below the folder, whatever may be there.
bool MayBeAboutBelow(const RuleInTree& each, std::string_view folder) {
    const std::optional<std::string_view> path = PathFrom(each.start, folder);
    if (path) return !each.rule->below.empty() && MayMatchBelow(each.rule->below, *path);
    return PathFrom(folder, each.start).has_value();
}

bool MayBeAboutAt(const RuleInTree& each, std::string_view place) {
    if (each.rule->below.empty()) return place == each.start;
    const std::optional<std::string_view> path = PathFrom(each.start, place);
    return path && !path->empty() && MatchesPattern(each.rule->below, *path);
}

// The rule's entries as an object of this kind has them: what is handed down means nothing on a file.
std::vector<nt::Ace> EntriesFor(const PolicyRule& rule, nt::ObjectKind kind) {
    if (kind == nt::ObjectKind::kFolder) return rule.entries;
    std::vector<nt::Ace> entries;
    for (nt::Ace entry : rule.entries) {
        if ((entry.flags & nt::kInheritOnly) != 0) continue;
        entry.flags &= static_cast<std::uint8_t>(~kHandedDownBits);
        const auto same = std::ranges::find_if(entries, [&](const nt::Ace& other) {
            return other.type == entry.type && other.sid == entry.sid;
        });
        if (same == entries.end())
            entries.push_back(std::move(entry));
        else
            same->mask |= entry.mask;
    }
    return entries;
}

std::vector<nt::Ace> OwnEntries(const nt::SecurityDescriptor& descriptor) {
    std::vector<nt::Ace> own;
    for (nt::Ace entry : descriptor.dacl.entries) {
        if (IsInheritedIn(descriptor, entry)) continue;
        entry.flags &= static_cast<std::uint8_t>(~nt::kInherited);
        own.push_back(std::move(entry));
    }
    return own;
}

bool AreDenialsFirst(const std::vector<nt::Ace>& entries) {
    return std::ranges::is_partitioned(entries,
                                       [](const nt::Ace& entry) { return nt::IsDenyType(entry.type); });
}

// In another order they mean the same, as long as denials come first.
bool AreExactly(const std::vector<nt::Ace>& own, const std::vector<nt::Ace>& wanted) {
    return std::ranges::is_permutation(own, wanted) && AreDenialsFirst(own);
}

// A denial counts before what allows alone, and is put there.
void Include(nt::Ace wanted, std::vector<nt::Ace>& own) {
    const bool isDenial = wanted.type == nt::kAccessDeniedType;
    const auto isAllow = [](const nt::Ace& entry) { return nt::IsAllowType(entry.type); };
    const auto same = std::ranges::find_if(own, [&](const nt::Ace& entry) {
        return entry.type == wanted.type && entry.flags == wanted.flags && entry.sid == wanted.sid;
    });
    if (same != own.end()) {
        same->mask |= wanted.mask;
        if (!isDenial || std::none_of(own.begin(), same, isAllow)) return;
        wanted = *same;
        own.erase(same);
    }
    own.insert(isDenial ? std::ranges::find_if(own, isAllow) : own.end(), std::move(wanted));
}

std::vector<nt::Ace> WantedEntries(const PolicyRule& rule, nt::ObjectKind kind, std::vector<nt::Ace> own) {
    if (!rule.extent) return own;
    std::vector<nt::Ace> wanted = EntriesFor(rule, kind);
    if (*rule.extent == PolicyExtent::kExactly) return AreExactly(own, wanted) ? own : wanted;
    for (const nt::Ace& entry : wanted)
        Include(entry, own);
    return own;
}

// Gives the object its own entries, which the folder's join unless it is protected. False: what its folder
// hands down is not known.
bool SetList(const ObjectToEdit& object, std::vector<nt::Ace> own, bool isProtected,
             nt::SecurityDescriptor& wanted) {
    wanted.daclState = nt::DaclState::kList;
    wanted.dacl.entries = std::move(own);
    wanted.control &= static_cast<std::uint16_t>(~(nt::kDaclProtected | SE_DACL_DEFAULTED));
    wanted.control |= nt::kDaclAutoInherited;
    if (isProtected) wanted.control |= nt::kDaclProtected;
    if (isProtected) return true;
    if (object.above == nullptr) return false;
    JoinInherited(wanted, object.above->after, object.kind, {}, {});
    return true;
}

bool Inherits(const nt::SecurityDescriptor& descriptor) {
    return descriptor.daclState == nt::DaclState::kList && !descriptor.IsDaclProtected();
}

EditFault Apply(const PolicyRule& rule, const ObjectToEdit& object, nt::SecurityDescriptor& wanted) {
    if (rule.owner) wanted.owner = rule.owner;
    if (!rule.extent && !rule.isProtected) return EditFault::kNone;
    const nt::SecurityDescriptor& present = object.present;
    const bool hasList = present.daclState == nt::DaclState::kList;
    if (!hasList && rule.extent != PolicyExtent::kExactly) return EditFault::kNoList;
    std::vector<nt::Ace> own = OwnEntries(present);
    std::vector<nt::Ace> entries = WantedEntries(rule, object.kind, own);
    const bool isProtected = rule.isProtected.value_or(present.IsDaclProtected());
    if (hasList && entries == own && isProtected == present.IsDaclProtected()) return EditFault::kNone;
    return SetList(object, std::move(entries), isProtected, wanted) ? EditFault::kNone
                                                                    : EditFault::kUnknownFolder;
}

}  // namespace

PolicyEdit::PolicyEdit(std::vector<RuleInTree> rulesInTree)
    : rules(std::move(rulesInTree)), meetings(rules.size(), Meeting::kNone) {}

const PolicyRule* PolicyEdit::RuleFor(const ObjectToEdit& object) {
    const PolicyRule* found = nullptr;
    for (std::size_t i = 0; i < rules.size(); ++i) {
        if (object.path == rules[i].start) meetings[i] = Meeting::kMet;
        if (IsFor(rules[i], object)) found = rules[i].rule;
    }
    return found;
}

bool PolicyEdit::Misses(std::string_view path, EditGap gap) {
    bool isMissed = false;
    bool isElsewhere = false;  // a turn of its own is about what is mounted there
    for (std::size_t i = 0; i < rules.size(); ++i) {
        const bool isInIt = PathFrom(path, rules[i].start).has_value();
        if (gap == EditGap::kMounted && isInIt) meetings[i] = Meeting::kElsewhere;
        if (gap == EditGap::kUnread && path == rules[i].start) meetings[i] = Meeting::kMet;
        isElsewhere = isElsewhere || (gap == EditGap::kMounted && path == rules[i].start);
        if (gap == EditGap::kMounted && isInIt) continue;
        isMissed = isMissed || MayBeAboutBelow(rules[i], path) ||
                   (gap != EditGap::kUnlisted && MayBeAboutAt(rules[i], path));
    }
    return isMissed && !isElsewhere;
}

bool PolicyEdit::Enters(std::string_view folder) const {
    return std::ranges::any_of(rules, [&](const RuleInTree& each) { return MayBeAboutBelow(each, folder); });
}

EditedSecurity PolicyEdit::Edit(const ObjectToEdit& object) {
    EditedSecurity edited;
    edited.wanted = object.present;
    if (const PolicyRule* const rule = RuleFor(object)) {
        edited.fault = Apply(*rule, object, edited.wanted);
        edited.rulesOwner = rule->owner.has_value();
    }
    const bool isListKept = edited.wanted.dacl == object.present.dacl &&
                            edited.wanted.daclState == object.present.daclState &&
                            edited.wanted.control == object.present.control;
    const bool hasFolderChanged = object.place == EditPlace::kBelow && object.above != nullptr &&
                                  &object.above->before != &object.above->after;
    if (isListKept && hasFolderChanged && Inherits(edited.wanted))
        JoinInherited(edited.wanted, object.above->after, object.kind, {}, {});
    if (edited.fault != EditFault::kNone) edited.wanted = object.present;
    return edited;
}

}  // namespace permora
