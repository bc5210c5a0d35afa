#include "platform/linux/files/mounted_devices.h"

#include <algorithm>

#include "platform/linux/registry/registry_places.h"
#include "platform/linux/registry/registry_store.h"

namespace permora::host {
namespace {

constexpr const char* kKey = R"(HKEY_LOCAL_MACHINE\SYSTEM\MountedDevices)";
constexpr const char* kNameStart = R"(\DosDevices\)";

}  // namespace

MountedDevices MountedDevicesIn(const RegistryDocument& document) {
    MountedDevices devices;
    for (char letter = 'A'; letter <= 'Z'; ++letter) {
        const std::string name = std::string(kNameStart) + letter + ':';
        RegistryValue value;
        if (document.FindValue(kKey, name, value) != RegistryDocument::Lookup::kFound) continue;
        if (value.type != REG_SZ) continue;
        devices.emplace(letter,
                        std::string(value.data.begin(), std::ranges::find(value.data, std::uint8_t{0})));
    }
    return devices;
}

std::optional<MountedDevices> ReadMountedDevices() {
    RegistryDocument document;
    const RegistryStore store(MachineRegistryFolder(), RegistryAudience::kEveryone);
    if (store.Read(document) != ERROR_SUCCESS) return std::nullopt;
    return MountedDevicesIn(document);
}

}  // namespace permora::host
