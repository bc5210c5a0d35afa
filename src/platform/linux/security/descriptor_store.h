// Reads and writes the whole security descriptor of an object, wherever its volume keeps it.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/files/descriptor_support.h"
#include "platform/linux/files/object_handle.h"
#include "platform/nt/security_descriptor.h"

namespace permora::host {

// The store of one volume. The first object that it meets decides which one, and what follows must lie on the
// same mount. It keeps buffers between calls, so a walk uses one store and a thread its own.
class DescriptorStore {
  public:
    // Whether this kind of object can have a descriptor here at all. Links and devices cannot on volumes that
    // keep them in user attributes.
    bool CanHold(const ObjectHandle& object);

    // Whether objects here have an owner of the host beside the one in their descriptors. On NTFS the
    // descriptor's is the only one: the driver makes the host's of it, if any.
    bool HasHostOwners(const ObjectHandle& object);

    // The object's descriptor, or the one that its owner, group and mode give when none is stored. 0 or an
    // error code: ERROR_INVALID_SECURITY_DESCR when the stored one is damaged. `descriptor` is replaced only
    // on success.
    //
    // Where this process cannot use security.NTACL (it runs as an ordinary user), a descriptor there still
    // wins over one in user.permora.sd, since it is the one that a Samba server goes by.
    DWORD Read(const ObjectHandle& object, nt::SecurityDescriptor& descriptor);

    // Replaces the stored descriptor in one write: after a failure the object has the one it had.
    // ERROR_NOT_SUPPORTED when it cannot hold one, ERROR_ACCESS_DENIED when it has one of Samba's and this
    // process may not change it, ERROR_ALLOTTED_SPACE_EXCEEDED when it is larger than the volume allows.
    DWORD Write(const ObjectHandle& object, const nt::SecurityDescriptor& descriptor);

  private:
    DescriptorStoreKind KindFor(const ObjectHandle& object);
    bool ReadNtfs(const ObjectHandle& object, int& problem);

    std::optional<DescriptorStoreKind> kind;  // nothing as long as nobody had to know
    std::vector<std::uint8_t> stored;         // an attribute as it is on disk
    std::vector<std::uint8_t> inner;          // a descriptor taken from, or to be put into, Samba's attribute
};

}  // namespace permora::host
