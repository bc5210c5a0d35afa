// Who makes a change.
#pragma once

#include <string>

namespace permora {

// The account of this process as the system writes its name (DOMAIN\name), or its SID where it has no name
// here; empty when the system does not tell.
std::string OwnUserName();

}  // namespace permora
