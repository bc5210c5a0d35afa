// What Samba knows of logons to this machine. Root's alone.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/api/errors.h"
#include "platform/nt/sid.h"

namespace permora::host {

// Whether the domain account has logged on to this machine, so that winbind repeats the groups of that logon.
DWORD FindRecordOfLogon(const nt::Sid& account, bool& hasLoggedOn);
// `listing`: of `net cache samlogon list`.
bool IsInLogonListing(std::string_view listing, const nt::Sid& account);

// The authorization data of a ticket of `principal` (bert@EXAMPLE.TEST) to this machine, which its domain
// hands out to the machine without a password. ERROR_ACCESS_DENIED for a process that is not root's,
// ERROR_NOT_SUPPORTED without the tool for it or where the domain gives no ticket, kDomainOffline.
DWORD TakeLogonTicket(const std::string& principal, std::vector<std::uint8_t>& data);

}  // namespace permora::host
