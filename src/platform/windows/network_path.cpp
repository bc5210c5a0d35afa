#include "platform/network_path.h"

namespace permora {

bool IsNetworkPath(std::string_view text) {
    return text.size() > 2 && text.starts_with("\\\\") && text[2] != '?' && text[2] != '.';
}

std::string PathFromNetwork(std::string_view networkPath) {
    return IsNetworkPath(networkPath) ? std::string(networkPath) : std::string();
}

// A drive letter stands for a share only for the user who has connected it, and paths are shown with it.
std::string NetworkFromPath(const std::string& /*path*/) {
    return {};
}

std::string ServerOfPath(const std::string& /*path*/) {
    return {};
}

std::string MountCommandFor(std::string_view /*networkPath*/) {
    return {};
}

}  // namespace permora
