// The time as it stands in texts that others read later.
#pragma once

#include <string>

namespace permora {

// Now: "2026-11-26T08:02:11Z".
std::string UtcTimeText();

}  // namespace permora
