// Who this machine is among accounts.
#pragma once

#include <optional>
#include <string>

#include "platform/nt/sid.h"

namespace permora::host {

// Where the relative ids of the machine's users and groups come from.
enum class RelativeIdSource {
    kComputed,  // from their numbers on the host
    kSamba,     // from Samba's databases, which alone know them
    kHidden,    // Samba has databases but does not hand them to us
    kNone,      // the machine has no id to make a SID of
};

struct Machine {
    RelativeIdSource source = RelativeIdSource::kNone;
    std::optional<nt::Sid> sid;  // always there unless the source is kHidden or kNone
    std::string name;            // the domain of its accounts, in upper case
    std::string guestAccount;    // the host's user that Samba makes its guest; empty without Samba
};

// Found out once, at the first call; lives as long as the process.
const Machine& ThisMachine();

}  // namespace permora::host
