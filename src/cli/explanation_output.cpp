#include "cli/explanation_output.h"

#include <span>
#include <vector>

#include "cli/listing.h"
#include "cli/terminal_text.h"
#include "security/entry_details.h"

namespace permora {
namespace {

std::string NameOf(const nt::Sid& sid) {
    AccountRecord account;
    account.sid = sid;
    return AccountDisplayName(account);
}

const char* AnswerName(RightAnswer answer) {
    switch (answer) {
        case RightAnswer::kGranted:
            return "granted";
        case RightAnswer::kDenied:
            return "denied";
        case RightAnswer::kNotMentioned:
            break;
    }
    return "notMentioned";
}

const char* StandingName(OwnerStanding standing) {
    switch (standing) {
        case OwnerStanding::kNotOwner:
            return "notOwner";
        case OwnerStanding::kAlways:
            return "always";
        case OwnerStanding::kByOwnerRights:
            break;
    }
    return "byOwnerRights";
}

const char* SourceName(SourceKind kind) {
    switch (kind) {
        case SourceKind::kOwn:
            return "own";
        case SourceKind::kFolder:
            return "folder";
        case SourceKind::kNobody:
            return "nobody";
        case SourceKind::kUnknown:
            break;
    }
    return "unknown";
}

const char* NetworkAnswerName(NetworkAnswer answer) {
    switch (answer) {
        case NetworkAnswer::kRights:
            return "rights";
        case NetworkAnswer::kForAdministrators:
            return "forAdministrators";
        case NetworkAnswer::kFolderUnknown:
            return "folderUnknown";
        case NetworkAnswer::kListUnknown:
            break;
    }
    return "listUnknown";
}

Json NamesJson(DWORD rights) {
    Json names = Json::array();
    for (const AccessRight& right : std::span(kAccessRights).subspan<1>())
        if ((right.bits & rights) != 0) names.push_back(right.listName);
    return names;
}

// Entries are counted from 1, as in the text.
Json EntryJson(const RightsExplanation& explanation, std::size_t index) {
    const nt::Ace& entry = explanation.list.entries[index];
    Json json = {{"entry", index + 1}, {"type", EntryTypeName(entry.type)}};
    json["account"] = entry.sid ? Json(NameOf(*entry.sid)) : Json();
    json["sid"] = entry.sid ? Json(entry.sid->ToText()) : Json();
    if (index < explanation.sources.size()) AddSource(explanation.sources[index], json);
    return json;
}

Json ShareJson(const NetworkRights& share) {
    Json json = {{"share", share.share},
                 {"answer", NetworkAnswerName(share.answer)},
                 {"text", NetworkRightsText(share, AccountDisplayName)}};
    json["rights"] = share.answer == NetworkAnswer::kRights ? NamesJson(share.rights) : Json();
    return json;
}

}  // namespace

std::string ExplanationText(const PrintedExplanation& explanation) {
    std::vector<std::vector<std::string>> lines;
    lines.emplace_back(kExplanationTitles.begin(), kExplanationTitles.end());
    for (const ExplanationRow& row : ExplanationRows(explanation.rights, AccountDisplayName))
        lines.emplace_back(row.begin(), row.end());
    std::string text = AlignedTable(lines, "  ");
    for (const std::string& remark : RemarksOnExplanation(explanation.rights, AccountDisplayName))
        text += "  Note: " + PrintableText(remark) + '\n';
    for (const std::string& remark : RemarksOnNetwork(explanation.network, AccountDisplayName))
        text += "  Note: " + PrintableText(remark) + '\n';
    return text;
}

void AddExplanation(const PrintedExplanation& explanation, Json& json) {
    const RightsExplanation& rights = explanation.rights;
    json["explanation"] = Json::array();
    for (const ExplainedRight& right : rights.single) {
        Json each = {{"right", right.right->listName}, {"answer", AnswerName(right.answer)}};
        if (right.answer != RightAnswer::kNotMentioned) each.update(EntryJson(rights, right.entry));
        json["explanation"].push_back(std::move(each));
    }
    json["owner"] = {{"standing", StandingName(rights.standing)},
                     {"rights", NamesJson(rights.rightsAsOwner)}};
    json["unjudged"] = Json::array();
    for (const UnjudgedEntry& each : rights.unjudged)
        json["unjudged"].push_back(EntryJson(rights, each.entry));
    json["shares"] = explanation.network.error == ERROR_SUCCESS ? Json::array() : Json();
    for (const NetworkRights& share : explanation.network.shares)
        json["shares"].push_back(ShareJson(share));
}

void AddSource(const EntrySource& source, Json& json) {
    json["source"] = SourceName(source.kind);
    json["inheritedFrom"] = source.kind == SourceKind::kFolder ? Json(source.folder) : Json();
    if (source.kind == SourceKind::kUnknown) json["sourceReason"] = source.reason;
}

}  // namespace permora
