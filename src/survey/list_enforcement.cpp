#include "survey/list_enforcement.h"

#include "platform/host_permissions.h"
#include "platform/nt/inheritance.h"
#include "platform/path_below.h"
#include "platform/security_change.h"
#include "platform/system_message.h"

namespace permora {
namespace {

bool MayBeServed(ListPlace place) {
    return place == ListPlace::kSamba || place == ListPlace::kNtfs3g || place == ListPlace::kNtfs3;
}

// In a volume's own list the driver has a say, too.
bool DoModeBitsCount(ListPlace place) {
    return place == ListPlace::kNowhere || place == ListPlace::kSamba || place == ListPlace::kUser;
}

// "the share Projects obeys" or "the shares Projects and Homes obey"; empty for no share.
struct Verb {
    const char* ofOne;
    const char* ofMany;
};
std::string SharesPhrase(const ListEnforcement& enforcement, ServedBy by, Verb verb) {
    std::vector<std::string> names;
    for (const ListEnforcement::Share& share : enforcement.shares)
        if (share.served.by == by) names.push_back(share.served.share);
    if (names.empty()) return {};
    if (names.size() == 1) return "the share " + names.front() + ' ' + verb.ofOne;
    std::string text = "the shares ";
    for (std::size_t i = 0; i < names.size(); ++i)
        text += (i == 0 ? "" : i + 1 == names.size() ? " and " : ", ") + names[i];
    return text + ' ' + verb.ofMany;
}

void AddPhrase(const std::string& phrase, std::string& text) {
    if (!phrase.empty()) text += "; " + phrase;
}

std::string SharesText(const ListEnforcement& enforcement) {
    std::string text;
    AddPhrase(SharesPhrase(enforcement, ServedBy::kListAndHost, {"obeys it", "obey it"}), text);
    if (!text.empty()) text += " beside the mode bits";
    AddPhrase(SharesPhrase(enforcement, ServedBy::kHostAlone, {"does not look at it", "do not look at it"}),
              text);
    for (const ListEnforcement::Share& share : enforcement.shares)
        if (share.served.by == ServedBy::kUnknown)
            text += "; whether the share " + share.served.share + " obeys it is not known (its setting \"" +
                    share.served.setting + "\" is not followed here)";
    if (enforcement.sharesError != ERROR_SUCCESS)
        text += "; which shares hold it is not known: " + SystemMessageLine(enforcement.sharesError);
    return text;
}

// The server reads no list of the volume's own, whatever its settings are.
void IgnoreList(ServedFolder& served) {
    served.by = ServedBy::kHostAlone;
    served.setting.clear();
}

std::string Sentence(std::string text) {
    if (!text.ends_with('.')) text += '.';
    return text;
}

}  // namespace

DWORD EnforcementFinder::Find(const HeldObject& object, ListEnforcement& found) {
    ListEnforcement enforcement;
    if (const DWORD error = object.FindListPlace(enforcement.place); error != ERROR_SUCCESS) return error;
    if (DoModeBitsCount(enforcement.place)) {
        HostPermissions permissions;
        enforcement.permissionsError = object.ReadHostPermissions(permissions);
        if (enforcement.permissionsError == ERROR_SUCCESS) enforcement.permissions = std::move(permissions);
    }
    if (MayBeServed(enforcement.place)) FindShares(object, enforcement);
    found = std::move(enforcement);
    return ERROR_SUCCESS;
}

void EnforcementFinder::FindShares(const HeldObject& object, ListEnforcement& found) {
    if (!served) {
        served.emplace();
        served->first = FindServedFolders(served->second);
    }
    ChangedTop top;
    nt::SecurityDescriptor descriptor;
    found.sharesError = served->first;
    if (found.sharesError == ERROR_SUCCESS && served->second.empty()) return;
    if (found.sharesError == ERROR_SUCCESS) found.sharesError = object.FindTop(top);
    if (found.sharesError == ERROR_SUCCESS)
        found.sharesError = ReadDescriptor(object, kUsualParts, descriptor);
    if (found.sharesError != ERROR_SUCCESS) return;
    const nt::ObjectKind kind = object.IsFolder() ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile;
    for (const ServedFolder& folder : served->second) {
        if (!IsAtOrBelow(top.path, folder.path)) continue;
        ListEnforcement::Share share{folder, {}};
        if (found.place != ListPlace::kSamba)
            IgnoreList(share.served);
        else if (found.permissions)
            share.findings = CompareWithMode(descriptor, *found.permissions, kind, folder, accounts);
        found.shares.push_back(std::move(share));
    }
}

const char* PlaceName(ListPlace place) {
    switch (place) {
        case ListPlace::kNowhere:
            return "nowhere";
        case ListPlace::kSystem:
            return "system";
        case ListPlace::kNtfs3g:
            return "ntfs-3g";
        case ListPlace::kNtfs3:
            return "ntfs3";
        case ListPlace::kSmb:
            return "smb";
        case ListPlace::kSamba:
            return "samba";
        case ListPlace::kUser:
            break;
    }
    return "user";
}

const char* ServedByName(ServedBy by) {
    switch (by) {
        case ServedBy::kListAndHost:
            return "list-and-mode";
        case ServedBy::kHostAlone:
            return "mode";
        case ServedBy::kUnknown:
            break;
    }
    return "unknown";
}

std::string KeptText(const ListEnforcement& enforcement) {
    switch (enforcement.place) {
        case ListPlace::kNowhere:
            return "nowhere; it shows the owner, the group and the mode bits, which the kernel obeys";
        case ListPlace::kSystem:
            return "in the volume; Windows obeys it";
        case ListPlace::kNtfs3g:
            return "in the volume; Windows obeys it, ntfs-3g only when mounted with permissions" +
                   SharesText(enforcement);
        case ListPlace::kNtfs3:
            return "in the volume; Windows obeys it, the kernel's driver does not" + SharesText(enforcement);
        case ListPlace::kSmb:
            return "on the server that shares it; how that server obeys it is not known here";
        case ListPlace::kUser:
            return "in user.permora.sd; no server or kernel checks it";
        case ListPlace::kSamba:
            break;
    }
    const std::string shares = SharesText(enforcement);
    return "for Samba" + (shares.empty() ? "; no share is known to hold the object" : shares);
}

std::string ModeBitsText(const ListEnforcement& enforcement) {
    if (enforcement.permissionsError != ERROR_SUCCESS)
        return "not known: " + SystemMessageLine(enforcement.permissionsError);
    if (!enforcement.permissions) return {};
    return ModeText(enforcement.permissions->mode) +
           (enforcement.permissions->list.empty() ? "" : " with a POSIX access list");
}

std::vector<std::string> DefeatTexts(const ListEnforcement& enforcement, NameAccount* nameOf) {
    constexpr std::pair<Remark, const char*> kKinds[] = {
        {Remark::kModeKeepsOut, "the mode bits keep out whom the list lets in: "},
        {Remark::kModeLetsIn, "the mode bits let in whom the list keeps out: "},
        {Remark::kModeUnasked, "whether the mode bits defeat the list is not known for all: "}};
    std::vector<std::string> texts;
    for (const ListEnforcement::Share& share : enforcement.shares) {
        for (const auto& [remark, text] : kKinds) {
            std::vector<const ModeFinding*> about;
            for (const ModeFinding& finding : share.findings)
                if (finding.remark == remark) about.push_back(&finding);
            if (!about.empty())
                texts.push_back("over the share " + share.served.share + ' ' + text +
                                PeopleText(about, nameOf));
        }
    }
    return texts;
}

std::string KeptText(ShareServer server) {
    switch (server) {
        case ShareServer::kSystem:
            return "with the share; Windows obeys it beside the lists of the objects";
        case ShareServer::kSamba:
            return "for Samba; its server obeys it beside the lists and the mode bits of the objects";
        case ShareServer::kNobody:
            break;
    }
    return "in this machine's table of shares; no server obeys it";
}

void CommonEnforcement::Common::Add(const std::string& next, bool isFirst) {
    if (isFirst)
        text = next;
    else if (text != next)
        text.reset();
}

void CommonEnforcement::Add(const ListEnforcement& enforcement, NameAccount* nameOf) {
    std::string defeat;
    for (const std::string& text : DefeatTexts(enforcement, nameOf))
        defeat += "Note: " + Sentence(text) + ' ';
    const bool isFirst = objects == 0;
    kept.Add(KeptText(enforcement), isFirst);
    bits.Add(ModeBitsText(enforcement), isFirst);
    defeats.Add(defeat, isFirst);
    if (!defeat.empty()) ++defeated;
    ++objects;
}

void CommonEnforcement::AddUnknown(DWORD error) {
    if (unknown++ == 0) firstError = error;
}

// What defeats the list comes first: a window may have no room for all.
std::string CommonEnforcement::Text() const {
    std::string text;
    if (objects > 0) {
        text = defeats.text ? *defeats.text
                            : "Note: the mode bits defeat the lists of " + std::to_string(defeated) +
                                  " objects of " + std::to_string(objects) + ", or may do so. ";
        text += kept.text ? Sentence("Kept " + *kept.text)
                          : "The selected objects differ in where their lists are kept and who obeys them.";
        if (!bits.text)
            text += " Their mode bits differ.";
        else if (!bits.text->empty())
            text += ' ' + Sentence("Mode bits: " + *bits.text);
    }
    if (unknown == 0) return text;
    text += (text.empty() ? "" : " ");
    text += unknown == 1 && objects == 0
                ? "Who obeys the list is not known: "
                : "Who obeys the lists is not known of " + std::to_string(unknown) + ": ";
    return text + Sentence(SystemMessageLine(firstError));
}

}  // namespace permora
