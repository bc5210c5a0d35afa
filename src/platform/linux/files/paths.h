// From the system's paths to objects of the host, and back.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/files/drives.h"
#include "platform/linux/files/object_handle.h"

namespace permora::host {

struct ResolvedObject {
    ObjectHandle object;
    // The folder that holds it; empty for the root of a drive (where the path names it as such) and of a
    // mounted volume.
    ObjectHandle parent;
};

// Finds the object that a path of files.h names. Intermediate components are followed as the kernel does; the
// last one is never followed, unless a separator comes after it. 0 or an error code: ERROR_FILE_NOT_FOUND
// when only the last component is missing, ERROR_PATH_NOT_FOUND when more is, ERROR_INVALID_NAME for a
// component that no host name shows as. `resolved` is replaced only on success.
DWORD ResolvePath(const char* path, ResolvedObject& resolved);

// The same with the open folder `start` in the place of the current directory; an empty path is that folder
// itself.
DWORD ResolvePathFrom(int start, const char* path, ResolvedObject& resolved);

// Where a path leads, whether or not there is anything.
struct ResolvedPlace {
    ObjectHandle folder;
    std::string hostName;  // in it
};

// Finds the folder of what a path of files.h names; a separator at the end does not matter. Errors as for
// ResolvePath; ERROR_ACCESS_DENIED for a path that names no place in a folder, such as the root of a drive.
DWORD ResolvePlace(const char* path, ResolvedPlace& place);

// Finds the object alone, for those who do not ask for the folder that holds it: a name in the current
// directory then costs one system call. Otherwise as ResolvePath.
DWORD OpenObject(const char* path, ObjectHandle& object);

// The path with drive letter of an absolute host path ("/mnt/usb/a" is "D:\a" when the volume at /mnt/usb is
// D:). Text only: "." and ".." are worked off, and repeated and trailing slashes dropped.
std::string PathFromHost(std::string_view hostPath);
// The same for many paths, with the drives of ListDriveRoots.
std::string PathFromHost(std::string_view hostPath, const std::vector<DriveRoot>& roots);

}  // namespace permora::host
