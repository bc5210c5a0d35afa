// Where Samba keeps what its tools look at.
#pragma once

#include <string>
#include <string_view>

#include "platform/api/errors.h"

namespace permora::host {

// Where every distribution whose server lies in the system's folders has it.
inline constexpr const char* kSambaConfiguration = "/etc/samba/smb.conf";

struct SambaPlaces {
    std::string stateFolder = "/var/lib/samba";            // the registry, the lists of shares, the groups
    std::string privateFolder = "/var/lib/samba/private";  // the machine's identity, the users
    std::string passwordFile;     // of the user database's old form; empty: in the private folder
    std::string userDatabase;     // its kind, "tdbsam" for one, perhaps with a colon and its own path
    std::string guestAccount;     // the host's user that is Samba's guest; empty: not known
    std::string workgroup;        // the short name of the domain, in one
    bool isInDomain = false;      // a member or a controller of an Active Directory domain
    DWORD error = ERROR_SUCCESS;  // of finding out; when there is one, they may be other places
};

// As the configuration says, found out once and without leaving anything behind. Where Samba's tools do not
// tell, the usual places. A state folder that only Samba's registry names is not found, since the registry
// lies in it.
const SambaPlaces& ThisMachinesSambaPlaces();

// A configuration file without the lines by which Samba opens its registry, and without all that it includes
// if so wanted.
enum class Includes { kKept, kDropped };
std::string WithoutRegistry(std::string_view configuration, Includes includes);

}  // namespace permora::host
