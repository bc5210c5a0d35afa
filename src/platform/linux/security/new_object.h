// The security descriptors of objects that are made in a folder.
#pragma once

#include <sys/types.h>

#include <string>

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
    // What it would keep by that, for those who write it themselves: nothing stored, or a descriptor.
    DWORD Prepare(const ObjectHandle& object, StoredSecurity& prepared);

    // Makes a folder in it, with its descriptor, and holds it. `mode` is that of mkdir(2). A failure leaves
    // no folder, and `made` as it was.
    DWORD MakeFolder(const ObjectHandle& folder, const std::string& hostName, mode_t mode,
                     ObjectHandle& made);

  private:
    DescriptorStore store;
    nt::SecurityDescriptor parent;
    bool handsDown = false;  // whether it has entries for others than the folder itself
};

}  // namespace permora::host
