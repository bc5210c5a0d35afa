// Reading the access list that the machine's server keeps for a share, and writing one to several shares.
#pragma once

#include <span>
#include <string>

#include "platform/api/shares.h"
#include "platform/resources.h"
#include "security/access_entry_list.h"
#include "security/outcome.h"

namespace permora {

// What a read gave.
struct ShareSecurity {
    UniqueNetworkBuffer<SHARE_INFO_502> record;  // null: nothing was read
    bool hasDescriptor = false;                  // without one everyone may do everything
    PACL dacl = nullptr;                         // into `record`; null: no list, likewise
    AccessEntryList entries;
};

// Names of shares are in the ANSI code page; shares are those of this machine.

// Reads the record of a share. On failure `share` is untouched.
Outcome LoadShareDacl(const std::string& name, ShareSecurity& share);

// Gives a share that was read without a descriptor one with a null list, by which everyone may do everything
// as before.
Outcome GiveShareDescriptor(const std::string& name, const SHARE_INFO_502& record);

// Puts `dacl` into the descriptors of all shares, one after the other; whatever else their records say is
// written back as it was read. Ends at the first that fails: those before it have the new list, it and those
// after it are as they were.
Outcome WriteShareDacl(std::span<const std::string> names, PACL dacl);

}  // namespace permora
