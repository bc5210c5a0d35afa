// File attributes: the volume's own on NTFS, Samba's elsewhere, and what the host knows where nobody set any.
#pragma once

#include <sys/stat.h>

#include "platform/api/files.h"
#include "platform/linux/files/object_handle.h"

namespace permora::host {

// The volume's own on NTFS, through ntfs-3g and the kernel's ntfs3 alike: four bytes in the host's order.
inline constexpr const char* kNtfsAttribute = "system.ntfs_attrib";

// Where Samba keeps them (dos_attribute.h).
inline constexpr const char* kDosAttribute = "user.DOSATTRIB";

// Where the objects of a volume keep their attributes. A listing finds this out once and not for each object.
enum class AttributeStore {
    kAsk,    // the volume's own are read from every object, and where it has none, Samba's
    kSamba,  // the volume has none of its own
};

// For all objects of the volume that holds `object`.
AttributeStore AttributeStoreOf(const ObjectHandle& object);

// FILE_ATTRIBUTE_ flags of the entry `hostName` of an open folder, with what fstatat said about the entry
// itself. 0, or an error code with `attributes` unchanged.
DWORD ReadAttributesAt(int folder, const char* hostName, const struct stat& status, AttributeStore store,
                       DWORD& attributes);

// FILE_ATTRIBUTE_ flags of an object. Whether a link leads to a folder is asked only with the folder in which
// it lies, `parent`, which may be empty. Otherwise the same.
DWORD ReadAttributes(const ObjectHandle& object, const ObjectHandle& parent, DWORD& attributes);

// Writes the flags that can be set and leaves the others. 0 or an error code: what SetFileAttributesA says.
DWORD WriteAttributes(const ObjectHandle& object, DWORD attributes);

}  // namespace permora::host
