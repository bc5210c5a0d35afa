// Whom a file server lets in, or keeps out, otherwise than an object's list says: it opens objects as its
// users of the host, whose mode bits count beside the list, or alone. Pure but for what is asked.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "platform/host_permissions.h"
#include "platform/nt/inheritance.h"
#include "platform/nt/security_descriptor.h"
#include "platform/served_folders.h"
#include "security/access_rows.h"
#include "survey/remark.h"

namespace permora {

// Who is meant by an account in a list.
struct MeantPeople {
    std::vector<nt::Sid> people;  // those who can be named: the account itself, or the members of a group
    std::vector<nt::Sid> open;    // groups of whoever has connected, of which nobody keeps a list
    DWORD error = ERROR_SUCCESS;  // why there may be others
};

// What is known of accounts. The errors are those of accounts.h and host_permissions.h; outputs live as long
// as this.
class ModeAccounts {
  public:
    virtual ~ModeAccounts() = default;
    virtual const MeantPeople& PeopleOf(const nt::Sid& account) = 0;
    virtual DWORD FindHost(const nt::Sid& person, HostAccount& found) = 0;
    // What stands for the account in lists, itself first.
    virtual DWORD FindSids(const nt::Sid& account, std::vector<nt::Sid>& sids) = 0;
    virtual nt::Sid HostOwner(const HostPermissions& permissions) = 0;
    virtual nt::Sid HostGroup(const HostPermissions& permissions) = 0;
};

struct ModeFinding {
    Remark remark = Remark::kModeUnasked;  // or kModeKeepsOut, kModeLetsIn
    nt::Sid account;                       // with kModeUnasked the one that could not be asked about
    bool isOpen = false;                   // whoever is in this group and is not meant by name
    bool isReading = false;
    bool isWriting = false;
    DWORD error = ERROR_SUCCESS;  // of kModeUnasked

    friend bool operator==(const ModeFinding&, const ModeFinding&) = default;
};

// Of reading and writing what is in a file or folder. Looked at are the accounts that the list lets in, and
// where the host alone counts also those that it names otherwise, the object's owner and group on the host,
// and everyone. Each account is found once, in the order in which the list leads to them. The superuser, whom
// the server asks for nothing, is left out, and so is who is no user of the host.
std::vector<ModeFinding> CompareWithMode(const nt::SecurityDescriptor& descriptor,
                                         const HostPermissions& permissions, nt::ObjectKind kind,
                                         const ServedFolder& served, ModeAccounts& accounts);

// "Anna (reading, writing), whoever else is Everyone (writing) and 3 more"; those that could not be asked
// about with the reason. With as few names as a line has room for.
std::string PeopleText(std::span<const ModeFinding* const> findings, NameAccount* nameOf);

}  // namespace permora
