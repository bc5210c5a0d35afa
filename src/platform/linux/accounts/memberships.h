// Which SIDs stand for an account in access lists: its own, and those of the groups that it belongs to.
// Rules: docs/platform.md, "Accounts".
#pragma once

#include <vector>

#include "platform/api/errors.h"
#include "platform/nt/sid.h"

namespace permora::host {

// The account itself first, each SID once. Groups in groups are followed to the end. A group stands for
// itself and what it belongs to, whoever its members are. 0, or an error code: ERROR_NONE_MAPPED for an
// account whose groups this machine does not know, another one when the name service or Samba's tools failed,
// ERROR_ACCESS_DENIED among them for a process that may not see Samba's databases; `sids` is then as it was.
DWORD FindMemberships(const nt::Sid& account, std::vector<nt::Sid>& sids);

}  // namespace permora::host
