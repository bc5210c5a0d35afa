#include "platform/link_target.h"

#include <unistd.h>

#include <cerrno>

#include "platform/api/errors.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/paths.h"

namespace permora {

DWORD ReadLinkTarget(LPCSTR path, std::string& target) {
    constexpr std::size_t kLongestTarget = 65536;
    host::ResolvedObject link;
    DWORD error = host::ResolvePath(path, link);
    if (error != ERROR_SUCCESS) return error;
    if (!link.object.IsLink() || !link.parent) return ERROR_INVALID_FUNCTION;
    std::string text(kLongestTarget, '\0');
    const ssize_t length = readlinkat(link.object.Descriptor(), "", text.data(), text.size());
    if (length < 0) return host::ErrorFromErrno(errno);
    text.resize(static_cast<std::size_t>(length));
    if (!text.starts_with('/')) {
        std::string folder;
        error = host::HostPathOf(link.parent.Descriptor(), folder);
        if (error != ERROR_SUCCESS) return error;
        text.insert(0, folder + '/');
    }
    target = host::PathFromHost(text);
    return ERROR_SUCCESS;
}

}  // namespace permora
