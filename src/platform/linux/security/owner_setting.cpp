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

// The host's user who must become the owner; nothing when no change is needed.
std::optional<uid_t> NewHostOwner(const ObjectHandle& object, const nt::Sid& owner, DescriptorStore& store) {
    if (!store.HasHostOwners(object)) return std::nullopt;
    const std::optional<uid_t> user = UserForSid(owner);
    return user != object.Status().st_uid ? user : std::nullopt;
}

}  // namespace

bool HasOwner(const ObjectHandle& object, const nt::SecurityDescriptor& descriptor, const nt::Sid& owner,
              DescriptorStore& store) {
    return descriptor.owner == owner && (descriptor.control & SE_OWNER_DEFAULTED) == 0 &&
           !NewHostOwner(object, owner, store);
}

void SetOwnerIn(nt::SecurityDescriptor& descriptor, const nt::Sid& owner) {
    descriptor.owner = owner;
    descriptor.control &= static_cast<std::uint16_t>(~SE_OWNER_DEFAULTED);
}

DWORD WriteWithOwner(const ObjectHandle& object, const nt::SecurityDescriptor& descriptor,
                     DescriptorStore& store) {
    if (!store.CanHold(object)) return ERROR_NOT_SUPPORTED;
    if (store.HasHostOwners(object) && !MayChangeOwner(object)) return ERROR_ACCESS_DENIED;
    const std::optional<uid_t> user =
        descriptor.owner ? NewHostOwner(object, *descriptor.owner, store) : std::nullopt;
    if (!user) return store.Write(object, descriptor);

    DWORD error = ChangeHostOwner(object, *user);
    if (error != ERROR_SUCCESS) return error;
    error = store.Write(object, descriptor);
    if (error != ERROR_SUCCESS) ChangeHostOwner(object, object.Status().st_uid);
    return error;
}

}  // namespace permora::host
