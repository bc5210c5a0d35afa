// How long and how large the history of changes may become.
#pragma once

#include <cstdint>

namespace permora {

// 0: without that limit.
struct HistoryLimits {
    std::uint32_t days = 90;         // older changes are removed
    std::uint32_t megabytes = 1024;  // then the oldest, until the database has no more (1 MiB = 2^20 bytes)

    friend bool operator==(const HistoryLimits&, const HistoryLimits&) = default;
};

}  // namespace permora
