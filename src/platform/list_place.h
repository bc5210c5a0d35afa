// Where an object's access list is kept, on which depends who obeys it.
#pragma once

#include <cstdint>

namespace permora {

enum class ListPlace : std::uint8_t {
    kNowhere,  // nothing is stored: the list is made from owner, group and mode of the host
    kSystem,   // with the object, on Windows
    kNtfs3g,   // in the volume, which ntfs-3g has mounted
    kNtfs3,    // in the volume, which the kernel's own driver has mounted
    kSmb,      // on another server, whose share the kernel's SMB client has mounted
    kSamba,    // in the attribute of a Samba server
    kUser,     // in the attribute of an ordinary user
};

// Who lets users in by the lists of this machine's shares.
enum class ShareServer : std::uint8_t {
    kSystem,  // Windows
    kSamba,
    kNobody,  // the shares are kept in a table that no server reads
};
ShareServer FindShareServer();

}  // namespace permora
