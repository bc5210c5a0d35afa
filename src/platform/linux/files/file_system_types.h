// What kind of drive the kernel's file system types make.
#pragma once

#include <string_view>

#include "platform/linux/files/mount_table.h"

#include "platform/api/files.h"

namespace permora::host {

// Whether the kernel's SMB client has mounted it: what a server shares, or a folder of that.
bool IsSmbMount(const MountEntry& mount);

// The DRIVE_ type of a mounted volume as far as its file system says: disks are DRIVE_FIXED.
// DRIVE_NO_ROOT_DIR: a virtual file system, a program that mounted itself, or a folder mounted once more,
// which nobody would call a disk.
UINT DriveTypeOfMount(const MountEntry& mount);

// The same of the name of a file system alone; DRIVE_FIXED for one that is not known.
UINT DriveTypeOfFileSystem(std::string_view fileSystem);

// Whether the disk that holds the volume is a removable one. Looks into /sys.
bool IsOnRemovableDisk(const MountEntry& mount);

// The number of the disk or partition that holds the volume as "major:minor"; empty when
// no device does.
std::string BlockDeviceOf(const MountEntry& mount);

}  // namespace permora::host
