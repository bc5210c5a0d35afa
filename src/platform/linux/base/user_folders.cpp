#include "platform/linux/base/user_folders.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string_view>

#include "platform/ascii.h"

namespace permora::host {
namespace {

// Whether the place, or the nearest existing folder above it, belongs to the user or to the system.
bool IsOwn(std::string place) {
    struct stat status {};
    while (!place.empty() && stat(place.c_str(), &status) != 0)
        place.resize(place.rfind('/'));
    return place.empty() || status.st_uid == geteuid() || status.st_uid == 0;
}

// The value of an environment variable that names a place; empty when it cannot be trusted.
std::string OwnPlace(const char* variable) {
    const char* value = std::getenv(variable);
    const std::string place = value != nullptr ? value : "";
    return place.starts_with('/') && IsOwn(place) ? place : "";
}

// `variable`, or `below` in the user's home; empty when there is neither.
std::string UserFolder(const char* variable, const char* below) {
    std::string place = OwnPlace(variable);
    if (!place.empty()) return place;
    std::string home = OwnPlace("HOME");
    if (home.empty()) home = HomeOfAccount();
    return home.empty() ? home : home + below;
}

}  // namespace

std::string HomeOfAccount() {
    std::array<char, 4096> buffer;
    passwd entry{};
    passwd* found = nullptr;
    const bool isKnown =
        getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr;
    const std::string home = isKnown ? entry.pw_dir : "";
    return home.starts_with('/') ? home : "";
}

std::string UserConfigurationFolder() {
    return UserFolder("XDG_CONFIG_HOME", "/.config");
}

std::string UserStateFolder() {
    return UserFolder("XDG_STATE_HOME", "/.local/state");
}

std::vector<std::string> DataFolders() {
    std::vector<std::string> folders;
    if (std::string own = UserFolder("XDG_DATA_HOME", "/.local/share"); !own.empty()) folders.push_back(own);
    const char* value = std::getenv("XDG_DATA_DIRS");
    std::string_view rest = value != nullptr && *value != '\0' ? value : "/usr/local/share:/usr/share";
    while (!rest.empty()) {
        const std::string_view folder = TakeUntil(':', rest);
        if (folder.starts_with('/') && IsOwn(std::string(folder))) folders.emplace_back(folder);
    }
    return folders;
}

}  // namespace permora::host
