// A SID as the key of a table.
#pragma once

#include <string>

#include "platform/nt/sid.h"

namespace permora {

inline std::string SidKey(const nt::Sid& sid) {
    const auto bytes = sid.Bytes();
    return {bytes.begin(), bytes.end()};
}

}  // namespace permora
