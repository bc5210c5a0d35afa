// Giving objects another owner.
#pragma once

#include "platform/linux/files/object_handle.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/nt/security_descriptor.h"

namespace permora::host {

// Whether the object has this owner in every place that keeps one. `descriptor` is the object's.
bool HasOwner(const ObjectHandle& object, const nt::SecurityDescriptor& descriptor, const nt::Sid& owner,
              DescriptorStore& store);

void SetOwnerIn(nt::SecurityDescriptor& descriptor, const nt::Sid& owner);

// Writes a descriptor with a changed owner. Where the host keeps owners of its own and the descriptor's is
// one of its users, the object is that user's on the host afterwards as well; an account that is no user,
// such as a group, leaves the host's owner as it is.
//
// The kernel decides who may: ERROR_ACCESS_DENIED for another's object without CAP_CHOWN, and nothing is
// written then. When the descriptor cannot be written the former owner is put back, as far as the kernel lets
// us; setuid and setgid bits and capabilities of the file, which it takes away when a file changes hands, are
// not.
DWORD WriteWithOwner(const ObjectHandle& object, const nt::SecurityDescriptor& descriptor,
                     DescriptorStore& store);

}  // namespace permora::host
