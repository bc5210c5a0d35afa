#include "report/report_page.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "platform/api/files.h"
#include "platform/system_message.h"
#include "platform/visible_text.h"
#include "report/page_parts.h"
#include "report/visible_text.h"
#include "saved/base64.h"
#include "saved/output_buffer.h"
#include "saved/sha256.h"
#include "security/entry_details.h"

namespace permora {
namespace {

using Json = nlohmann::ordered_json;

// Those that call for something to be done.
constexpr RemarkSet kGraveRemarks = {Remark::kOpenToAll,      Remark::kNullList, Remark::kDamaged,
                                     Remark::kUnreadable,     Remark::kUnlisted, Remark::kStale,
                                     Remark::kDeletedAccount, Remark::kBrokenSid};

// "'sha256-...'": what a policy calls a text that it allows.
std::string PolicySource(std::string_view text) {
    Sha256 hash;
    hash.Add(text);
    const std::string digest = hash.Digest();
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < digest.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(digest.substr(i, 2), nullptr, 16)));
    std::string source = "'sha256-";
    AppendBase64(bytes, source);
    return source + '\'';
}

std::string Cell(std::string_view text) {
    return "<td>" + HtmlText(text) + "</td>";
}

std::string TitleRow(std::initializer_list<const char*> titles) {
    std::string row = "<thead><tr>";
    for (const char* const title : titles)
        row += "<th scope=\"col\">" + std::string(title) + "</th>";
    return row + "</tr></thead>\n";
}

std::string RemarkMark(Remark remark) {
    return std::string("<span class=\"remark") + (kGraveRemarks.Has(remark) ? " grave" : "") + "\" title=\"" +
           HtmlText(TextOf(remark)) + "\">" + CodeOf(remark) + "</span>";
}

// The path of what is below a top, as the script takes it apart: names cannot have a slash.
std::string ScriptPath(std::string_view path) {
    std::string visible;
    while (!path.empty()) {
        const std::string_view name = path.substr(0, path.find('\\'));
        if (!visible.empty()) visible += '/';
        visible += VisibleText(name);
        path.remove_prefix(std::min(path.size(), name.size() + 1));
    }
    return visible;
}

std::string LimitOf(const nt::Ace& entry) {
    return IsForDirectChildrenOnly(entry.flags) ? "; direct children only" : "";
}

class PageWriter {
  public:
    PageWriter(const Report& shown, SavedOutput& output) : report(shown), buffer(output) {}

    DWORD Run() {
        WriteHead();
        WriteSummary();
        Write("<section id=\"objects\">\n<h2>Where something changes</h2>\n");
        WriteLeftOut();
        Write("<noscript>\n");
        WriteObjects();
        WriteLists();
        Write("</noscript>\n");
        Write(PageExplorer());
        Write("</section>\n</main>\n");
        WriteData();
        Write("<script>" + std::string(PageScript()) + "</script>\n</body>\n</html>\n");
        return error == ERROR_SUCCESS ? buffer.Flush() : error;
    }

  private:
    void Write(std::string_view text) {
        if (error == ERROR_SUCCESS) error = buffer.Write(text);
    }

    void WriteHead() {
        std::string tops;
        for (const ReportTop& top : report.tops)
            tops += (tops.empty() ? "" : ", ") + HtmlText(top.typed);
        Write(
            "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
            "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; base-uri 'none'; "
            "form-action "
            "'none'; style-src " +
            PolicySource(PageStyle()) + "; script-src " + PolicySource(PageScript()) +
            "\">\n<meta name=\"referrer\" content=\"no-referrer\">\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>Permissions "
            "of " +
            tops + "</title>\n<style>" + std::string(PageStyle()) + "</style>\n</head>\n<body>\n<header>\n");
        Write("<h1>Permissions</h1>\n<p class=\"path\">" + tops + "</p>\n<p class=\"quiet\">As of " +
              HtmlText(report.time) + "</p>\n");
        Write("</header>\n<main>\n");
    }

    void WriteFigure(const char* name, std::size_t number) {
        Write("<div><dt>" + std::string(name) + "</dt><dd>" + std::to_string(number) + "</dd></div>\n");
    }

    void WriteSummary() {
        const SurveySummary& summary = report.Summary();
        Write("<section id=\"summary\">\n<dl class=\"figures\">\n");
        WriteFigure("Objects", summary.objects);
        WriteFigure("Folders", summary.folders);
        WriteFigure("Distinct lists", summary.distinctLists);
        WriteFigure("Not readable", summary.unread + summary.unlisted);
        if (summary.mounted > 0) WriteFigure("Not entered", summary.mounted);
        Write("</dl>\n<div class=\"overview\">\n<div>\n<h2>Remarks</h2>\n<table>\n" +
              TitleRow({"Remark", "Meaning", "Objects"}) + "<tbody>\n");
        for (std::size_t i = 0; i < kRemarkCount; ++i) {
            if (summary.rows.at(i) == 0) continue;
            const auto remark = static_cast<Remark>(i);
            Write("<tr><td>" + RemarkMark(remark) + "</td>" + Cell(TextOf(remark)) +
                  "<td class=\"number\" data-remark=\"" + std::to_string(i) + "\">" +
                  std::to_string(summary.rows.at(i)) + "</td></tr>\n");
        }
        Write("</tbody>\n</table>\n</div>\n<div>\n<h2>Accounts</h2>\n<table>\n" +
              TitleRow({"Name", "Can read", "Can write", "Owns", HasPeople() ? "Who is in it" : ""}) +
              "<tbody>\n");
        for (std::size_t i = 0; i < report.accounts.size(); ++i)
            WriteAccount(i);
        Write("</tbody>\n</table>\n</div>\n</div>\n</section>\n");
    }

    bool HasPeople() const {
        return std::ranges::any_of(report.accounts,
                                   [](const ReportAccount& each) { return each.people.has_value(); });
    }

    void WriteReach(std::size_t account, const char* reach, std::optional<std::size_t> number) {
        if (!number) {
            Write("<td class=\"number\">not known</td>");
            return;
        }
        Write("<td class=\"number\" data-account=\"" + std::to_string(account) + "\" data-reach=\"" + reach +
              "\">" + std::to_string(*number) + "</td>");
    }

    void WriteAccount(std::size_t place) {
        const ReportAccount& account = report.accounts[place];
        const AccountSummary& summary = account.summary;
        const bool isKnown = summary.groupsError == ERROR_SUCCESS;
        const auto ifKnown = [&](std::size_t number) {
            return isKnown ? std::optional(number) : std::nullopt;
        };
        Write("<tr><td>" + HtmlText(account.name));
        if (const std::optional<Remark> remark = RemarkOf(summary.account.standing))
            Write(' ' + RemarkMark(*remark));
        Write("</td>");
        WriteReach(place, "read", ifKnown(summary.readable));
        WriteReach(place, "write", ifKnown(summary.writable));
        WriteReach(place, "owner", summary.owned);
        Write("<td>");
        if (account.people) WritePeople(*account.people);
        Write("</td></tr>\n");
    }

    void WritePeople(const GroupPeople& people) {
        std::string lines;
        for (const GroupPerson& person : people.people) {
            lines += "<li>" + HtmlText(report.NameOf(person.sid));
            for (const nt::Sid& group : person.through)
                lines +=
                    (group == person.through.front() ? " through " : ", ") + HtmlText(report.NameOf(group));
            lines += "</li>\n";
        }
        for (const nt::Sid& group : people.open)
            lines += "<li>whoever is " + HtmlText(report.NameOf(group)) + "</li>\n";
        for (const GroupPeople::Unknown& group : people.unknown)
            lines += "<li>not known, who is in " + HtmlText(report.NameOf(group.group)) + ": " +
                     HtmlText(SystemMessageLine(group.error)) + "</li>\n";
        if (lines.empty()) {
            Write("nobody");
            return;
        }
        if (people.people.empty()) {
            Write("<ul>\n" + lines + "</ul>");
            return;
        }
        const std::size_t count = people.people.size();
        const bool isMore = !people.open.empty() || !people.unknown.empty();
        Write("<details><summary>" + std::to_string(count) + (count == 1 ? " person" : " people") +
              (isMore ? " and others" : "") + "</summary><ul>\n" + lines + "</ul></details>");
    }

    void WriteLeftOut() {
        if (report.extent == ReportExtent::kStopped)
            Write(
                "<p>This report was stopped before its end: what would have come behind the last object is "
                "missing, and nothing was found out about what accounts may do.</p>\n");
        if (report.LeftOut() == 0) return;
        Write("<p class=\"quiet\">" + std::to_string(report.LeftOut()) +
              " more were found and not chosen for this report.</p>\n");
    }

    void WriteObjects() {
        Write("<table>\n" + TitleRow({"Object", "Remarks", "List"}) + "<tbody>\n");
        for (std::size_t i = 0; i < report.RowCount() && error == ERROR_SUCCESS; ++i) {
            const ReportRow row = report.Row(i);
            std::string line = "<tr><td class=\"path\">" + HtmlText(report.TypedPath(row)) + "</td><td>";
            for (const Remark remark : row.remarks)
                line += RemarkMark(remark) + ' ';
            line += "</td><td>";
            if (row.error != ERROR_SUCCESS) line += HtmlText(SystemMessageLine(row.error)) + ' ';
            if (row.list) {
                const std::string number = std::to_string(*row.list + 1);
                line.append("<a href=\"#list-").append(number).append("\">").append(number).append("</a>");
            }
            Write(line + "</td></tr>\n");
        }
        Write("</tbody>\n</table>\n");
    }

    void WriteLists() {
        for (std::size_t i = 0; i < report.ListCount() && error == ERROR_SUCCESS; ++i) {
            const std::shared_ptr<const ReportList> list = report.List(i);
            const std::string number = std::to_string(i + 1);
            std::string text = "<h3 id=\"list-";
            text.append(number).append("\">List ").append(number).append("</h3>\n<p>Owner: ");
            text.append(HtmlText(list->owner)).append("</p>\n<p>Inherits: ").append(InheritsWord(*list));
            text += "</p>\n";
            for (const std::string& note : list->notes)
                text += "<p>" + HtmlText(note) + "</p>\n";
            if (!list->rows.empty()) text += EntriesTable(*list);
            Write(text + "<p>A folder hands down: " + HtmlText(list->handsDown) + "</p>\n");
        }
    }

    static const char* InheritsWord(const ReportList& list) {
        return list.descriptor.IsDaclProtected() ? "no" : "yes";
    }

    static std::string EntriesTable(const ReportList& list) {
        std::string table = "<table>\n" +
                            TitleRow({kAccessRowTitles[0], kAccessRowTitles[1], kAccessRowTitles[2],
                                      kAccessRowTitles[3], kAccessRowTitles[4]}) +
                            "<tbody>\n";
        for (const AccessRow& row : list.rows)
            table += "<tr>" + Cell(row.type) + Cell(row.name) + Cell(row.permission) + Cell(row.inheritance) +
                     Cell(row.applyTo + LimitOf(list.entries[row.entryIndex])) + "</tr>\n";
        return table + "</tbody>\n</table>\n";
    }

    // --- The data block.

    void WriteJson(const Json& value) {
        Write(ScriptText(value.dump(-1, ' ', true, Json::error_handler_t::replace)));
    }

    template <typename Element>
    void WriteArray(const char* key, std::size_t count, Element element) {
        Write(",\n\"" + std::string(key) + "\":[");
        for (std::size_t i = 0; i < count && error == ERROR_SUCCESS; ++i) {
            Write(i == 0 ? "\n" : ",\n");
            WriteJson(element(i));
        }
        Write("]");
    }

    void WriteData() {
        Write("<script type=\"application/json\" id=\"report-data\">{\"titles\":");
        WriteJson(kAccessRowTitles);
        WriteArray("tops", report.tops.size(),
                   [&](std::size_t i) { return VisibleText(report.tops[i].typed); });
        WriteArray("separators", report.tops.size(), [&](std::size_t i) {
            return report.tops[i].typed.find('\\') == std::string::npos ? "/" : "\\";
        });
        WriteArray("remarks", kRemarkCount, [](std::size_t i) {
            const auto remark = static_cast<Remark>(i);
            return Json{
                {"code", CodeOf(remark)}, {"text", TextOf(remark)}, {"isGrave", kGraveRemarks.Has(remark)}};
        });
        WriteArray("accounts", report.accounts.size(), [&](std::size_t i) {
            return Json{{"name", VisibleText(report.accounts[i].name)}};
        });
        WriteArray("lists", report.ListCount(), [&](std::size_t i) { return ListData(*report.List(i)); });
        WriteArray("rows", report.RowCount(), [&](std::size_t i) { return RowData(report.Row(i)); });
        Write("}</script>\n");
    }

    Json ListData(const ReportList& list) const {
        Json entries = Json::array();
        for (const AccessRow& row : list.rows) {
            const nt::Ace& entry = list.entries[row.entryIndex];
            const bool isInherited = (entry.flags & INHERITED_ACE) != 0;
            entries.push_back({row.type, VisibleText(row.name), row.permission, row.inheritance,
                               row.applyTo + LimitOf(entry), isInherited});
        }
        std::vector<std::size_t> named;
        for (const nt::Ace& entry : list.entries) {
            const std::optional<std::size_t> place = entry.sid ? report.PlaceOf(*entry.sid) : std::nullopt;
            if (place && std::ranges::find(named, *place) == named.end()) named.push_back(*place);
        }
        const std::optional<nt::Sid>& owner = list.descriptor.owner;
        const std::optional<std::size_t> ownerPlace = owner ? report.PlaceOf(*owner) : std::nullopt;
        return {{"owner", VisibleText(list.owner)},
                {"ownerIndex", ownerPlace ? Json(*ownerPlace) : Json()},
                {"inherits", InheritsWord(list)},
                {"notes", list.notes},
                {"entries", std::move(entries)},
                {"handsDown", list.handsDown},
                {"named", named},
                {"readers", report.WhoHas(list.descriptor, kReadingRights)},
                {"writers", report.WhoHas(list.descriptor, kWritingRights)}};
    }

    static Json RowData(const ReportRow& row) {
        std::uint32_t mask = 0;
        for (const Remark remark : row.remarks)
            mask |= 1U << static_cast<unsigned>(remark);
        Json data = {row.top, ScriptPath(row.path), static_cast<unsigned>(row.kind), mask, -1};
        if (row.list) data[4] = *row.list;
        if (row.error != ERROR_SUCCESS) data.push_back(SystemMessageLine(row.error));
        return data;
    }

    const Report& report;
    OutputBuffer buffer;
    DWORD error = ERROR_SUCCESS;
};

}  // namespace

DWORD WriteReportPage(const Report& report, SavedOutput& output) {
    return PageWriter(report, output).Run();
}

}  // namespace permora
