// The kernel's table of mounted volumes. Format: proc(5), /proc/[pid]/mountinfo.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/files/object_handle.h"

namespace permora::host {

struct MountEntry {
    std::string id;          // the kernel's number of this mount
    std::string device;      // "major:minor" of the volume
    std::string root;        // the folder of the volume that is mounted, "/" for all of it
    std::string mountPoint;  // absolute host path
    std::string fileSystem;  // type, such as "ext4" or "fuse.sshfs"
    std::string source;      // device file, server or whatever the file system says
    std::string options;     // of the volume, comma-separated
};

// Lines that are not in the format are passed over.
std::vector<MountEntry> ParseMountTable(std::string_view mountInfo);

// Whether an absolute host path is `folder` or lies below it, as its text says.
bool IsAtOrBelow(std::string_view hostPath, std::string_view folder);

// The text of the table as the machine stands now; empty when it cannot be read.
std::string ReadMountTable();

// The kernel's number of the mount through which the object was reached, if it says.
std::optional<std::uint64_t> MountIdOf(const ObjectHandle& object);

// The mount through which the object was reached, if the kernel says.
std::optional<MountEntry> MountOf(const ObjectHandle& object);

// Whether objects can be renamed from the one folder to the other: both lie on one volume and were reached
// through one mount.
bool AreOnOneMount(const ObjectHandle& one, const ObjectHandle& other);

}  // namespace permora::host
