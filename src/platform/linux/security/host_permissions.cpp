#include "platform/host_permissions.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "platform/accounts.h"
#include "platform/held_object.h"
#include "platform/linux/accounts/name_service.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/extended_attributes.h"
#include "platform/linux/security/held_object_inside.h"

namespace permora {

DWORD HeldObject::ReadHostPermissions(HostPermissions& permissions) const {
    const host::ObjectHandle& held = inside->target.object;
    struct stat status {};
    if (fstatat(held.Descriptor(), "", &status, AT_EMPTY_PATH) != 0) return host::ErrorFromErrno(errno);
    constexpr mode_t kNineBits = S_IRWXU | S_IRWXG | S_IRWXO;
    HostPermissions found{
        status.st_uid, status.st_gid, status.st_mode & kNineBits, {}, (status.st_mode & S_ISVTX) != 0};
    const int problem = host::ReadExtendedAttribute(held, "system.posix_acl_access", found.list);
    if (problem != 0 && !host::IsAbsent(problem)) return host::ErrorFromErrno(problem);
    if (problem != 0) found.list.clear();
    permissions = std::move(found);
    return ERROR_SUCCESS;
}

DWORD FindHostAccount(const nt::Sid& account, HostAccount& found) {
    std::optional<uid_t> user;
    if (const DWORD error = host::FindUserForSid(account, user); error != ERROR_SUCCESS)
        return error == kNameNotYet ? kDomainOffline : error;
    if (!user) return ERROR_NONE_MAPPED;
    std::vector<gid_t> groups;
    const DWORD error = host::ListGroupsOf(*user, groups);
    if (error != ERROR_SUCCESS) return error == ERROR_NONE_MAPPED ? ERROR_NOT_FOUND : error;
    found = {*user, std::move(groups)};
    return ERROR_SUCCESS;
}

nt::Sid HostOwnerSid(const HostPermissions& permissions) {
    return host::SidForUser(permissions.owner);
}

nt::Sid HostGroupSid(const HostPermissions& permissions) {
    return host::SidForGroup(permissions.group);
}

}  // namespace permora
