#include "platform/linux/files/descriptor_support.h"

#include <linux/capability.h>

#include <cerrno>

#include "platform/linux/base/capabilities.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/extended_attributes.h"
#include "platform/volume_loss.h"

namespace permora::host {
namespace {

// The object has the attribute, or has one that cannot be read now. Reading then reports that error, instead
// of reading from another store.
bool HasAttribute(int answer) {
    return answer == 0 || answer == EACCES || answer == EIO;
}

// Every object on NTFS or on a server has a descriptor: a volume that merely takes any attribute name is
// neither. A server that cannot be reached just now must not be taken for a volume without any, whose modes
// would be believed.
bool IsThere(const ObjectHandle& object, const char* name) {
    const int answer = AskExtendedAttribute(object, name);
    return HasAttribute(answer) || answer == EAGAIN || IsVolumeLost(ErrorFromErrno(answer));
}

bool CanBeThere(const ObjectHandle& object, const char* name) {
    const int answer = AskExtendedAttribute(object, name);
    return HasAttribute(answer) || answer == ENODATA;
}

}  // namespace

DescriptorStoreKind StoreKindOf(const ObjectHandle& object) {
    if (IsThere(object, kNtfs3gAttribute)) return DescriptorStoreKind::kNtfs3g;
    if (IsThere(object, kNtfs3Attribute)) return DescriptorStoreKind::kNtfs3;
    if (IsThere(object, kSmbListAttribute)) return DescriptorStoreKind::kSmb;
    // The kernel requires it for writing attributes of the "security" family.
    if (HasCapability(CapabilitySet::kEffective, CAP_SYS_ADMIN))
        return CanBeThere(object, kSambaAttribute) ? DescriptorStoreKind::kSamba : DescriptorStoreKind::kNone;
    const bool holdsUserAttributes = S_ISREG(object.Status().st_mode) || object.IsFolder();
    return holdsUserAttributes && CanBeThere(object, kUserAttribute) ? DescriptorStoreKind::kUser
                                                                     : DescriptorStoreKind::kNone;
}

}  // namespace permora::host
