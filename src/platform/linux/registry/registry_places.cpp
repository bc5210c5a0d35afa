#include "platform/linux/registry/registry_places.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace permora::host {
namespace {

constexpr const char* kFolderName = "/permora";

// Whether the place, or what would hold it, belongs to the user or to the system.
bool IsOwn(std::string place) {
    struct stat status {};
    while (!place.empty() && stat(place.c_str(), &status) != 0)
        place.resize(place.rfind('/'));
    return place.empty() || status.st_uid == geteuid() || status.st_uid == 0;
}

// The value of an environment variable that names a place; empty when it is not to be believed.
std::string OwnPlace(const char* variable) {
    const char* value = std::getenv(variable);
    const std::string place = value != nullptr ? value : "";
    return place.starts_with('/') && IsOwn(place) ? place : "";
}

std::string HomeFromAccount() {
    std::array<char, 4096> buffer;
    passwd entry{};
    passwd* found = nullptr;
    const bool isKnown =
        getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr;
    const std::string home = isKnown ? entry.pw_dir : "";
    return home.starts_with('/') ? home : "";
}

}  // namespace

std::string UserRegistryFolder() {
    if (const std::string place = OwnPlace("XDG_CONFIG_HOME"); !place.empty()) return place + kFolderName;
    std::string home = OwnPlace("HOME");
    if (home.empty()) home = HomeFromAccount();
    return home.empty() ? home : home + "/.config" + kFolderName;
}

std::string MachineRegistryFolder() {
    return std::string("/etc") + kFolderName;
}

}  // namespace permora::host
