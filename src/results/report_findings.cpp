#include "results/report_findings.h"

#include <utility>

#include "results/object_rows.h"
#include "survey/sid_key.h"

namespace permora {

// Looks the names up without the lock, since that may take seconds.
void ReportFindings::LearnNames(const DistinctSecurity& own, const NameOfSid& nameOf) {
    if (own.number >= areNamesKnown.size()) areNamesKnown.resize(own.number + 1);
    if (areNamesKnown[own.number]) return;
    areNamesKnown[own.number] = true;
    const nt::SecurityDescriptor descriptor = own.Descriptor();
    const auto learn = [&](const nt::Sid& sid) {
        std::string key = SidKey(sid);
        if (names.contains(key)) return;  // nobody else adds any
        std::string name = nameOf(sid);
        const std::scoped_lock hold(lock);
        names.emplace(std::move(key), std::move(name));
    };
    if (descriptor.owner) learn(*descriptor.owner);
    for (const nt::Ace& entry : descriptor.dacl.entries)
        if (entry.sid) learn(*entry.sid);
}

void ReportFindings::BeginTop(std::size_t top) {
    const std::scoped_lock hold(lock);
    walkedTops.push_back(top);
}

void ReportFindings::Add(const SurveyRow& row, FolderShape::Listing listing, const NameOfSid& nameOf) {
    if (row.security != nullptr) LearnNames(*row.security->own, nameOf);
    const std::scoped_lock hold(lock);
    const std::size_t place = rows.Count();
    rows.Add(row);
    shape.Add(row, place, listing);
    if (listing == FolderShape::Listing::kListed) listed.push_back(static_cast<std::uint32_t>(place));
}

std::size_t ReportFindings::ListedCount() const {
    const std::scoped_lock hold(lock);
    return listed.size();
}

std::size_t ReportFindings::FolderCount() const {
    const std::scoped_lock hold(lock);
    return shape.Count();
}

ShapedFolder ReportFindings::Folder(std::size_t index, FiguresBelow& below) const {
    const std::scoped_lock hold(lock);
    below = shape.Below(index);
    return shape.Folder(index);
}

std::size_t ReportFindings::Listed(std::size_t index) const {
    const std::scoped_lock hold(lock);
    return listed[index];
}

std::string ReportFindings::KnownName(const nt::Sid& sid) const {
    const auto found = names.find(SidKey(sid));
    return found == names.end() ? sid.ToText() : found->second;
}

std::string ReportFindings::Text(std::size_t place, RowText text) const {
    const auto nameOf = [this](const nt::Sid& sid) { return KnownName(sid); };
    const std::scoped_lock hold(lock);
    std::string path;
    const SurveyRow row = rows.Row(place, path);
    if (text == RowText::kKind) return KindText(row.kind);
    if (text == RowText::kRemarks) return RemarksText(row.remarks, row.error);
    if (row.security == nullptr)
        return text == RowText::kDeparture ? RemarksText(row.remarks, row.error) : std::string();
    if (text == RowText::kDeparture) return DepartureText(row, nameOf);
    const DistinctSecurity& own = *row.security->own;
    const nt::SecurityDescriptor descriptor = own.Descriptor();
    if (text == RowText::kOwner) return descriptor.owner ? nameOf(*descriptor.owner) : "none";
    return own.isStored ? EntriesText(descriptor, row.kind, ShownEntries::kOwn, nameOf) : std::string();
}

RowPlace ReportFindings::Place(std::size_t place) const {
    const std::scoped_lock hold(lock);
    RowPlace found;
    const SurveyRow row = rows.Row(place, found.path);
    found.top = walkedTops[row.top];
    found.kind = row.kind;
    return found;
}

}  // namespace permora
