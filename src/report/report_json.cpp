#include "report/report_json.h"

#include <array>
#include <utility>

#include "platform/nt/ace_bits.h"
#include "platform/security_change.h"
#include "platform/system_message.h"
#include "report/json_text.h"
#include "report/visible_text.h"
#include "saved/base64.h"
#include "saved/descriptor_text.h"
#include "saved/output_buffer.h"
#include "security/entry_details.h"

namespace permora {
namespace {

constexpr std::array<std::pair<TreeObjectKind, const char*>, 4> kKindWords = {{
    {TreeObjectKind::kFile, "file"},
    {TreeObjectKind::kFolder, "folder"},
    {TreeObjectKind::kLink, "link"},
    {TreeObjectKind::kOther, "other"},
}};

const char* StandingWord(AccountStanding standing) {
    switch (standing) {
        case AccountStanding::kKnown:
            return "known";
        case AccountStanding::kDeleted:
            return "deleted";
        case AccountStanding::kUnknown:
            return "unknown";
        case AccountStanding::kBroken:
            return "broken";
        case AccountStanding::kUnasked:
            break;
    }
    return "unasked";
}

std::string LineOf(const Json& value) {
    return value.dump(-1, ' ', true, Json::error_handler_t::replace);
}

// A text whose bytes may be no UTF-8.
void AddText(Json& object, const std::string& key, const std::string& text) {
    object[key] = text;
    if (IsWellFormedUtf8(text)) return;
    object[key + "Bytes"] = HexOfBytes(text);
}

Json SidTexts(std::span<const nt::Sid> sids) {
    Json texts = Json::array();
    for (const nt::Sid& sid : sids)
        texts.push_back(sid.ToText());
    return texts;
}

// Writes arrays element by element.
class JsonWriter {
  public:
    explicit JsonWriter(SavedOutput& output) : buffer(output) {}

    void Write(std::string_view text) {
        if (error == ERROR_SUCCESS) error = buffer.Write(text);
    }
    void Member(const char* key, const Json& value) {
        Write(",\n \"" + std::string(key) + "\": " + LineOf(value));
    }

    template <typename Element>
    void Array(const char* key, std::size_t count, Element element) {
        Write(",\n \"" + std::string(key) + "\": [");
        for (std::size_t i = 0; i < count && error == ERROR_SUCCESS; ++i)
            Write((i == 0 ? "\n  " : ",\n  ") + LineOf(element(i)));
        Write(count == 0 ? "]" : "\n ]");
    }
    DWORD End() {
        Write("\n}\n");
        return error == ERROR_SUCCESS ? buffer.Flush() : error;
    }

  private:
    OutputBuffer buffer;
    DWORD error = ERROR_SUCCESS;
};

Json SummaryJson(const Report& report) {
    const SurveySummary& summary = report.Summary();
    Json remarks = Json::object();
    for (std::size_t i = 0; i < kRemarkCount; ++i)
        if (summary.rows.at(i) > 0) remarks[CodeOf(static_cast<Remark>(i))] = summary.rows.at(i);
    return {{"objects", summary.objects},
            {"folders", summary.folders},
            {"distinctLists", summary.distinctLists},
            {"unreadable", summary.unread},
            {"unlisted", summary.unlisted},
            {"mounted", summary.mounted},
            {"remarks", std::move(remarks)}};
}

Json PeopleJson(const GroupPeople& people) {
    Json members = Json::array();
    for (const GroupPerson& person : people.people)
        members.push_back({{"sid", person.sid.ToText()}, {"through", SidTexts(person.through)}});
    Json unknown = Json::array();
    for (const GroupPeople::Unknown& group : people.unknown)
        unknown.push_back({{"sid", group.group.ToText()}, {"error", group.error}});
    return {{"people", std::move(members)},
            {"everybodyIn", SidTexts(people.open)},
            {"unknown", std::move(unknown)}};
}

Json AccountJson(const ReportAccount& account) {
    const AccountSummary& summary = account.summary;
    const bool isKnown = summary.groupsError == ERROR_SUCCESS;
    Json json = {{"account", account.name},
                 {"sid", summary.sid.ToText()},
                 {"standing", StandingWord(summary.account.standing)},
                 {"canRead", isKnown ? Json(summary.readable) : Json()},
                 {"canWrite", isKnown ? Json(summary.writable) : Json()},
                 {"owns", summary.owned},
                 {"listed", summary.listed},
                 {"groups", isKnown ? SidTexts(summary.groups) : Json()}};
    if (!isKnown) json["error"] = summary.groupsError;
    if (account.people) json["members"] = PeopleJson(*account.people);
    return json;
}

Json EntryJson(const AccessRow& row, const nt::Ace& entry) {
    return {{"type", row.type},
            {"account", row.name},
            {"sid", entry.sid ? Json(entry.sid->ToText()) : Json()},
            {"mask", MaskDigits(entry.mask)},
            {"synchronize", (entry.mask & SYNCHRONIZE) != 0},
            {"permission", row.permission},
            {"inherited", (entry.flags & nt::kInherited) != 0},
            {"applyTo", row.applyTo},
            {"childrenOnly", IsForDirectChildrenOnly(entry.flags)}};
}

// "entries" is null where there is no list and everyone may do everything, as elsewhere.
Json ListJson(const ReportList& list) {
    const nt::SecurityDescriptor& descriptor = list.descriptor;
    Json entries;
    if (descriptor.daclState == nt::DaclState::kList) entries = Json::array();
    for (const AccessRow& row : list.rows)
        entries.push_back(EntryJson(row, list.entries[row.entryIndex]));
    std::string bytes;
    AppendBase64(list.bytes, bytes);
    const std::optional<std::string> sddl = ExactSddl(list.bytes, kUsualParts);
    return {{"owner", list.owner},
            {"ownerSid", descriptor.owner ? Json(descriptor.owner->ToText()) : Json()},
            {"inherits", !descriptor.IsDaclProtected()},
            {"stored", list.isStored},
            {"entries", std::move(entries)},
            {"notes", list.notes},
            {"handsDown", list.handsDown},
            {"sddl", sddl ? Json(*sddl) : Json()},
            {"descriptor", std::move(bytes)}};
}

Json RowJson(const Report& report, const ReportRow& row) {
    Json remarks = Json::array();
    for (const Remark remark : row.remarks)
        remarks.push_back(CodeOf(remark));
    Json json;
    AddText(json, "path", report.TypedPath(row));
    json["top"] = row.top;
    AddText(json, "below", row.path);
    json["kind"] = KindWord(row.kind);
    json["remarks"] = std::move(remarks);
    json["list"] = row.list ? Json(*row.list) : Json();
    if (row.error != ERROR_SUCCESS) {
        json["error"] = row.error;
        json["reason"] = SystemMessageLine(row.error);
    }
    return json;
}

Json TopJson(const ReportTop& top) {
    Json json;
    AddText(json, "path", top.typed);
    AddText(json, "fullPath", top.fullPath);
    return json;
}

const char* ExtentWord(ReportExtent extent) {
    return extent == ReportExtent::kWhole ? "whole" : "part";
}

}  // namespace

const char* KindWord(TreeObjectKind kind) {
    for (const auto& [each, word] : kKindWords)
        if (each == kind) return word;
    return "other";
}

std::optional<TreeObjectKind> KindOfWord(std::string_view word) {
    for (const auto& [kind, each] : kKindWords)
        if (each == word) return kind;
    return std::nullopt;
}

DWORD WriteReportJson(const Report& report, SavedOutput& output) {
    JsonWriter writer(output);
    writer.Write("{\n \"report\": " + LineOf(kReportForm));
    writer.Member("time", report.time);
    writer.Member("extent", ExtentWord(report.extent));
    writer.Array("tops", report.tops.size(), [&](std::size_t i) { return TopJson(report.tops[i]); });
    writer.Member("summary", SummaryJson(report));
    writer.Array("accounts", report.accounts.size(),
                 [&](std::size_t i) { return AccountJson(report.accounts[i]); });
    writer.Array("lists", report.ListCount(), [&](std::size_t i) { return ListJson(*report.List(i)); });
    writer.Array("objects", report.RowCount(), [&](std::size_t i) { return RowJson(report, report.Row(i)); });
    return writer.End();
}

}  // namespace permora
