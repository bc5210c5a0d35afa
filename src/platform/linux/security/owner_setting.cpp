#include "platform/linux/security/owner_setting.h"

#include <linux/capability.h>
#include <unistd.h>

#include <cstdint>
#include <optional>

#include "platform/api/security.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/base/capabilities.h"

namespace permora::host {
namespace {

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

bool MayChangeOwner(const ObjectHandle& object) {
    return object.Status().st_uid == geteuid() || HasCapability(CapabilitySet::kEffective, CAP_CHOWN);
}

DWORD PrepareWithOwner(const ObjectHandle& object, const nt::SecurityDescriptor& descriptor,
                       DescriptorStore& store, StoredSecurity& prepared, SystemList systemList) {
    if (!store.CanHold(object)) return ERROR_NOT_SUPPORTED;
    if (store.HasHostOwners(object) && !MayChangeOwner(object)) return ERROR_ACCESS_DENIED;
    std::optional<uid_t> user;
    DWORD error = descriptor.owner ? FindNewHostOwner(object, *descriptor.owner, store, user) : ERROR_SUCCESS;
    if (error == ERROR_SUCCESS) error = store.Prepare(object, descriptor, prepared, systemList);
    if (error == ERROR_SUCCESS && user) prepared.hostOwner = *user;
    return error;
}

}  // namespace permora::host
