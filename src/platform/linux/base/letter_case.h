// The case of letters of all scripts.
#pragma once

#include <string>
#include <string_view>

namespace permora::host {

// A UTF-8 text in small letters, one for one, whatever language the user has chosen. What is malformed
// becomes U+FFFD.
std::string InSmallLetters(std::string_view text);

}  // namespace permora::host
