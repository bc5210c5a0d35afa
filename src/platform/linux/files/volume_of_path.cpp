#include <string>

#include "platform/host_path.h"
#include "platform/linux/files/mount_table.h"
#include "platform/volume_question.h"

namespace permora {

std::string VolumeOfPath(const std::string& path) {
    const std::string hostPath = HostPathFromPath(path);
    std::string volume;
    for (const host::MountEntry& mount : host::ParseMountTable(host::ReadMountTable())) {
        const bool isLonger = mount.mountPoint.size() > volume.size();
        if (isLonger && mount.mountPoint != "/" && host::IsAtOrBelow(hostPath, mount.mountPoint))
            volume = mount.mountPoint;
    }
    return volume.empty() ? path : volume;
}

}  // namespace permora
