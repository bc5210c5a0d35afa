// Folders that this machine's file server offers, and by what it lets its users in: lists are not all that
// counts to a server that opens objects as its users of the host.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/nt/sid.h"

namespace permora {

enum class ServedBy : std::uint8_t {
    kListAndHost,  // an account gets what both the list and the host (host_permissions.h) give it
    kHostAlone,    // the server does not look at the lists
    kUnknown,      // a setting decides that is not followed here
};

struct ServedFolder {
    std::string share;
    std::string path;  // as HeldObject::FindTop gives it, without links in it
    ServedBy by = ServedBy::kUnknown;
    std::optional<nt::Sid> user;  // who it works as for everybody; nothing: as the user who has connected
    std::string setting;          // with kUnknown: which one
    bool isReadOnly = false;      // the server lets nobody change anything
    // One that lets some accounts do less or more than others, and is not followed here; empty: none.
    std::string partiality;

    friend bool operator==(const ServedFolder&, const ServedFolder&) = default;
};

// Of all shares with a folder of their own; none on Windows, where lists alone count. 0, or why the server's
// configuration could not be read; `folders` is then as it was.
DWORD FindServedFolders(std::vector<ServedFolder>& folders);

// The name by which this machine is known to those who come to its shares: "FILES".
std::string FileServerName();

}  // namespace permora
