#include "report/report.h"

#include <algorithm>
#include <utility>

#include "platform/nt/granted_rights.h"
#include "platform/nt/inheritance.h"
#include "security/object_security.h"
#include "security/object_server.h"
#include "survey/sid_key.h"

namespace permora {
namespace {

std::size_t LevelOf(std::string_view path) {
    return path.empty() ? 0 : 1 + static_cast<std::size_t>(std::ranges::count(path, '\\'));
}

std::string CountText(std::size_t count, const char* to) {
    return std::to_string(count) + (count == 1 ? " entry to " : " entries to ") + to;
}

// Whether the account has anything to do with an object that has this.
bool Concerns(const nt::SecurityDescriptor& descriptor, const std::vector<nt::Sid>& sids) {
    const auto isNamed = [&](const nt::Ace& entry) { return entry.sid == sids.front(); };
    return descriptor.owner == sids.front() || std::ranges::any_of(descriptor.dacl.entries, isNamed) ||
           (RightsIn(descriptor, sids) & (kReadingRights | kWritingRights)) != 0;
}

}  // namespace

std::uint32_t RightsIn(const nt::SecurityDescriptor& descriptor, std::span<const nt::Sid> sids) {
    constexpr std::uint32_t kEverything = RIGHTS_DISPLAY_MASK;
    return descriptor.daclState == nt::DaclState::kList ? nt::GrantedRights(descriptor.dacl, sids)
                                                        : kEverything;
}

std::string HandsDownText(const nt::SecurityDescriptor& descriptor) {
    if (descriptor.daclState != nt::DaclState::kList) return "nothing";
    const nt::Sid nobody;
    const auto count = [&](nt::ObjectKind kind) {
        return nt::InheritedEntries(descriptor.dacl, kind, descriptor.owner.value_or(nobody),
                                    descriptor.group.value_or(nobody))
            .entries.size();
    };
    const std::size_t toFolders = count(nt::ObjectKind::kFolder);
    const std::size_t toFiles = count(nt::ObjectKind::kFile);
    if (toFolders + toFiles == 0) return "nothing";
    return CountText(toFolders, "folders") + ", " + CountText(toFiles, "files");
}

Report::Report(Survey& surveyed, const SurveyRows& rows, const SurveySummary& summary)
    : survey(surveyed), allRows(rows), totals(summary) {
    for (const AccountSummary& account : totals.accounts) {
        accountPlaces.emplace(SidKey(account.sid), accounts.size());
        accounts.push_back({account, NameOf(account.sid), std::nullopt});
    }
}

std::string ShownAccountName(Survey& survey, const nt::Sid& sid) {
    return survey.Accounts().NameOf(sid);
}

bool RowChoice::Fits(const SurveyRow& row) {
    if (!selection.only.IsEmpty() && !row.remarks.HasAnyOf(selection.only)) return false;
    return !selection.account || ConcernsAccount(row);
}

bool RowChoice::IsDeepEnough(const SurveyRow& row) const {
    return !selection.depth || LevelOf(row.path) <= *selection.depth;
}

bool RowChoice::ConcernsAccount(const SurveyRow& row) {
    if (row.security == nullptr) return false;
    const auto [place, isNew] = known.try_emplace(row.security->own);
    if (isNew) {
        const nt::SecurityDescriptor& descriptor = row.security->own->Descriptor();
        place->second = Concerns(descriptor, selection.account->sids) ||
                        (selection.isOfServer && NamesUntold(descriptor.dacl));
    }
    return place->second;
}

void Report::Select(RowChoice choice) {
    chosen.clear();
    lists.clear();
    listPlaces.clear();
    recentLists.clear();
    std::string path;
    for (std::size_t i = 0; i < allRows.Count(); ++i) {
        const SurveyRow row = allRows.Row(i, path);
        if (!choice.IsDeepEnough(row) || !choice.Fits(row)) continue;
        chosen.push_back(i);
        if (row.security == nullptr) continue;
        const DistinctSecurity* const own = row.security->own;
        if (listPlaces.emplace(own, lists.size()).second) lists.push_back(own);
    }
}

ReportRow Report::Row(std::size_t index) const {
    ReportRow row;
    const SurveyRow kept = allRows.Row(chosen[index], row.path);
    row.top = kept.top;
    row.kind = kept.kind;
    row.remarks = kept.remarks;
    row.error = kept.error;
    if (kept.security != nullptr) row.list = listPlaces.at(kept.security->own);
    return row;
}

std::string Report::TypedPath(const ReportRow& row) const {
    return TypedChildPath(tops[row.top].typed, row.path);
}

std::shared_ptr<const ReportList> Report::List(std::size_t index) const {
    constexpr std::size_t kMostKept = 500;
    if (const auto kept = recentLists.find(index); kept != recentLists.end()) return kept->second;
    if (recentLists.size() >= kMostKept) recentLists.clear();
    return recentLists[index] = MakeList(*lists[index]);
}

std::shared_ptr<const ReportList> Report::MakeList(const DistinctSecurity& own) const {
    const auto list = std::make_shared<ReportList>();
    list->descriptor = own.Descriptor();
    list->bytes = own.bytes;
    list->isStored = own.isStored;
    list->owner = list->descriptor.owner ? NameOf(*list->descriptor.owner) : "none";
    list->handsDown = HandsDownText(list->descriptor);
    if (!list->isStored)
        list->notes.emplace_back("no list is stored: owner, group and mode on the host count");
    if (list->descriptor.daclState != nt::DaclState::kList) {
        list->notes.emplace_back("there is no access list: everyone may do everything");
        return list;
    }
    list->entries = list->descriptor.dacl.entries;
    AccessEntryList entries(list->entries);
    list->rows = AccessRowsOf(entries, AccountNameSoFar);
    for (std::string& note : RemarksOnEntries(entries))
        list->notes.push_back(std::move(note));
    return list;
}

std::optional<std::size_t> Report::PlaceOf(const nt::Sid& sid) const {
    const auto found = accountPlaces.find(SidKey(sid));
    if (found == accountPlaces.end()) return std::nullopt;
    return found->second;
}

std::vector<std::size_t> Report::WhoHas(const nt::SecurityDescriptor& descriptor,
                                        std::uint32_t rights) const {
    std::vector<std::size_t> who;
    for (std::size_t i = 0; i < accounts.size(); ++i) {
        const AccountSummary& account = accounts[i].summary;
        if (account.groupsError == ERROR_SUCCESS && (RightsIn(descriptor, account.groups) & rights) != 0)
            who.push_back(i);
    }
    return who;
}

}  // namespace permora
