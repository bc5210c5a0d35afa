// SIDs as keys of hash tables.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

#include "platform/nt/sid.h"

namespace permora::host {

struct SidHash {
    std::size_t operator()(const nt::Sid& sid) const {
        const auto bytes = sid.Bytes();
        return std::hash<std::string_view>()({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
};

}  // namespace permora::host
