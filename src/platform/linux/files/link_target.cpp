#include "platform/link_target.h"

#include "platform/api/errors.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/paths.h"

namespace permora {

DWORD ReadLinkTarget(LPCSTR path, std::string& target) {
    host::ResolvedObject link;
    DWORD error = host::ResolvePath(path, link);
    if (error != ERROR_SUCCESS) return error;
    if (!link.object.IsLink() || !link.parent) return ERROR_INVALID_FUNCTION;
    std::string text;
    error = link.object.ReadLinkText(text);
    if (error != ERROR_SUCCESS) return error;
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
