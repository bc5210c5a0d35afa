// Percent-encoding of paths (RFC 2396, 2.3 and 2.4).
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace permora::host {

// Letters, digits, "-_.!~*'()" and the slash stand for themselves.
std::string PercentEncoded(std::string_view hostPath);

// The path behind an encoded text from elsewhere. Bytes beyond ASCII stand for themselves, as many programs
// write them. Nothing for a text that is not well-formed, and where a NUL or a slash hides in a name.
std::optional<std::string> PercentDecoded(std::string_view encoded);

}  // namespace permora::host
