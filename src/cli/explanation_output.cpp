#include "cli/explanation_output.h"

#include <span>
#include <vector>

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
        case NetworkAnswer::kAtMost:
            return "atMost";
        case NetworkAnswer::kForAdministrators:
            return "forAdministrators";
        case NetworkAnswer::kFolderUnknown:
            return "folderUnknown";
        case NetworkAnswer::kListUnknown:
            return "listUnknown";
        case NetworkAnswer::kServerUnknown:
            break;
    }
    return "serverUnknown";
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
    const bool isKnown = share.answer == NetworkAnswer::kRights || share.answer == NetworkAnswer::kAtMost;
    const auto names = [&](DWORD rights) { return isKnown ? NamesJson(rights) : Json(); };
    return {{"share", share.share},
            {"answer", NetworkAnswerName(share.answer)},
            {"text", NetworkRightsText(share, AccountDisplayName)},
            {"rights", names(share.rights)},
            {"takenByShare", names(share.taken.byShare | share.taken.byReadOnly)},
            {"takenByMode", names(share.taken.byMode)}};
}

}  // namespace

std::string ExplanationText(const RightsExplanation& rights) {
    std::vector<std::vector<std::string>> lines;
    lines.emplace_back(kExplanationTitles.begin(), kExplanationTitles.end());
    for (const ExplanationRow& row : ExplanationRows(rights, AccountDisplayName))
        lines.emplace_back(row.begin(), row.end());
    std::string text = AlignedTable(lines, "  ");
    for (const std::string& remark : RemarksOnExplanation(rights, AccountDisplayName))
        text += "  Note: " + PrintableText(remark) + '\n';
    return text;
}

void AddExplanation(const RightsExplanation& rights, Json& json) {
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
}

Json NetworkJson(const NetworkAnswers& network) {
    if (network.error != ERROR_SUCCESS) return {};
    Json shares = Json::array();
    for (const NetworkRights& share : network.shares)
        shares.push_back(ShareJson(share));
    return shares;
}

void AddSource(const EntrySource& source, Json& json) {
    json["source"] = SourceName(source.kind);
    json["inheritedFrom"] = source.kind == SourceKind::kFolder ? Json(source.folder) : Json();
    if (source.kind == SourceKind::kUnknown) json["sourceReason"] = source.reason;
}

}  // namespace permora
