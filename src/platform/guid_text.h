// GUIDs as text: "bf967aba-0de6-11d0-a285-00aa003049e2". Source: [MS-DTYP] 2.3.4 GUID.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace permora {

inline constexpr std::size_t kGuidBytes = 16;

void AppendGuid(std::span<const std::uint8_t, kGuidBytes> guid, std::string& text);

// The GUID that the whole of `text` shows, with digits of either case.
std::optional<std::array<std::uint8_t, kGuidBytes>> GuidFromText(std::string_view text);

}  // namespace permora
