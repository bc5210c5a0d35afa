#include "platform/host_path.h"

#include <string_view>

#include "platform/linux/files/current_directory.h"
#include "platform/linux/files/path_text.h"
#include "platform/linux/files/paths.h"

namespace permora {

std::string PathFromArgument(const char* argument) {
    const std::string_view text(argument);
    if (text.empty() || text.front() == '\\' || host::DriveLetterOf(text) != 0) return std::string(text);

    std::string hostPath;
    if (text.front() != '/') {
        // A current directory without a name (deleted) leaves nothing that the argument could be relative to.
        if (host::CurrentHostPath(hostPath) != ERROR_SUCCESS) return {};
        hostPath += '/';
    }
    hostPath += text;
    std::string path = host::PathFromHost(hostPath);
    // To the host "link/" and "link/." mean what the link leads to, and so does a separator at the end here.
    const bool asksForFolder = text.ends_with('/') || text.ends_with("/.");
    if (asksForFolder && path.back() != '\\') path += '\\';
    return path;
}

}  // namespace permora
