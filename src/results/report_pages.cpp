#include "results/report_pages.h"

#include <algorithm>

#include "platform/grouped_number.h"
#include "platform/system_message.h"
#include "security/account_search.h"
#include "security/object_security.h"

namespace permora {
namespace {

enum FolderColumn : std::size_t { kFolderName, kFolderHas, kFolderDeparting, kFolderRemarked, kFolderPath };
constexpr ResultColumn kFolderColumns[] = {
    {"Folder", 190, ColumnOrder::kArrival},
    {"Has of Its Own", 390},
    {"Departing Below", 115},
    {"Remarks Below", 110},
    {"Path", 170},
};

enum ObjectColumn : std::size_t { kObjectPath, kObjectKind, kObjectOwner, kObjectRemarks, kObjectEntries };
constexpr ResultColumn kObjectColumns[] = {
    {"Object", 300, ColumnOrder::kArrival},
    {"Kind", 60},
    {"Owner", 150},
    {"Remarks", 320},
    {"Own Entries", 320},
};

enum AccountColumn : std::size_t {
    kAccountName,
    kAccountKind,
    kAccountListed,
    kAccountOwned,
    kAccountReadable,
    kAccountWritable,
    kAccountRemark,
};
constexpr ResultColumn kAccountColumns[] = {
    {"Account", 260, ColumnOrder::kArrival},
    {"Kind", 220},
    {"Listed", 80},
    {"Owns", 80},
    {"Can Read", 80},
    {"Can Write", 80},
    {"Remark", 300},
};

std::string FigureText(std::optional<std::size_t> figure) {
    return figure ? GroupedNumber(*figure) : "not known";
}

// What is not known comes before 0.
ResultKey FigureKey(std::optional<std::size_t> figure) {
    return {figure ? static_cast<std::int64_t>(*figure) : -1, {}};
}

}  // namespace

// --- Folders.

std::span<const ResultColumn> FoldersPage::Columns() const {
    return kFolderColumns;
}

std::string FoldersPage::Text(std::size_t row, std::size_t column) const {
    FiguresBelow below;
    const ShapedFolder folder = findings.Folder(row, below);
    switch (column) {
        case kFolderHas:
            return findings.Text(folder.row, RowText::kDeparture);
        case kFolderDeparting:
            return GroupedNumber(below.departing);
        case kFolderRemarked:
            return GroupedNumber(below.remarked);
        default:
            break;
    }
    const RowPlace place = findings.Place(folder.row);
    const std::string& top = tops[place.top].object.path;
    if (column == kFolderPath) return ChildPath(top, place.path);
    return place.path.empty() ? top : place.path.substr(folder.nameBegin);
}

ResultKey FoldersPage::KeyOf(std::size_t row, std::size_t column) const {
    if (column != kFolderDeparting && column != kFolderRemarked) return ResultPage::KeyOf(row, column);
    FiguresBelow below;
    findings.Folder(row, below);
    return FigureKey(column == kFolderDeparting ? below.departing : below.remarked);
}

std::optional<ResultObject> FoldersPage::Object(std::size_t row) const {
    FiguresBelow below;
    const RowPlace place = findings.Place(findings.Folder(row, below).row);
    return ObjectBelow(tops[place.top].object, place.path, place.kind);
}

// Deeper ones stand together, or their names would be out of sight.
std::size_t FoldersPage::Indent(std::size_t row) const {
    constexpr std::size_t kMostSteps = 24;
    FiguresBelow below;
    return std::min(findings.Folder(row, below).level, kMostSteps);
}

// --- Objects.

std::span<const ResultColumn> ObjectsPage::Columns() const {
    return kObjectColumns;
}

std::string ObjectsPage::Text(std::size_t row, std::size_t column) const {
    const std::size_t listed = findings.Listed(row);
    switch (column) {
        case kObjectKind:
            return findings.Text(listed, RowText::kKind);
        case kObjectOwner:
            return findings.Text(listed, RowText::kOwner);
        case kObjectRemarks:
            return findings.Text(listed, RowText::kRemarks);
        case kObjectEntries:
            return findings.Text(listed, RowText::kOwnEntries);
        default:
            break;
    }
    const RowPlace place = findings.Place(listed);
    return ChildPath(tops[place.top].object.path, place.path);
}

std::optional<ResultObject> ObjectsPage::Object(std::size_t row) const {
    const RowPlace place = findings.Place(findings.Listed(row));
    return ObjectBelow(tops[place.top].object, place.path, place.kind);
}

// --- Accounts.

namespace {

AccountLine LineOf(const ReportAccount& account) {
    const AccountSummary& summary = account.summary;
    AccountLine line;
    line.name = account.name;
    line.kind = AccountTypeText(summary.account.name.use);
    line.listed = summary.listed;
    line.owned = summary.owned;
    if (summary.groupsError == ERROR_SUCCESS) {
        line.readable = summary.readable;
        line.writable = summary.writable;
    }
    if (const std::optional<Remark> remark = RemarkOf(summary.account.standing))
        line.remark = TextOf(*remark);
    else if (summary.groupsError != ERROR_SUCCESS)
        line.remark = "its groups are not known: " + SystemMessageLine(summary.groupsError);
    return line;
}

// The people have figures of their own, as accounts.
void AddPeople(const Report& report, const ReportAccount& group, std::vector<AccountLine>& lines) {
    const auto add = [&](AccountLine line, const std::string& kind) {
        line.kind = kind;
        line.isInGroup = true;
        lines.push_back(std::move(line));
    };
    const std::string in = "In " + group.name;
    const GroupPeople& people = *group.people;
    if (people.people.empty() && people.open.empty() && people.unknown.empty()) add({.name = "nobody"}, in);
    for (const GroupPerson& person : people.people) {
        std::string kind = in;
        for (const nt::Sid& each : person.through)
            kind += (each == person.through.front() ? " through " : ", ") + report.NameOf(each);
        const std::optional<std::size_t> place = report.PlaceOf(person.sid);
        AccountLine line;
        if (place) line = LineOf(report.accounts[*place]);
        line.name = report.NameOf(person.sid);
        add(std::move(line), kind);
    }
    for (const nt::Sid& open : people.open)
        add({.name = "whoever is " + report.NameOf(open)}, in);
    for (const GroupPeople::Unknown& unknown : people.unknown)
        add({.name = "not known, who is in " + report.NameOf(unknown.group),
             .remark = SystemMessageLine(unknown.error)},
            in);
}

}  // namespace

std::vector<AccountLine> AccountLinesOf(const Report& report) {
    std::vector<AccountLine> lines;
    for (const ReportAccount& account : report.accounts) {
        lines.push_back(LineOf(account));
        if (account.people) AddPeople(report, account, lines);
    }
    return lines;
}

std::span<const ResultColumn> AccountsPage::Columns() const {
    return kAccountColumns;
}

std::string AccountsPage::Text(std::size_t row, std::size_t column) const {
    const AccountLine& line = lines[row];
    switch (column) {
        case kAccountName:
            return line.name;
        case kAccountKind:
            return line.kind;
        case kAccountListed:
            return FigureText(line.listed);
        case kAccountOwned:
            return FigureText(line.owned);
        case kAccountReadable:
            return FigureText(line.readable);
        case kAccountWritable:
            return FigureText(line.writable);
        default:
            return line.remark;
    }
}

ResultKey AccountsPage::KeyOf(std::size_t row, std::size_t column) const {
    const AccountLine& line = lines[row];
    switch (column) {
        case kAccountListed:
            return FigureKey(line.listed);
        case kAccountOwned:
            return FigureKey(line.owned);
        case kAccountReadable:
            return FigureKey(line.readable);
        case kAccountWritable:
            return FigureKey(line.writable);
        default:
            return ResultPage::KeyOf(row, column);
    }
}

}  // namespace permora
