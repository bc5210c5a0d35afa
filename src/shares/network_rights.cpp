#include "shares/network_rights.h"

#include <optional>
#include <utility>

#include "platform/nt/inheritance.h"
#include "platform/raw_security.h"
#include "platform/system_message.h"
#include "shares/share_list.h"
#include "shares/share_security.h"

namespace permora {
namespace {

// The three choices that share permissions are usually made of.
constexpr DWORD kRead = 0x1200A9 & FULL_CONTROL_RIGHTS;
constexpr DWORD kChange = 0x1301BF & FULL_CONTROL_RIGHTS;

const nt::Sid& Network() {
    static const nt::Sid kSid(5, {2});
    return kSid;
}

bool IsIn(const std::string& path, const std::string& folder) {
    if (!path.starts_with(folder)) return false;
    return path.size() == folder.size() || folder.ends_with('\\') || path[folder.size()] == '\\';
}

NetworkRights Unknown(const std::string& share, NetworkAnswer answer, std::string reason) {
    NetworkRights rights;
    rights.share = share;
    rights.answer = answer;
    rights.reason = std::move(reason);
    return rights;
}

// Servers give generic rights in the list of a share their meaning.
nt::Acl WithoutGenericRights(nt::Acl list) {
    for (nt::Ace& entry : list.entries)
        entry.mask = nt::MapGenericRights(entry.mask);
    return list;
}

NetworkRights AnswerByList(const std::string& name, DWORD rights, const AccountGroups& groups) {
    NetworkRights answer;
    answer.share = name;
    ShareSecurity share;
    if (const Outcome outcome = LoadShareDacl(name, share); !outcome.IsDone())
        return Unknown(name, NetworkAnswer::kListUnknown, SystemMessageLine(outcome.code));
    DWORD left = rights;
    if (share.dacl != nullptr) {
        std::optional<nt::Acl> list = AclOf(share.dacl);
        if (!list) return Unknown(name, NetworkAnswer::kListUnknown, SystemMessageLine(ERROR_INVALID_ACL));
        answer.byShare = ExplainRights(WithoutGenericRights(*std::move(list)), {}, groups);
        left &= answer.byShare.rights;
    }
    answer.rights = left;
    answer.locked = rights & ~left & FULL_CONTROL_RIGHTS;
    return answer;
}

// What the share says of an object at `path`, to which its list leaves `rights`; nothing when the share does
// not hold it.
std::optional<NetworkRights> AnswerOf(const ListedShare& share, const std::string& path, DWORD rights,
                                      const AccountGroups& groups) {
    if ((share.type & ~STYPE_SPECIAL) != STYPE_DISKTREE) return std::nullopt;
    if (share.error != NERR_Success)
        return Unknown(share.name, NetworkAnswer::kFolderUnknown, SystemMessageLine(share.error));
    HeldObject folder;
    ChangedTop top;
    DWORD error = HeldObject::Hold(share.path + (share.path.ends_with('\\') ? "" : "\\"), folder);
    if (error == ERROR_SUCCESS) error = folder.FindTop(top);
    const bool isMissing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    if (isMissing && share.path.find('%') != std::string::npos)
        return Unknown(share.name, NetworkAnswer::kFolderUnknown, "its folder depends on who comes");
    if (isMissing) return std::nullopt;
    if (error != ERROR_SUCCESS)
        return Unknown(share.name, NetworkAnswer::kFolderUnknown, SystemMessageLine(error));
    if (!IsIn(path, top.path)) return std::nullopt;
    if ((share.type & STYPE_SPECIAL) != 0) return Unknown(share.name, NetworkAnswer::kForAdministrators, {});
    return AnswerByList(share.name, rights, groups);
}

std::string RightsPhrase(DWORD rights) {
    const DWORD single = rights & FULL_CONTROL_RIGHTS;
    if (single == 0) return "nothing";
    if (single == FULL_CONTROL_RIGHTS) return "full control";
    if ((single & FILE_READ_DATA) != 0 && (single & ~kRead) == 0) return "read only";
    if ((single & kChange) == kChange && (single & ~kChange) == 0) return "read and change";
    return NamesOfRights(single);
}

// What an entry of a share is for.
std::string EntryPhrase(const nt::Ace& entry, NameAccount* nameOf) {
    AccountRecord account;
    account.sid = entry.sid;
    const DWORD rights = entry.mask & FULL_CONTROL_RIGHTS;
    const std::string verb = entry.type == ACCESS_ALLOWED_ACE_TYPE ? "allows " : "denies ";
    const std::string phrase = verb + nameOf(account);
    if (rights == kRead) return phrase + " to read";
    if (rights == kChange) return phrase + " to change";
    if (rights == FULL_CONTROL_RIGHTS) return phrase + " full control";
    return phrase + ' ' + NamesOfRights(rights);
}

// The entries of the share that decide: those that grant, and the denials of what is missing.
std::string BecauseOf(const NetworkRights& share, NameAccount* nameOf) {
    std::vector<bool> decides(share.byShare.list.entries.size());
    for (const ExplainedRight& right : share.byShare.single) {
        const bool isDenial = right.answer == RightAnswer::kDenied && (right.right->bits & share.locked) != 0;
        if (right.answer == RightAnswer::kGranted || isDenial) decides[right.entry] = true;
    }
    std::string text;
    for (std::size_t i = 0; i < decides.size(); ++i) {
        if (!decides[i]) continue;
        text += (text.empty() ? "the share " : " and ") + EntryPhrase(share.byShare.list.entries[i], nameOf);
    }
    return text.empty() ? "no entry of the share lets it in" : text;
}

}  // namespace

NetworkAnswers FindNetworkRights(const HeldObject& object, const RightsExplanation& explanation) {
    NetworkAnswers answers;
    ChangedTop top;
    std::vector<ListedShare> shares;
    answers.error = object.FindTop(top);
    if (answers.error == ERROR_SUCCESS) answers.error = ListShares(shares);
    if (answers.error != ERROR_SUCCESS) return answers;
    AccountGroups groups = explanation.groups;
    groups.sids.push_back(Network());
    const DWORD rights = ExplainRights(explanation.list, explanation.owner, groups).rightsAsOwner;
    for (const ListedShare& share : shares)
        if (std::optional<NetworkRights> answer = AnswerOf(share, top.path, rights, groups))
            answers.shares.push_back(*std::move(answer));
    return answers;
}

std::string NetworkRightsText(const NetworkRights& share, NameAccount* nameOf) {
    const std::string start = "over the share " + share.share + ": ";
    switch (share.answer) {
        case NetworkAnswer::kForAdministrators:
            return start + "only administrators of the machine come this way";
        case NetworkAnswer::kFolderUnknown:
            return start + "whether it holds the object is not known: " + share.reason;
        case NetworkAnswer::kListUnknown:
            return start + "not known, since its list cannot be read: " + share.reason;
        case NetworkAnswer::kRights:
            break;
    }
    if (share.locked != 0)
        return start + RightsPhrase(share.rights) + ", because " + BecauseOf(share, nameOf);
    if ((share.rights & FULL_CONTROL_RIGHTS) == 0)
        return start + "nothing, because the object's own list grants nothing";
    return start + RightsPhrase(share.rights) + ", the share takes nothing away";
}

std::vector<std::string> RemarksOnNetwork(const NetworkAnswers& answers, NameAccount* nameOf) {
    if (answers.error != ERROR_SUCCESS)
        return {"over the network: not known, since the shares cannot be listed: " +
                SystemMessageLine(answers.error)};
    std::vector<std::string> remarks;
    for (const NetworkRights& share : answers.shares)
        remarks.push_back(NetworkRightsText(share, nameOf));
    return remarks;
}

}  // namespace permora
