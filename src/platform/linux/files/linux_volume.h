// File systems of Linux's own, and a way to their files that opens no device.
#pragma once

#include <optional>

#include "platform/linux/base/unique_fd.h"
#include "platform/linux/files/object_handle.h"

namespace permora::host {

// Whether the object surely lies on a file system of Linux's own, which keeps owners and attributes itself
// (ext4, XFS, Btrfs, tmpfs). The kernel tells that at once, where asking for an attribute takes as long as
// reading one.
bool IsOnLinuxVolume(const ObjectHandle& object);

// A folder of such a volume, opened for listing, with the promise that no device is opened below it, whatever
// takes the place of a file meanwhile: so its files can be opened for reading, through which their attributes
// are reached in half the time. The folder is mounted a second time, without devices and for nobody else to
// see; what is mounted below it would be missing there, so a folder with mounts below has no such view, and
// what is mounted later is not noticed. Null also where this process may not mount, and on other volumes,
// where opening a file costs a request.
std::optional<UniqueFd> OpenWithoutDevices(const ObjectHandle& folder);

}  // namespace permora::host
