// How old a change is, as an argument.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace permora {

// The seconds since 1970 that "30d" (days), "12h" (hours) or "2026-01-31" (the beginning of that day here)
// mean at the time `now`. Nothing for any other text.
std::optional<std::int64_t> TimeBefore(const std::string& text, std::int64_t now);

}  // namespace permora
