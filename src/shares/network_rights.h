// What accounts may do with an object over the network: what the lists of the shares that hold it leave.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "security/access_rows.h"
#include "security/rights_explanation.h"

namespace permora {

enum class NetworkAnswer : std::uint8_t {
    kRights,             // `rights` are left
    kForAdministrators,  // the server itself lets nobody else come through this share
    kFolderUnknown,      // whether it holds the object is not known
    kListUnknown,        // its list cannot be read
};

struct NetworkRights {
    std::string share;
    NetworkAnswer answer = NetworkAnswer::kRights;
    std::string reason;  // why something is not known, half a sentence
    DWORD rights = 0;    // what both lists leave
    DWORD locked = 0;    // what the object's list alone would leave, and the share takes away
    // How the share's list treats the account; without entries where it has no list and lets in everyone.
    RightsExplanation byShare;
};

struct NetworkAnswers {
    DWORD error = ERROR_SUCCESS;  // why the shares are not known; 0: `shares` has all that hold the object
    std::vector<NetworkRights> shares;  // in the server's order
};

// The rights over each share of this machine that holds the object, for the account that `explanation` (of
// the object's list, with its owner) is about. Whoever comes over the network belongs to NETWORK as well.
NetworkAnswers FindNetworkRights(const HeldObject& object, const RightsExplanation& explanation);

// "over the share data: read only, because the share allows Everyone to read".
std::string NetworkRightsText(const NetworkRights& share, NameAccount* nameOf);
// The same of all shares, or that they are not known.
std::vector<std::string> RemarksOnNetwork(const NetworkAnswers& answers, NameAccount* nameOf);

}  // namespace permora
