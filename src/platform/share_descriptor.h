// A share without a descriptor: a service of our own beside the system's, whose call can only exchange one
// descriptor for another.
#pragma once

#include <string>

#include "platform/api/errors.h"

namespace permora {

// Takes the descriptor of the share `name` of this machine away; everyone may do everything then. 0, a system
// error code or one of network.h: ERROR_NOT_SUPPORTED where every share has one (Samba). Windows keeps one
// with a null list, which means the same.
DWORD RemoveShareDescriptor(const std::string& name);

}  // namespace permora
