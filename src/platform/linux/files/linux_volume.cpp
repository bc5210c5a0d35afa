#include "platform/linux/files/linux_volume.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/mount.h>
#include <sys/statfs.h>

#include <algorithm>
#include <string>

#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/mount_table.h"

namespace permora::host {
namespace {

bool HasMountsBelow(const ObjectHandle& folder) {
    std::string path;
    const std::string table = ReadMountTable();
    if (table.empty() || HostPathOf(folder.Descriptor(), path) != ERROR_SUCCESS) return true;
    return std::ranges::any_of(ParseMountTable(table), [&](const MountEntry& mount) {
        return mount.mountPoint != path && IsAtOrBelow(mount.mountPoint, path);
    });
}

}  // namespace

bool IsOnLinuxVolume(const ObjectHandle& object) {
    struct statfs volume {};
    if (fstatfs(object.Descriptor(), &volume) != 0) return false;
    switch (volume.f_type) {
        case EXT4_SUPER_MAGIC:
        case XFS_SUPER_MAGIC:
        case BTRFS_SUPER_MAGIC:
        case TMPFS_MAGIC:
            return true;
        default:
            return false;
    }
}

std::optional<UniqueFd> OpenWithoutDevices(const ObjectHandle& folder) {
    if (!IsOnLinuxVolume(folder)) return std::nullopt;
    const UniqueFd view(
        open_tree(folder.Descriptor(), "", AT_EMPTY_PATH | OPEN_TREE_CLONE | OPEN_TREE_CLOEXEC));
    mount_attr attributes{};
    attributes.attr_set = MOUNT_ATTR_NODEV;
    if (!view || mount_setattr(view.Get(), "", AT_EMPTY_PATH, &attributes, sizeof attributes) != 0 ||
        HasMountsBelow(folder))
        return std::nullopt;
    UniqueFd listing(openat(view.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!listing) return std::nullopt;
    return listing;
}

}  // namespace permora::host
