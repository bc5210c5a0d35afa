// Where registry files lie.
#pragma once

#include <string>

namespace permora::host {

// The user's: "permora" in the folder of configuration files (XDG Base Directory Specification). The
// environment is believed only as far as it names a place that belongs to the user this process runs as (sudo
// may leave another's there); otherwise it is the one in that user's home. Empty when there is none.
std::string UserRegistryFolder();

// The machine's, which only root can change.
std::string MachineRegistryFolder();

}  // namespace permora::host
