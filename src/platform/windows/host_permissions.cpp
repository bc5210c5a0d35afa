// A file server on Windows goes by lists alone.
#include "platform/host_permissions.h"

#include "platform/held_object.h"
#include "platform/served_folders.h"

namespace permora {

DWORD HeldObject::ReadHostPermissions(HostPermissions& /*permissions*/) const {
    return ERROR_NOT_SUPPORTED;
}

DWORD FindHostAccount(const nt::Sid& /*account*/, HostAccount& /*found*/) {
    return ERROR_NOT_SUPPORTED;
}

nt::Sid HostOwnerSid(const HostPermissions& /*permissions*/) {
    return {};
}

nt::Sid HostGroupSid(const HostPermissions& /*permissions*/) {
    return {};
}

DWORD FindServedFolders(std::vector<ServedFolder>& folders) {
    folders.clear();
    return ERROR_SUCCESS;
}

}  // namespace permora
