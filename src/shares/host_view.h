// What the machine of a file server lets an account do with an object, whatever lists say: the server opens
// objects as its users of the host.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/held_object.h"
#include "platform/host_permissions.h"
#include "platform/nt/sid.h"

namespace permora {

// Rights that the host decides. Attributes and permissions are the server's own to keep.
inline constexpr DWORD kHostRights =
    FILE_READ_DATA | FILE_EXECUTE | FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_DELETE_CHILD | DELETE;

struct HostView {
    std::string unknown;       // why nothing more is known, half a sentence; empty: the rest counts
    bool isSuperuser = false;  // whom the server asks nothing
    DWORD left = 0;            // of kHostRights
    // The rights as the server takes them from the mode where it looks at no list.
    DWORD asList = 0;
    bool isStickyFor = false;  // its folder lets only owners remove it, and the account is none
    std::string closedFolder;  // the topmost above the object that cannot be entered; empty: none
};

// How the host treats `account`, for which `sids` stand in lists, at an object whose path (FindTop) is
// `path`. `account` is named `name` in the reason.
HostView ViewOfHost(const HeldObject& object, const std::string& path, const nt::Sid& account,
                    std::span<const nt::Sid> sids, const std::string& name);

}  // namespace permora
