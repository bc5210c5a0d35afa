// Reading the access list that the machine's server keeps for a share, and writing one to several shares.
#pragma once

#include <span>

#include "platform/api/shares.h"
#include "platform/resources.h"
#include "security/access_entry_list.h"

namespace permora {

// What a read gave.
struct ShareSecurity {
    UniqueNetworkBuffer<SHARE_INFO_502> record;  // null: nothing was read
    bool hasDescriptor = false;                  // without one everyone may do everything
    PACL dacl = nullptr;                         // into `record`; null: no list, likewise
    AccessEntryList entries;
};

// All show an error box for every failure and are false then. Names of shares are in the ANSI code page;
// shares are those of this machine.

// Reads the record of a share and nothing else. On failure `share` is as it was.
[[nodiscard]] bool LoadShareDacl(HWND owner, LPCSTR name, ShareSecurity& share);

// Reads the share as the permissions page shows it. A share without a descriptor is given one with a null
// list at once; that, and a null list, are told in an information box. What `share` held is let go of before.
[[nodiscard]] bool ReadShareDacl(HWND owner, LPCSTR name, ShareSecurity& share);

// Gives a share that was read without a descriptor one with a null list, by which everyone may do everything
// as before.
[[nodiscard]] bool GiveShareDescriptor(HWND owner, LPCSTR name, const SHARE_INFO_502& record);

// Puts `dacl` into the descriptors of all shares, one after the other; whatever else their records say is
// written back as it was read. Ends at the first that fails: those before it have the new list, it and those
// after it are as they were.
[[nodiscard]] bool WriteShareDacl(HWND owner, std::span<const char* const> names, PACL dacl);

}  // namespace permora
