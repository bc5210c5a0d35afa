#include "report/report_comparison.h"

#include <algorithm>
#include <array>
#include <memory>
#include <unordered_map>
#include <utility>

#include "platform/nt/inheritance.h"
#include "saved/saved_path.h"
#include "security/access_rights.h"
#include "survey/sid_key.h"

namespace permora {
namespace {

using Rights = std::shared_ptr<const std::vector<std::uint32_t>>;  // of each account; null: not known

// How far below the folder with the list: the object itself, what is in it, what is further below. Deeper
// levels are alike, since an entry is handed down by one level or by all.
enum class Level : std::uint8_t { kItself, kInIt, kDeep };

struct ComparedPlace {
    Level level;
    nt::ObjectKind kind;
};

// The places of a folder that are compared; a file is the first alone.
constexpr std::array<ComparedPlace, 5> kPlaces = {{
    {Level::kItself, nt::ObjectKind::kFolder},
    {Level::kInIt, nt::ObjectKind::kFolder},
    {Level::kInIt, nt::ObjectKind::kFile},
    {Level::kDeep, nt::ObjectKind::kFolder},
    {Level::kDeep, nt::ObjectKind::kFile},
}};

Level Below(Level level) {
    return level == Level::kItself ? Level::kInIt : Level::kDeep;
}

std::size_t LevelsBetween(std::string_view folder, std::string_view path) {
    const auto rest = path.substr(folder.size());
    const auto separators = static_cast<std::size_t>(std::ranges::count(rest, '\\'));
    return folder.empty() ? separators + 1 : separators;
}

bool IsIn(std::string_view path, std::string_view folder) {
    return folder.empty() ? !path.empty() : IsBelow(path, folder);
}

// What an object has that has nothing of its own, so many levels below a folder with this descriptor. Nothing
// when it gets nothing from there.
std::optional<nt::SecurityDescriptor> Inherited(const nt::SecurityDescriptor& folder, ComparedPlace place) {
    const nt::Sid nobody;
    const nt::Sid owner = folder.owner.value_or(nobody);
    const nt::Sid group = folder.group.value_or(nobody);
    nt::SecurityDescriptor above = folder;
    if (place.level == Level::kDeep)
        above = nt::NewObjectDescriptor(folder, nt::ObjectKind::kFolder, owner, group);
    nt::SecurityDescriptor child = nt::NewObjectDescriptor(above, place.kind, owner, group);
    if (child.daclState != nt::DaclState::kList || child.dacl.entries.empty()) return std::nullopt;
    return child;
}

// One of the two reports on the way through its rows.
class Side {
  public:
    // `sids` are, for each compared account, what stands for it in lists. Both are borrowed.
    Side(const ReadReport& source, const std::vector<std::vector<nt::Sid>>& sids)
        : report(source), holders(sids) {}

    // What is known of an object: a list of the report and how far above it stands. No list: nothing is
    // known.
    struct Source {
        std::optional<std::uint32_t> list;
        Level level = Level::kItself;
    };

    const ReadReport::Row* Next() const { return next < report.rows.size() ? &report.rows[next] : nullptr; }
    // To the first row of a top.
    void GoTo(std::uint32_t top) {
        next = 0;
        while (Next() != nullptr && Next()->top < top)
            ++next;
        folders.clear();
    }

    // The rows of a top must be come to in their order.
    Source Find(std::uint32_t top, const std::string& path) {
        while (!folders.empty() && !IsIn(path, folders.back()->path))
            folders.pop_back();
        const ReadReport::Row* const row = Next();
        if (row != nullptr && row->top == top && row->path == path) {
            ++next;
            if (row->kind == TreeObjectKind::kFolder) folders.push_back(row);
            return {row->list, Level::kItself};
        }
        if (folders.empty()) return {};
        const ReadReport::Row& folder = *folders.back();
        // What could not be listed may be anything.
        if (folder.isUnlisted) return {};
        const bool isInIt = LevelsBetween(folder.path, path) == 1;
        return {folder.list, isInIt ? Level::kInIt : Level::kDeep};
    }

    const nt::SecurityDescriptor* Descriptor(const Source& source) const {
        return source.list ? &report.lists[*source.list].descriptor : nullptr;
    }

    Rights RightsAt(const Source& source, nt::ObjectKind kind) {
        if (!source.list) return nullptr;
        const std::uint64_t key = (std::uint64_t{*source.list} << 3U) |
                                  (static_cast<std::uint64_t>(source.level) << 1U) |
                                  static_cast<std::uint64_t>(kind);
        const auto [known, isNew] = rights.try_emplace(key);
        if (!isNew) return known->second;
        Rights made = MakeRights(*source.list, {source.level, kind});
        constexpr std::size_t kMostNumbers = std::size_t{8} << 20;
        kept += made ? made->size() : 0;
        if (kept > kMostNumbers) {
            rights.clear();
            kept = 0;
        }
        return rights[key] = std::move(made);
    }

  private:
    Rights MakeRights(std::uint32_t list, ComparedPlace place) const {
        const nt::SecurityDescriptor* descriptor = &report.lists[list].descriptor;
        std::optional<nt::SecurityDescriptor> inherited;
        if (place.level != Level::kItself) {
            inherited = Inherited(*descriptor, place);
            if (!inherited) return nullptr;
            descriptor = &*inherited;
        }
        auto made = std::make_shared<std::vector<std::uint32_t>>();
        for (const std::vector<nt::Sid>& sids : holders)
            made->push_back(WithoutSynchronize(RightsIn(*descriptor, sids)) & RIGHTS_DISPLAY_MASK);
        return made;
    }

    const ReadReport& report;
    const std::vector<std::vector<nt::Sid>>& holders;
    std::size_t next = 0;
    std::vector<const ReadReport::Row*> folders;  // on the way to the last object
    std::unordered_map<std::uint64_t, Rights> rights;
    std::size_t kept = 0;
};

// The rights in one place before and after.
struct Pair {
    Rights before;
    Rights after;

    bool IsKnown() const { return before && after; }
    std::uint32_t Gained(std::size_t account) const {
        return IsKnown() ? (*after)[account] & ~(*before)[account] : 0;
    }
    std::uint32_t Lost(std::size_t account) const {
        return IsKnown() ? (*before)[account] & ~(*after)[account] : 0;
    }
    bool IsSame(const Pair& other, std::size_t account) const {
        return Gained(account) == other.Gained(account) && Lost(account) == other.Lost(account);
    }
};

using Owners = ChangedOwner;

bool IsSame(const Owners& one, const Owners& other) {
    return one.before == other.before && one.after == other.after;
}

// A folder on the way, with what is reported of it.
struct SeenFolder {
    std::string path;
    std::array<Pair, kPlaces.size()> pairs;
    Owners owners;
};

// "This folder and subfolders": the scope with these parts.
std::string ScopeText(bool itself, bool folders, bool files) {
    BYTE flags = 0;
    if (folders) flags |= CONTAINER_INHERIT_ACE;
    if (files) flags |= OBJECT_INHERIT_ACE;
    if (!itself) flags |= INHERIT_ONLY_ACE;
    return ScopeTextFromFlags(flags);
}

AccessChangeKind KindOf(std::uint32_t gained, std::uint32_t lost) {
    if (gained != 0) return lost != 0 ? AccessChangeKind::kBoth : AccessChangeKind::kGained;
    return lost != 0 ? AccessChangeKind::kLost : AccessChangeKind::kAsBefore;
}

class Comparing {
  public:
    Comparing(const ReadReport& olderReport, const ReadReport& newerReport, std::size_t count,
              const std::vector<std::vector<nt::Sid>>& holdersBefore,
              const std::vector<std::vector<nt::Sid>>& holdersAfter)
        : before(olderReport, holdersBefore), after(newerReport, holdersAfter), accounts(count) {}

    bool RunTop(std::uint32_t oldTop, std::uint32_t newTop, AccessObserver& observer, std::size_t& objects) {
        before.GoTo(oldTop);
        after.GoTo(newTop);
        seen.clear();
        for (;;) {
            const auto rowOf = [](const Side& side, std::uint32_t top) {
                return side.Next() != nullptr && side.Next()->top == top ? side.Next() : nullptr;
            };
            const ReadReport::Row* const was = rowOf(before, oldTop);
            const ReadReport::Row* const is = rowOf(after, newTop);
            if (was == nullptr && is == nullptr) return true;
            if (!observer.Begin()) return false;
            ++objects;
            const bool isOld = is == nullptr || (was != nullptr && ComesBefore(was->path, is->path));
            const ReadReport::Row next = isOld ? *was : *is;
            CompareObject(next, oldTop, newTop, observer);
        }
    }

  private:
    void CompareObject(const ReadReport::Row& row, std::uint32_t oldTop, std::uint32_t newTop,
                       AccessObserver& observer) {
        while (!seen.empty() && !IsIn(row.path, seen.back().path))
            seen.pop_back();
        const SeenFolder* const above = seen.empty() ? nullptr : &seen.back();
        const Side::Source was = before.Find(oldTop, row.path);
        const Side::Source is = after.Find(newTop, row.path);
        const bool isFolder = row.kind == TreeObjectKind::kFolder;
        SeenFolder object{row.path, {}, OwnersOf(was, is)};
        const std::size_t count = isFolder ? kPlaces.size() : 1;
        for (std::size_t i = 0; i < count; ++i)
            object.pairs[i] =
                PairAt(was, is, {kPlaces[i].level, isFolder ? kPlaces[i].kind : nt::ObjectKind::kFile});
        ComparedObjectAccess result{row.path, newTop, std::nullopt, {}, !object.pairs[0].IsKnown()};
        const Owners expected = above != nullptr ? above->owners : Owners{};
        if (was.list && is.list && object.owners.before != object.owners.after &&
            !IsSame(object.owners, expected))
            result.owner = object.owners;
        for (std::size_t account = 0; account < accounts; ++account)
            AddChanges(object, above, count, account, result.changes);
        if (result.owner || !result.changes.empty() || result.isUnknown) observer.Take(result);
        if (isFolder) seen.push_back(std::move(object));
    }

    Owners OwnersOf(const Side::Source& was, const Side::Source& is) const {
        Owners owners;
        if (const auto* descriptor = before.Descriptor(was)) owners.before = descriptor->owner;
        if (const auto* descriptor = after.Descriptor(is)) owners.after = descriptor->owner;
        return owners;
    }

    Pair PairAt(const Side::Source& was, const Side::Source& is, ComparedPlace place) {
        const auto at = [&place](Side& side, Side::Source source) {
            if (place.level == Level::kInIt) source.level = Below(source.level);
            if (place.level == Level::kDeep) source.level = Level::kDeep;
            return side.RightsAt(source, place.kind);
        };
        return {at(before, was), at(after, is)};
    }

    // What the object would show if nothing changed but what its folder hands down.
    static Pair Expected(const SeenFolder* above, const std::string& path, ComparedPlace place,
                         bool isFolder) {
        if (above == nullptr) return {};
        const bool isInIt = place.level == Level::kItself && LevelsBetween(above->path, path) == 1;
        const bool isOfFolder =
            place.level == Level::kItself ? isFolder : place.kind == nt::ObjectKind::kFolder;
        return above->pairs[(isInIt ? 1U : 3U) + (isOfFolder ? 0U : 1U)];
    }

    // The places of an object at which the account's rights have changed otherwise than above, together where
    // they have changed alike.
    void AddChanges(const SeenFolder& object, const SeenFolder* above, std::size_t count, std::size_t account,
                    std::vector<AccessChange>& changes) const {
        std::array<bool, kPlaces.size()> isChanged{};
        for (std::size_t i = 0; i < count; ++i) {
            const Pair& pair = object.pairs[i];
            const Pair expected = Expected(above, object.path, kPlaces[i], count > 1);
            isChanged[i] = pair.IsKnown() && !pair.IsSame(expected, account);
        }
        for (std::size_t i = 0; i < count; ++i) {
            if (!isChanged[i]) continue;
            const Pair& pair = object.pairs[i];
            std::array<bool, kPlaces.size()> isAlike{};
            for (std::size_t k = i; k < count; ++k) {
                const Pair& other = object.pairs[k];
                isAlike[k] = isChanged[k] && (*other.before)[account] == (*pair.before)[account] &&
                             (*other.after)[account] == (*pair.after)[account];
                if (isAlike[k]) isChanged[k] = false;
            }
            changes.push_back({KindOf(pair.Gained(account), pair.Lost(account)), account,
                               (*pair.before)[account], (*pair.after)[account],
                               count > 1 ? WhereText(isAlike) : ""});
        }
    }

    static std::string WhereText(const std::array<bool, kPlaces.size()>& is) {
        if (is[1] == is[3] && is[2] == is[4]) return ScopeText(is[0], is[1], is[2]);
        std::string text;
        if (is[0] || is[1] || is[2]) text = ScopeText(is[0], is[1], is[2]) + ", direct children only";
        if (is[3] || is[4])
            text += (text.empty() ? "" : "; ") + ScopeText(false, is[3], is[4]) + " further below";
        return text;
    }

    Side before;
    Side after;
    const std::size_t accounts;
    std::vector<SeenFolder> seen;
};

}  // namespace

// An account that only one of them names has the groups there in both.
void ReportComparison::JoinAccounts() {
    std::unordered_map<std::string, std::pair<const ReadReport::Account*, const ReadReport::Account*>> named;
    std::vector<std::string> order;
    const auto add = [&](const ReadReport::Account& account, bool isNewer) {
        const auto [place, isNew] = named.try_emplace(SidKey(account.sid));
        if (isNew) order.push_back(place->first);
        (isNewer ? place->second.second : place->second.first) = &account;
    };
    for (const ReadReport::Account& account : newer.accounts)
        add(account, true);
    for (const ReadReport::Account& account : older.accounts)
        add(account, false);
    for (const std::string& key : order) {
        const auto [was, is] = named[key];
        const ReadReport::Account& shown = is != nullptr ? *is : *was;
        const auto sidsOf = [&](const ReadReport::Account* account) {
            const auto& groups = (account != nullptr ? account : &shown)->groups;
            return groups ? *groups : std::vector{shown.sid};
        };
        const bool isUnknown = (was != nullptr && !was->groups) || (is != nullptr && !is->groups);
        accounts.push_back({shown.sid, shown.name, isUnknown});
        holdersBefore.push_back(sidsOf(isUnknown ? nullptr : was));
        holdersAfter.push_back(sidsOf(isUnknown ? nullptr : is));
        if (isUnknown) holdersBefore.back() = holdersAfter.back() = {shown.sid};
    }
}

void ReportComparison::MatchTops() {
    if (older.tops.size() == 1 && newer.tops.size() == 1) {
        topPairs.emplace_back(0, 0);
        return;
    }
    std::vector<bool> isMatched(older.tops.size());
    for (std::uint32_t i = 0; i < newer.tops.size(); ++i) {
        const auto found = std::ranges::find(older.tops, newer.tops[i].fullPath, &ReportTop::fullPath);
        const auto place = static_cast<std::size_t>(found - older.tops.begin());
        if (found == older.tops.end() || isMatched[place]) {
            unmatched.push_back(newer.tops[i].fullPath);
            continue;
        }
        isMatched[place] = true;
        topPairs.emplace_back(static_cast<std::uint32_t>(place), i);
    }
    for (std::size_t i = 0; i < older.tops.size(); ++i)
        if (!isMatched[i]) unmatched.push_back(older.tops[i].fullPath);
}

ReportComparison::ReportComparison(const ReadReport& olderReport, const ReadReport& newerReport)
    : older(olderReport), newer(newerReport) {
    JoinAccounts();
    MatchTops();
}

bool ReportComparison::Run(AccessObserver& observer, std::size_t& objects) const {
    Comparing comparing(older, newer, accounts.size(), holdersBefore, holdersAfter);
    for (const auto& [oldTop, newTop] : topPairs)
        if (!comparing.RunTop(oldTop, newTop, observer, objects)) return false;
    return true;
}

}  // namespace permora
