#include "cli/report_text.h"

#include <array>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/interrupts.h"
#include "cli/listing.h"
#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/system_message.h"

namespace permora {
namespace {

using Table = std::vector<std::vector<std::string>>;

std::string RemarkTable(const SurveySummary& summary) {
    Table lines;
    for (std::size_t i = 0; i < kRemarkCount; ++i) {
        const auto remark = static_cast<Remark>(i);
        if (summary.rows.at(i) > 0)
            lines.push_back({CodeOf(remark), std::to_string(summary.rows.at(i)), TextOf(remark)});
    }
    return lines.empty() ? "" : "Remarks:\n" + AlignedTable(lines, "  ");
}

std::string PersonText(const Report& report, const GroupPerson& person) {
    std::string text = report.NameOf(person.sid);
    for (const nt::Sid& group : person.through)
        text += (group == person.through.front() ? " through " : ", ") + report.NameOf(group);
    return text;
}

std::string PeopleLines(const Report& report, const GroupPeople& people) {
    Table lines;
    for (const GroupPerson& person : people.people)
        lines.push_back({PersonText(report, person)});
    for (const nt::Sid& group : people.open)
        lines.push_back({"whoever is " + report.NameOf(group)});
    for (const GroupPeople::Unknown& group : people.unknown)
        lines.push_back(
            {"not known, who is in " + report.NameOf(group.group) + ": " + SystemMessageLine(group.error)});
    if (lines.empty()) lines.push_back({"nobody"});
    return AlignedTable(lines, "    ");
}

std::string AccountTable(const Report& report) {
    Table lines = {{"Account", "Can Read", "Can Write", "Owns", ""}};
    for (const ReportAccount& account : report.accounts) {
        const AccountSummary& summary = account.summary;
        const bool isKnown = summary.groupsError == ERROR_SUCCESS;
        const std::optional<Remark> remark = RemarkOf(summary.account.standing);
        lines.push_back({account.name, isKnown ? std::to_string(summary.readable) : "not known",
                         isKnown ? std::to_string(summary.writable) : "not known",
                         std::to_string(summary.owned), remark ? CodeOf(*remark) : ""});
    }
    return AlignedTable(lines, "");
}

std::string MemberList(const Report& report) {
    std::string text;
    for (const ReportAccount& account : report.accounts)
        if (account.people)
            text += "  " + PrintableText(account.name) + '\n' + PeopleLines(report, *account.people);
    return text.empty() ? "" : "Members:\n" + text;
}

std::string SummaryText(const Report& report) {
    const SurveySummary& summary = report.Summary();
    std::string text = "Objects: " + std::to_string(summary.objects) +
                       ", folders: " + std::to_string(summary.folders) +
                       ", distinct lists: " + std::to_string(summary.distinctLists) +
                       ", not readable: " + std::to_string(summary.unread + summary.unlisted);
    if (summary.mounted > 0) text += ", not entered (other volumes): " + std::to_string(summary.mounted);
    return text + '\n' + RemarkTable(summary) + AccountTable(report) + MemberList(report);
}

// Everything of an object but its path and its remarks.
std::string ReportedListText(const ReportList& list) {
    std::string text = "  Owner: " + PrintableText(list.owner) + '\n' +
                       (list.descriptor.IsDaclProtected() ? "  Inherits: no\n" : "  Inherits: yes\n") +
                       RemarkLines(list.notes);
    AccessEntryList entries(list.entries);
    return text + RowsText(entries);
}

std::string CodesOf(RemarkSet remarks) {
    std::string codes;
    for (const Remark remark : remarks)
        codes += (codes.empty() ? "" : ", ") + std::string(CodeOf(remark));
    return codes.empty() ? "" : "  Remarks: " + codes + '\n';
}

}  // namespace

void PrintReport(const Report& report) {
    Print(SummaryText(report));
    std::unordered_map<std::size_t, std::string> texts;  // many objects have few lists
    for (std::size_t i = 0; i < report.RowCount() && !IsInterrupted(); ++i) {
        const ReportRow row = report.Row(i);
        std::string text = '\n' + PrintableText(report.TypedPath(row)) + '\n' + CodesOf(row.remarks);
        if (row.error != ERROR_SUCCESS) text += "  Not read: " + SystemMessageLine(row.error) + '\n';
        if (row.list) {
            constexpr std::size_t kMostKept = 500;
            if (texts.size() >= kMostKept) texts.clear();
            std::string& known = texts[*row.list];
            const std::shared_ptr<const ReportList> list = report.List(*row.list);
            if (known.empty()) known = ReportedListText(*list);
            text += known;
            if (row.kind == TreeObjectKind::kFolder) text += "  Hands down: " + list->handsDown + '\n';
        }
        Print(text);
    }
    if (report.LeftOut() > 0)
        Print("\nNot listed, as they were not chosen: " + std::to_string(report.LeftOut()) + '\n');
}

}  // namespace permora
