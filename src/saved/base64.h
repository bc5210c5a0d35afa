// Bytes as text: base64 with its padding, RFC 4648, section 4.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace permora {

void AppendBase64(std::span<const std::uint8_t> bytes, std::string& text);
// Nothing when AppendBase64 would have written the bytes in another way.
std::optional<std::vector<std::uint8_t>> FromBase64(std::string_view text);

}  // namespace permora
