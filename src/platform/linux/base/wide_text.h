// Whole texts between UTF-16 and the ANSI code page, over the layer's own conversions: what is malformed
// becomes U+FFFD.
#pragma once

#include <string>
#include <string_view>

namespace permora::host {

std::u16string ToWide(std::string_view ansi);
std::string ToAnsi(std::u16string_view wide);

}  // namespace permora::host
