// The access lists that the machine's server keeps for shares: reading one, and writing one to several
// shares.
#pragma once

#include <span>
#include <string>

#include "platform/api/shares.h"
#include "platform/resources.h"
#include "security/access_entry_list.h"
#include "security/outcome.h"

namespace permora {

// A share as it was read.
struct ShareSecurity {
    UniqueNetworkBuffer<SHARE_INFO_502> record;  // null: nothing was read
    bool hasDescriptor = false;                  // without a descriptor everyone may do everything
    PACL dacl = nullptr;                         // into `record`; null: no list, the same
    AccessEntryList entries;
};

// Names of shares are in the ANSI code page; shares are those of this machine.

// Reads the record of a share. On failure `share` is untouched.
Outcome LoadShareDacl(const std::string& name, ShareSecurity& share);

// Gives a share without a descriptor one with a null list, which lets everyone do everything as before.
Outcome GiveShareDescriptor(const std::string& name, const SHARE_INFO_502& record);

// Puts `dacl` into the descriptors of all shares, one after the other; the rest of their records is written
// back as it was read. Stops at the first failure: the shares before it have the new list, the others are
// unchanged.
Outcome WriteShareDacl(std::span<const std::string> names, PACL dacl);

}  // namespace permora
