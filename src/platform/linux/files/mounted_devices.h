// Drive letters that the machine's administrator gave to folders.
//
// Format: HKEY_LOCAL_MACHINE\SYSTEM\MountedDevices holds a value "\DosDevices\X:" for each, as on Windows,
// but a text: the absolute host path at which the volume is mounted.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/linux/registry/registry_document.h"

namespace permora::host {

// Letters (upper case) and what was given to them. Values that are no text are passed over; whether a letter
// and a path can be what they say is the caller's to judge.
using MountedDevices = std::map<char, std::string>;

MountedDevices MountedDevicesIn(const RegistryDocument& document);

// Those in the machine's registry file as it is now; nothing when it cannot be read.
std::optional<MountedDevices> ReadMountedDevices();

}  // namespace permora::host
