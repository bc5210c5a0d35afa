#include "shares/network_rights.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "platform/ascii.h"
#include "platform/nt/granted_rights.h"
#include "platform/nt/inheritance.h"
#include "platform/path_below.h"
#include "platform/raw_security.h"
#include "platform/stored_security.h"
#include "platform/system_message.h"
#include "security/object_security.h"
#include "shares/host_view.h"
#include "shares/share_security.h"

namespace permora {
namespace {

// Of which share permissions are usually made, beside full control.
constexpr DWORD kRead = 0x1200A9 & FULL_CONTROL_RIGHTS;
constexpr DWORD kChange = 0x1301BF & FULL_CONTROL_RIGHTS;

// What a share through which nobody can write takes away.
constexpr DWORD kChanging = FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_WRITE_EA | FILE_WRITE_ATTRIBUTES |
                            FILE_DELETE_CHILD | DELETE | WRITE_DAC | WRITE_OWNER;

const nt::Sid& Network() {
    static const nt::Sid kSid(5, {2});
    return kSid;
}

NetworkRights Unknown(NetworkRights answer, NetworkAnswer kind, std::string reason) {
    answer.answer = kind;
    answer.reason = std::move(reason);
    return answer;
}

// Servers give generic rights in the list of a share their meaning.
nt::Acl WithoutGenericRights(nt::Acl list) {
    for (nt::Ace& entry : list.entries)
        entry.mask = nt::MapGenericRights(entry.mask);
    return list;
}

std::string NameOfSid(const nt::Sid& sid) {
    AccountRecord account;
    account.sid = sid;
    return AccountDisplayName(account);
}

struct RightsByLists {
    DWORD own = 0;
    bool mayBeRemoved = false;  // by "Delete subfolders and files" in the list of its folder
};

// A system error code.
DWORD FindRightsByLists(const HeldObject& object, const AccountGroups& groups, RightsByLists& rights) {
    ReadParts own;
    ReadParts above;
    constexpr SECURITY_INFORMATION kParts = OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
    DWORD error = object.ReadSecurity(kParts, own);
    if (error == ERROR_SUCCESS) error = object.ReadAbove(DACL_SECURITY_INFORMATION, above);
    if (error != ERROR_SUCCESS) return error;
    RightsByLists found{FILE_ALL_ACCESS, false};
    if (own.dacl != nullptr) {
        std::optional<nt::Acl> list = AclOf(own.dacl);
        if (!list) return ERROR_INVALID_ACL;
        found.own = ExplainRights(*std::move(list), SidOf(own.owner), groups).rightsAsOwner;
    }
    if (above.descriptor) {
        const std::optional<nt::Acl> list = AclOf(above.dacl);
        if (!list && above.dacl != nullptr) return ERROR_INVALID_ACL;
        found.mayBeRemoved = !list || (nt::GrantedRights(*list, groups.sids) & FILE_DELETE_CHILD) != 0;
    }
    rights = found;
    return ERROR_SUCCESS;
}

// Whether the server looks at the list where the volume keeps it.
DWORD AskWhetherObeyed(const HeldObject& object, bool& isObeyed) {
    StoredSecurity stored;
    const DWORD error = object.ReadStored(stored);
    if (error == ERROR_SUCCESS)
        isObeyed = stored.form == SecurityForm::kSamba || stored.form == SecurityForm::kNone;
    return error;
}

// A Samba server lets in nobody to whom the share's list grants neither reading nor writing, and whoever may
// not write changes nothing else either.
DWORD AsServerTakes(DWORD granted) {
    if ((granted & (FILE_READ_DATA | FILE_WRITE_DATA)) == 0) return 0;
    return (granted & FILE_WRITE_DATA) != 0 ? granted : granted & ~kChanging;
}

bool IsFolderIn(DWORD type) {
    return (type & ~STYPE_SPECIAL) == STYPE_DISKTREE;
}

std::string PhraseOfRights(DWORD rights) {
    const DWORD single = rights & FULL_CONTROL_RIGHTS;
    if (single == 0) return "nothing";
    if (single == FULL_CONTROL_RIGHTS) return "full control";
    if ((single & FILE_READ_DATA) != 0 && (single & ~kRead) == 0) return "read only";
    if ((single & FILE_READ_DATA) != 0 && (single & ~(kRead | DELETE)) == 0) return "read and delete";
    if ((single & kChange) == kChange && (single & ~kChange) == 0) return "read and change";
    constexpr int kFew = 4;
    const DWORD missing = FULL_CONTROL_RIGHTS & ~single;
    return std::popcount(missing) <= kFew ? "all but " + NamesOfRights(missing) : NamesOfRights(single);
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
std::string BecauseOfShare(const NetworkRights& share, NameAccount* nameOf) {
    std::vector<bool> decides(share.byShare.list.entries.size());
    for (const ExplainedRight& right : share.byShare.single) {
        const bool isDenial =
            right.answer == RightAnswer::kDenied && (right.right->bits & share.taken.byShare) != 0;
        if (right.answer == RightAnswer::kGranted || isDenial) decides[right.entry] = true;
    }
    std::string text;
    for (std::size_t i = 0; i < decides.size(); ++i) {
        if (!decides[i]) continue;
        text += (text.empty() ? "the share " : " and ") + EntryPhrase(share.byShare.list.entries[i], nameOf);
    }
    return text.empty() ? "no entry of the share lets it in" : text;
}

std::string BecauseOfMode(const NetworkRights& share) {
    const std::string start = "the mode bits ";
    if (!share.closedFolder.empty())
        return start + "do not let " + share.visitor + " enter " + share.closedFolder;
    struct Deed {
        const char* name;
        DWORD rights;
    };
    constexpr Deed kDeeds[] = {{"read", FILE_READ_DATA | FILE_EXECUTE},
                               {"write", FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_DELETE_CHILD},
                               {"delete", DELETE}};
    std::string deeds;
    for (const auto& [name, rights] : kDeeds)
        if ((share.taken.byMode & rights) != 0) deeds += (deeds.empty() ? "" : " or ") + std::string(name);
    return start + "do not let " + share.visitor + ' ' + deeds;
}

std::string Because(const NetworkRights& share, NameAccount* nameOf) {
    std::vector<std::string> reasons;
    if (share.isByModeAlone)
        reasons.emplace_back("the server goes by the mode bits and by no list of an object");
    if (share.isSuperuser)
        reasons.push_back("the server asks no list of an object and no mode bits for " + share.visitor);
    if (share.taken.byShare != 0) reasons.push_back(BecauseOfShare(share, nameOf));
    if (share.taken.byReadOnly != 0) reasons.emplace_back("the share is read only for everybody");
    if (share.taken.byMode != 0) reasons.push_back(BecauseOfMode(share));
    std::string text;
    for (const std::string& reason : reasons)
        text += (text.empty() ? ", because " : ", and because ") + reason;
    return text;
}

}  // namespace

struct NetworkShares::Visit {
    const HeldObject& object;
    std::string path;      // as FindTop has it
    AccountGroups groups;  // of who comes, with NETWORK
};

NetworkAnswers NetworkShares::RightsOf(const HeldObject& object, const AccountGroups& groups) {
    if (!isLearned) Learn();
    isLearned = true;
    NetworkAnswers answers;
    ChangedTop top;
    answers.error = error == ERROR_SUCCESS ? object.FindTop(top) : error;
    if (answers.error != ERROR_SUCCESS) return answers;
    Visit visit{object, top.path, groups};
    visit.groups.sids.push_back(Network());
    for (KnownShare& share : shares)
        if (std::optional<NetworkRights> answer = AnswerOf(share, visit))
            answers.shares.push_back(*std::move(answer));
    return answers;
}

void NetworkShares::Learn() {
    std::vector<ListedShare> listed;
    std::vector<ServedFolder> served;
    error = ListShares(listed);
    if (error != ERROR_SUCCESS) return;
    serverError = FindServedFolders(served);
    server = FileServerName();
    for (ListedShare& each : listed) {
        if (!IsFolderIn(each.type)) continue;
        KnownShare known;
        const auto found = std::ranges::find_if(
            served, [&](const ServedFolder& folder) { return EqualsIgnoringCase(folder.share, each.name); });
        if (found != served.end()) known.served = *found;
        HeldObject folder;
        ChangedTop top;
        known.error = each.error;
        if (known.error == NERR_Success)
            known.error = HeldObject::Hold(each.path + (each.path.ends_with('\\') ? "" : "\\"), folder);
        if (known.error == ERROR_SUCCESS) known.error = folder.FindTop(top);
        known.path = top.path;
        known.listed = std::move(each);
        shares.push_back(std::move(known));
    }
}

// Nothing when the share does not hold the object.
std::optional<NetworkRights> NetworkShares::AnswerOf(KnownShare& share, const Visit& visit) const {
    NetworkRights answer;
    answer.share = "\\\\" + server + '\\' + share.listed.name;
    const bool isMissing = share.error == ERROR_FILE_NOT_FOUND || share.error == ERROR_PATH_NOT_FOUND;
    if (isMissing && share.listed.path.find('%') != std::string::npos)
        return Unknown(answer, NetworkAnswer::kFolderUnknown, "its folder depends on who comes");
    if (isMissing) return std::nullopt;
    if (share.error != ERROR_SUCCESS)
        return Unknown(answer, NetworkAnswer::kFolderUnknown, SystemMessageLine(share.error));
    if (!IsAtOrBelow(visit.path, share.path)) return std::nullopt;
    if ((share.listed.type & STYPE_SPECIAL) != 0)
        return Unknown(answer, NetworkAnswer::kForAdministrators, {});
    if (serverError != ERROR_SUCCESS)
        return Unknown(answer, NetworkAnswer::kServerUnknown,
                       "the server's settings cannot be read: " + SystemMessageLine(serverError));
    if (!share.served) return AnswerByList(share, visit, std::move(answer));
    if (share.served->by == ServedBy::kUnknown)
        return Unknown(answer, NetworkAnswer::kServerUnknown,
                       "the share's setting \"" + share.served->setting + "\" is not followed here");
    if (!share.served->user) return AnswerByList(share, visit, std::move(answer));
    answer.worksAs = share.served->user;
    Visit everybody{visit.object, visit.path, {}};
    if (const DWORD unknown = FindAccountGroups(*share.served->user, GroupsRequest::kUsual, everybody.groups);
        unknown != ERROR_SUCCESS)
        return Unknown(answer, NetworkAnswer::kServerUnknown,
                       "the server works as " + NameOfSid(*share.served->user) +
                           " for everybody, whose groups are not known: " + SystemMessageLine(unknown));
    everybody.groups.sids.push_back(Network());
    return AnswerByList(share, everybody, std::move(answer));
}

NetworkRights NetworkShares::AnswerByList(KnownShare& share, const Visit& visit, NetworkRights answer) {
    const std::vector<nt::Sid>& sids = visit.groups.sids;
    RightsByLists lists;
    if (const DWORD fault = FindRightsByLists(visit.object, visit.groups, lists); fault != ERROR_SUCCESS)
        return Unknown(answer, NetworkAnswer::kListUnknown, SystemMessageLine(fault));
    if (!share.isListRead) ReadList(share);
    if (!share.listFault.empty()) return Unknown(answer, NetworkAnswer::kListUnknown, share.listFault);
    answer.visitor = NameOfSid(sids.front());
    HostView host;
    DWORD rights = lists.own;
    answer.isModeAsked = share.served.has_value();
    if (share.served) {
        host = ViewOfHost(visit.object, visit.path, sids.front(), sids, answer.visitor);
        answer.isSuperuser = host.isSuperuser;
        answer.isByModeAlone = share.served->by == ServedBy::kHostAlone && !host.isSuperuser;
        if (answer.isByModeAlone && !host.unknown.empty())
            return Unknown(answer, NetworkAnswer::kServerUnknown, host.unknown);
        if (answer.isSuperuser) rights = FILE_ALL_ACCESS;
        if (answer.isByModeAlone) rights = host.asList;
    }
    if (lists.mayBeRemoved && !host.isStickyFor && !answer.isByModeAlone) rights |= DELETE;
    bool isObeyed = true;
    if (share.served && !answer.isByModeAlone && !answer.isSuperuser)
        if (const DWORD fault = AskWhetherObeyed(visit.object, isObeyed); fault != ERROR_SUCCESS)
            return Unknown(answer, NetworkAnswer::kListUnknown, SystemMessageLine(fault));
    if (!isObeyed)
        return Unknown(answer, NetworkAnswer::kServerUnknown,
                       "the server does not look at lists where the object's is kept");
    if (share.list) {
        answer.byShare = ExplainRights(*share.list, {}, visit.groups);
        const DWORD granted = answer.byShare.rights;
        answer.taken.byShare =
            rights & ~(share.served ? AsServerTakes(granted) : granted) & FULL_CONTROL_RIGHTS;
    }
    if (share.served && share.served->isReadOnly) answer.taken.byReadOnly = rights & kChanging;
    // With lists of its own the server removes as root whatever they let go.
    const DWORD byHost = answer.isByModeAlone ? kHostRights : kHostRights & ~DWORD{DELETE};
    if (share.served && host.unknown.empty() && !host.isSuperuser)
        answer.taken.byMode =
            rights & (host.closedFolder.empty() ? byHost & ~host.left : FULL_CONTROL_RIGHTS);
    answer.closedFolder = host.closedFolder;
    answer.rights = rights & ~(answer.taken.byShare | answer.taken.byReadOnly | answer.taken.byMode);
    const bool isPartial = share.served && !share.served->partiality.empty();
    if (isPartial)
        return Unknown(answer, NetworkAnswer::kAtMost,
                       "the share's setting \"" + share.served->partiality + "\" is not followed here");
    return host.unknown.empty() ? answer : Unknown(answer, NetworkAnswer::kAtMost, host.unknown);
}

void NetworkShares::ReadList(KnownShare& share) {
    share.isListRead = true;
    ShareSecurity security;
    if (const Outcome outcome = LoadShareDacl(share.listed.name, security); !outcome.IsDone()) {
        share.listFault = SystemMessageLine(outcome.code);
        return;
    }
    if (security.dacl == nullptr) return;
    std::optional<nt::Acl> list = AclOf(security.dacl);
    if (list)
        share.list = WithoutGenericRights(*std::move(list));
    else
        share.listFault = SystemMessageLine(ERROR_INVALID_ACL);
}

std::string NetworkRightsText(const NetworkRights& share, NameAccount* nameOf) {
    std::string text = "over " + share.share + ": ";
    switch (share.answer) {
        case NetworkAnswer::kForAdministrators:
            return text + "only administrators of the machine come this way";
        case NetworkAnswer::kFolderUnknown:
            return text + "whether it holds the object is not known: " + share.reason;
        case NetworkAnswer::kListUnknown:
            return text + "not known, since its list or the object's cannot be read: " + share.reason;
        case NetworkAnswer::kServerUnknown:
            return text + "not known: " + share.reason;
        case NetworkAnswer::kAtMost:
            text += "at most ";
            break;
        case NetworkAnswer::kRights:
            break;
    }
    const std::string because = Because(share, nameOf);
    const bool isNothing = (share.rights & FULL_CONTROL_RIGHTS) == 0;
    text += PhraseOfRights(share.rights) + because;
    if (because.empty() && isNothing) text += ", because the object's own list grants nothing";
    if (because.empty() && !isNothing && share.answer == NetworkAnswer::kRights)
        text += share.isModeAsked ? ", neither the share nor the mode bits take anything away"
                                  : ", the share takes nothing away";
    if (share.worksAs) text += "; the server works as " + share.visitor + " for everybody";
    if (share.answer == NetworkAnswer::kAtMost) text += "; " + share.reason;
    return text;
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
