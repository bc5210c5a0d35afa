#include "security/rights_explanation.h"

#include <algorithm>
#include <span>
#include <utility>

#include "platform/api/errors.h"
#include "platform/nt/ace_bits.h"
#include "platform/nt/granted_rights.h"
#include "platform/raw_security.h"
#include "security/distinct_names.h"
#include "security/entry_details.h"
#include "security/object_security.h"

namespace permora {
namespace {

const nt::Sid& OwnerRights() {
    static const nt::Sid kSid(3, {4});
    return kSid;
}

bool Names(const nt::Ace& entry, std::span<const nt::Sid> sids) {
    return std::ranges::find(sids, entry.sid) != sids.end();
}

bool IsInheritOnly(const nt::Ace& entry) {
    return (entry.flags & nt::kInheritOnly) != 0;
}

std::vector<ExplainedRight> Explain(const std::vector<nt::RightsDecision>& decisions) {
    std::vector<ExplainedRight> rights;
    for (const AccessRight& right : std::span(kAccessRights).subspan<1>()) {
        ExplainedRight& explained = rights.emplace_back(ExplainedRight{&right});
        const auto decision = std::ranges::find_if(
            decisions, [&](const nt::RightsDecision& each) { return (each.rights & right.bits) != 0; });
        if (decision == decisions.end()) continue;
        explained.answer = decision->isGrant ? RightAnswer::kGranted : RightAnswer::kDenied;
        explained.entry = decision->index;
    }
    return rights;
}

std::vector<UnjudgedEntry> FindUnjudged(const nt::Acl& list, std::span<const nt::Sid> sids) {
    std::vector<UnjudgedEntry> unjudged;
    for (std::size_t i = 0; i < list.entries.size(); ++i) {
        const nt::Ace& entry = list.entries[i];
        if (IsInheritOnly(entry) || entry.type == nt::kAccessAllowedType ||
            entry.type == nt::kAccessDeniedType)
            continue;
        const bool isOfUnknownType = nt::ShapeOfAceType(entry.type) == nt::AceShape::kOpaque;
        const bool decides = nt::IsAllowType(entry.type) || nt::IsDenyType(entry.type);
        if (isOfUnknownType || (decides && Names(entry, sids))) unjudged.push_back({i, isOfUnknownType});
    }
    return unjudged;
}

// Rules: [MS-DTYP] 2.5.3.2. An owner may read and change the list before any entry is looked at, unless one
// for OWNER RIGHTS takes effect, which then counts as one for the owner.
void ExplainOwner(RightsExplanation& explanation) {
    const std::optional<nt::Sid>& owner = explanation.owner;
    explanation.rightsAsOwner = explanation.rights;
    std::vector<nt::Sid> sids = explanation.groups.sids;
    if (!owner || std::ranges::find(sids, *owner) == sids.end()) return;
    const bool hasOwnerRights = std::ranges::any_of(explanation.list.entries, [](const nt::Ace& entry) {
        return !IsInheritOnly(entry) && entry.sid == OwnerRights();
    });
    if (hasOwnerRights) {
        sids.push_back(OwnerRights());
        explanation.standing = OwnerStanding::kByOwnerRights;
        explanation.rightsAsOwner = nt::GrantedRights(explanation.list, sids);
    } else {
        explanation.standing = OwnerStanding::kAlways;
        explanation.rightsAsOwner |= READ_CONTROL | WRITE_DAC;
    }
}

AccountRecord RecordOf(const nt::Sid& sid) {
    AccountRecord account;
    account.sid = sid;
    return account;
}

std::string NameOf(const nt::Sid& sid, NameAccount* nameOf) {
    AccountRecord account = RecordOf(sid);
    return nameOf(account);
}

std::string EntryName(std::size_t index) {
    return "entry " + std::to_string(index + 1);
}

std::string RemarkOnOwner(const RightsExplanation& explanation, const std::string& account) {
    if (explanation.standing == OwnerStanding::kNotOwner) return {};
    const std::string more = NamesOfRights(explanation.rightsAsOwner & ~explanation.rights);
    const std::string less = NamesOfRights(explanation.rights & ~explanation.rightsAsOwner);
    const bool isItself = explanation.owner == explanation.groups.sids.front();
    const std::string start =
        account + (isItself ? " is the owner: " : " belongs to the owner, which is a group: ");
    if (explanation.standing == OwnerStanding::kAlways)
        return more.empty() ? std::string()
                            : start + "it has these rights as well, whatever the list says: " + more;
    std::string text = start + "the entries for OWNER RIGHTS apply to it";
    if (!more.empty()) text += ", and grant it as well: " + more;
    if (!less.empty()) text += ", and deny it: " + less;
    return text;
}

}  // namespace

RightsExplanation ExplainRights(nt::Acl list, const std::optional<nt::Sid>& owner,
                                const AccountGroups& groups) {
    RightsExplanation made;
    made.list = std::move(list);
    made.groups = groups;
    made.owner = owner;
    const std::vector<nt::RightsDecision> decisions = nt::RightsDecisions(made.list, groups.sids);
    for (const nt::RightsDecision& decision : decisions)
        if (decision.isGrant) made.rights |= decision.rights;
    made.single = Explain(decisions);
    made.unjudged = FindUnjudged(made.list, groups.sids);
    ExplainOwner(made);
    return made;
}

DWORD ExplainRights(const HeldObject& object, PACL dacl, const AccountGroups& groups,
                    RightsExplanation& explanation) {
    std::optional<nt::Acl> list = AclOf(dacl);
    if (!list) return ERROR_INVALID_ACL;
    AccountRecord owner;
    std::vector<EntrySource> sources;
    DWORD error = ReadObjectOwner(object, owner);
    if (error == ERROR_SUCCESS) error = FindEntrySources(object, dacl, sources);
    if (error != ERROR_SUCCESS) return error;
    explanation = ExplainRights(*std::move(list), owner.sid, groups);
    explanation.sources = std::move(sources);
    return ERROR_SUCCESS;
}

std::string NamesOfRights(DWORD rights) {
    std::string names;
    for (const AccessRight& right : std::span(kAccessRights).subspan<1>())
        if ((right.bits & rights) != 0) names += (names.empty() ? "" : ", ") + std::string(right.listName);
    return names;
}

std::vector<ExplanationRow> ExplanationRows(const RightsExplanation& explanation, NameAccount* nameOf) {
    std::vector<ExplanationRow> rows;
    // A group may be called as the account is.
    DistinctNames names;
    const auto note = [&](const nt::Sid& sid) { names.Note(NameOf(sid, nameOf), RecordOf(sid)); };
    note(explanation.groups.sids.front());
    for (const ExplainedRight& explained : explanation.single)
        if (explained.answer != RightAnswer::kNotMentioned)
            note(*explanation.list.entries[explained.entry].sid);
    for (const ExplainedRight& explained : explanation.single) {
        ExplanationRow& row = rows.emplace_back();
        row[0] = explained.right->listName;
        row[1] = explained.answer == RightAnswer::kGranted ? "yes" : "no";
        if (explained.answer == RightAnswer::kNotMentioned) {
            row[2] = "no entry grants it";
            continue;
        }
        const nt::Ace& entry = explanation.list.entries[explained.entry];
        row[2] =
            EntryName(explained.entry) + ": " + AceTypeText(entry.type) + ' ' + PermissionText(entry.mask);
        row[3] = entry.sid == explanation.groups.sids.front()
                     ? "the account itself"
                     : names.Of(NameOf(*entry.sid, nameOf), RecordOf(*entry.sid));
        if (explained.entry >= explanation.sources.size()) continue;
        const EntrySource& source = explanation.sources[explained.entry];
        row[4] = source.kind == SourceKind::kOwn ? "not inherited" : SourceText(source);
    }
    return rows;
}

std::vector<std::string> RemarksOnExplanation(const RightsExplanation& explanation, NameAccount* nameOf) {
    std::vector<std::string> remarks;
    std::string owner = RemarkOnOwner(explanation, NameOf(explanation.groups.sids.front(), nameOf));
    if (!owner.empty()) remarks.push_back(std::move(owner));
    for (const UnjudgedEntry& each : explanation.unjudged) {
        const nt::Ace& entry = explanation.list.entries[each.entry];
        const std::string name = EntryName(each.entry) + " (" + EntryTypeName(entry.type) + ')';
        if (each.isOfUnknownType)
            remarks.push_back(name + " is of a type that is not known, and is not counted");
        else
            remarks.push_back(name + ", for " + NameOf(*entry.sid, nameOf) +
                              ", depends on more than the account, and is not counted");
    }
    return remarks;
}

}  // namespace permora
