// What accounts may do with an object over the network: what its list, the lists of the shares that hold it,
// and the mode bits of the server's machine leave together.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/held_object.h"
#include "platform/served_folders.h"
#include "security/access_rows.h"
#include "security/rights_explanation.h"
#include "shares/share_list.h"

namespace permora {

enum class NetworkAnswer : std::uint8_t {
    kRights,             // `rights` are left
    kAtMost,             // `rights` are left, or fewer, for `reason`
    kForAdministrators,  // the server itself lets nobody else come through this share
    kFolderUnknown,      // whether it holds the object is not known
    kListUnknown,        // its list, or another that counts, cannot be read
    kServerUnknown,      // by what the server lets accounts in is not known
};

// Who or what takes rights away, with the rights.
struct TakenRights {
    DWORD byShare = 0;
    DWORD byReadOnly = 0;  // nobody can write through the share
    DWORD byMode = 0;
};

struct NetworkRights {
    std::string share;  // "\\FILES\data"
    NetworkAnswer answer = NetworkAnswer::kRights;
    std::string reason;              // why something is not known, half a sentence
    DWORD rights = 0;                // what all of it leaves
    TakenRights taken;               // of what the object's list, or the mode in its place, would leave
    bool isModeAsked = false;        // whether the mode bits count
    bool isByModeAlone = false;      // the server looks at no list
    bool isSuperuser = false;        // whom it asks for no list of an object
    std::string closedFolder;        // above the object; the mode bits let the account not enter it
    std::optional<nt::Sid> worksAs;  // for everybody who comes
    std::string visitor;             // the name of who is let in: the account, or who the server works as
    // How the share's list treats the account; without entries where it has no list and lets in everyone.
    RightsExplanation byShare;
};

struct NetworkAnswers {
    DWORD error = ERROR_SUCCESS;  // why the shares are not known; 0: `shares` has all that hold the object
    std::vector<NetworkRights> shares;  // in the server's order
};

// The shares of this machine, which are asked for once. Whoever comes over the network belongs to NETWORK as
// well. One thread at a time.
class NetworkShares {
  public:
    // The rights over each share that holds the object, for the account with these groups, by the list and
    // owner that the object has now.
    NetworkAnswers RightsOf(const HeldObject& object, const AccountGroups& groups);

  private:
    struct KnownShare {
        ListedShare listed;
        DWORD error = ERROR_SUCCESS;  // of its folder
        std::string path;             // of its folder, as FindTop has it
        std::optional<ServedFolder> served;
        bool isListRead = false;
        std::string listFault;        // why its list is not known
        std::optional<nt::Acl> list;  // nothing: it has none
    };
    struct Visit;

    void Learn();
    std::optional<NetworkRights> AnswerOf(KnownShare& share, const Visit& visit) const;
    static NetworkRights AnswerByList(KnownShare& share, const Visit& visit, NetworkRights answer);
    static void ReadList(KnownShare& share);

    bool isLearned = false;
    DWORD error = ERROR_SUCCESS;
    DWORD serverError = ERROR_SUCCESS;  // why it is not known by what the server lets accounts in
    std::string server;
    std::vector<KnownShare> shares;
};

// "over \\FILES\data: read only, because the share allows Everyone to read".
std::string NetworkRightsText(const NetworkRights& share, NameAccount* nameOf);
// The same of all shares, or that they are not known.
std::vector<std::string> RemarksOnNetwork(const NetworkAnswers& answers, NameAccount* nameOf);

}  // namespace permora
