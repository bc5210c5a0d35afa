#include "platform/linux/security/owner_setting.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <optional>

#include "platform/api/security.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/base/capabilities.h"
#include "platform/linux/base/host_errors.h"

namespace permora::host {
namespace {

constexpr gid_t kSameGroup = static_cast<gid_t>(-1);

DWORD ChangeHostOwner(const ObjectHandle& object, uid_t user) {
    if (fchownat(object.Descriptor(), "", user, kSameGroup, AT_EMPTY_PATH) == 0) return ERROR_SUCCESS;
    return ErrorFromErrno(errno);
}

// The kernel lets everyone who may write to a file change its user attributes, including the descriptor.
// Changing the owner needs more.
bool MayChangeOwner(const ObjectHandle& object) {
    return object.Status().st_uid == geteuid() || HasCapability(CapabilitySet::kEffective, CAP_CHOWN);
}

// The host's user who must become the owner; nothing when no change is needed. An error when a domain does
// not answer: the object would otherwise get two different owners.
DWORD FindNewHostOwner(const ObjectHandle& object, const nt::Sid& owner, DescriptorStore& store,
                       std::optional<uid_t>& user) {
    std::optional<uid_t> found;
    if (store.HasHostOwners(object)) {
        if (const DWORD error = FindUserForSid(owner, found); error != ERROR_SUCCESS) return error;
    }
    user = found != object.Status().st_uid ? found : std::nullopt;
    return ERROR_SUCCESS;
}

}  // namespace

bool HasOwner(const ObjectHandle& object, const nt::SecurityDescriptor& descriptor, const nt::Sid& owner,
              DescriptorStore& store) {
    std::optional<uid_t> user;
    return descriptor.owner == owner && (descriptor.control & SE_OWNER_DEFAULTED) == 0 &&
           FindNewHostOwner(object, owner, store, user) == ERROR_SUCCESS && !user;
}

void SetOwnerIn(nt::SecurityDescriptor& descriptor, const nt::Sid& owner) {
    descriptor.owner = owner;
    descriptor.control &= static_cast<std::uint16_t>(~SE_OWNER_DEFAULTED);
}

DWORD WriteWithOwner(const ObjectHandle& object, const nt::SecurityDescriptor& descriptor,
                     DescriptorStore& store) {
    if (!store.CanHold(object)) return ERROR_NOT_SUPPORTED;
    if (store.HasHostOwners(object) && !MayChangeOwner(object)) return ERROR_ACCESS_DENIED;
    std::optional<uid_t> user;
    DWORD error = descriptor.owner ? FindNewHostOwner(object, *descriptor.owner, store, user) : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) return error;
    if (!user) return store.Write(object, descriptor);

    error = ChangeHostOwner(object, *user);
    if (error != ERROR_SUCCESS) return error;
    error = store.Write(object, descriptor);
    if (error != ERROR_SUCCESS) ChangeHostOwner(object, object.Status().st_uid);
    return error;
}

}  // namespace permora::host
