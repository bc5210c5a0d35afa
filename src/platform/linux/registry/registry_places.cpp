#include "platform/linux/registry/registry_places.h"

#include "platform/linux/base/user_folders.h"

namespace permora::host {

namespace {

constexpr const char* kFolderName = "/permora";

}  // namespace

std::string UserRegistryFolder() {
    const std::string place = UserConfigurationFolder();
    return place.empty() ? place : place + kFolderName;
}

std::string MachineRegistryFolder() {
    return std::string("/etc") + kFolderName;
}

}  // namespace permora::host
