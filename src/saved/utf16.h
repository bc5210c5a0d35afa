// UTF-8 as UTF-16LE and back, one for one.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace permora {

// Nothing for an odd number of bytes and for lone surrogates.
std::optional<std::string> Utf8FromUtf16(std::string_view bytes);
// False for what is no UTF-8; `bytes` then has the part before it.
[[nodiscard]] bool AppendUtf16(std::string_view text, std::string& bytes);

}  // namespace permora
