// Where the volume of an object keeps security descriptors.
#pragma once

#include "platform/linux/files/object_handle.h"

namespace permora::host {

// The attributes that hold descriptors.
inline constexpr const char* kNtfs3gAttribute = "system.ntfs_acl";
inline constexpr const char* kNtfs3Attribute = "system.ntfs_security";
// Through the kernel's SMB client: the list alone is replaced, or the list with the owner and the group, or
// these and the system access list, which only the last one hands out.
inline constexpr const char* kSmbListAttribute = "system.cifs_acl";
inline constexpr const char* kSmbOwnerAttribute = "system.cifs_ntsd";
inline constexpr const char* kSmbWholeAttribute = "system.cifs_ntsd_full";
inline constexpr const char* kSambaAttribute = "security.NTACL";
inline constexpr const char* kUserAttribute = "user.permora.sd";

enum class DescriptorStoreKind {
    kNone,    // nowhere: the file system has no fitting attributes, or not on this kind of object
    kNtfs3g,  // on the NTFS volume itself, through ntfs-3g
    kNtfs3,   // on the NTFS volume itself, through the kernel's ntfs3
    kSmb,     // on another server, which hands them out and takes them through the kernel's SMB client
    kSamba,   // as a Samba server does it, for a process that may write such attributes
    kUser,    // for everyone else; only files and folders can have it
};

// Examines the object, since the type name is not enough: an NTFS image file is mounted as type "fuse". The
// answer holds for all objects of a volume, except that links, devices and the like answer kNone where files
// and folders answer kUser.
DescriptorStoreKind StoreKindOf(const ObjectHandle& object);

}  // namespace permora::host
