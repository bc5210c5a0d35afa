#include "platform/linux/files/descriptor_path.h"

#include <unistd.h>

#include <climits>
#include <cstdio>

namespace permora::host {

DescriptorPath::DescriptorPath(int descriptor) {
    std::snprintf(text.data(), text.size(), "/proc/self/fd/%d", descriptor);
}

DWORD HostPathOf(int descriptor, std::string& hostPath) {
    std::array<char, PATH_MAX> path{};
    const ssize_t length = readlink(DescriptorPath(descriptor).Text(), path.data(), path.size());
    if (length <= 0 || static_cast<std::size_t>(length) == path.size()) return ERROR_PATH_NOT_FOUND;
    hostPath.assign(path.data(), static_cast<std::size_t>(length));
    return ERROR_SUCCESS;
}

}  // namespace permora::host
