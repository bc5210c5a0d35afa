// The security descriptors of objects that are made in a folder.
#pragma once

#include <optional>

#include "platform/linux/files/object_handle.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/nt/security_descriptor.h"

namespace permora::host {

// What one folder hands down, read once for all that is made in it. The owner is this process's user.
class NewObjectSecurity {
  public:
    // 0 or an error code: what a folder with a damaged descriptor hands down, nobody knows. `security` is
    // replaced only on success.
    static DWORD Of(const ObjectHandle& folder, NewObjectSecurity& security);

    // Gives an object that was just made in the folder its descriptor. Where nothing is handed down, NTFS
    // gets a list of its own (full control for the owner and the system, as Windows has it), since what its
    // driver gives would let everyone do everything; elsewhere nothing is stored, and owner, group and mode
    // go on speaking. An object that can hold none gets none. 0 or an error code.
    DWORD Give(const ObjectHandle& object);

  private:
    DescriptorStore store;
    nt::SecurityDescriptor parent;
};

}  // namespace permora::host
