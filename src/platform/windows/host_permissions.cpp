// A file server on Windows goes by lists alone.
#include "platform/host_permissions.h"

#include <array>

#include "platform/api/base.h"
#include "platform/held_object.h"
#include "platform/served_folders.h"

namespace permora {

DWORD HeldObject::ReadHostPermissions(HostPermissions& /*permissions*/) const {
    return ERROR_NOT_SUPPORTED;
}

DWORD HeldObject::FindListPlace(ListPlace& place) const {
    place = ListPlace::kSystem;
    return ERROR_SUCCESS;
}

ShareServer FindShareServer() {
    return ShareServer::kSystem;
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

std::string FileServerName() {
    std::array<char, MAX_COMPUTERNAME_LENGTH + 1> name{};
    DWORD size = name.size();
    GetComputerNameA(name.data(), &size);
    return name.data();
}

}  // namespace permora
