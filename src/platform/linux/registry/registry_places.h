// Where registry files lie.
#pragma once

#include <string>

namespace permora::host {

// The user's: "permora" in the folder of configuration files. Empty when there is none.
std::string UserRegistryFolder();

// The machine's, which only root can change.
std::string MachineRegistryFolder();

}  // namespace permora::host
