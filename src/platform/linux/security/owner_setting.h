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

// Whether this process may give the object to others where the host keeps owners. The kernel alone would let
// everyone who may write to a file change its user attributes, including the descriptor with its owner.
bool MayChangeOwner(const ObjectHandle& object);

// DescriptorStore::Prepare for a descriptor with a changed owner. Where the host keeps owners of its own and
// the descriptor's is one of its users, the object is to be that user's on the host as well; an account that
// is no user, such as a group, leaves the host's owner as it is. ERROR_ACCESS_DENIED for another's object
// without CAP_CHOWN; an error too when a domain does not answer whether the account is a user.
DWORD PrepareWithOwner(const ObjectHandle& object, const nt::SecurityDescriptor& descriptor,
                       DescriptorStore& store, StoredSecurity& prepared,
                       SystemList systemList = SystemList::kLeftOut);

}  // namespace permora::host
