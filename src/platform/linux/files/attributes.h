// File attributes: the volume's own on NTFS, the server's on what another server shares, Samba's elsewhere,
// and what the host knows where nobody set any.
#pragma once

#include <sys/stat.h>

#include <string_view>

#include <cstdint>

#include "platform/api/files.h"
#include "platform/linux/files/object_handle.h"

namespace permora::host {

// The volume's own on NTFS, through ntfs-3g and the kernel's ntfs3 alike: four bytes in the host's order.
inline constexpr const char* kNtfsAttribute = "system.ntfs_attrib";

// The server's own, through the kernel's SMB client, which makes this attribute: four bytes in the host's
// order. The server is not asked again while the client knows them. To any other volume the name is one like
// all others. Source: fs/smb/client/xattr.c of the kernel.
inline constexpr const char* kSmbAttribute = "user.cifs.dosattrib";
// Whether that client means something else than an attribute by this name, under which it sets what the
// server keeps of the object: the attributes, or the time of creation.
bool IsNameOfSmbClient(std::string_view name);

// Where Samba keeps them (dos_attribute.h).
inline constexpr const char* kDosAttribute = "user.DOSATTRIB";

// Where the objects of a volume keep their attributes. A listing finds this out once and not for each object.
enum class AttributeStore : std::uint8_t {
    kUnknown,  // it is to be found out with the object
    kNtfs,     // on the volume itself, and where an object has none there, as Samba does it
    kServer,   // on the server that shares the volume
    kSamba,    // the volume has none of its own
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

// Those of `attributes` that Samba's servers keep, and every file system of Windows.
inline constexpr DWORD kUsualAttributes =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;

// Writes the flags that can be set and leaves the others. 0 or an error code: what SetFileAttributesA says.
// ERROR_NOT_SUPPORTED, and the object has what it had, when its server keeps others than it was given.
DWORD WriteAttributes(const ObjectHandle& object, DWORD attributes);

}  // namespace permora::host
