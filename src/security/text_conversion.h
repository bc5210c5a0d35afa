// Text between UTF-16 and the ANSI code page, for system services that exist in wide form alone.
#pragma once

#include <string>
#include <string_view>

#include "platform/api/text.h"

namespace permora {

// The whole of a NUL-terminated UTF-16 text in the ANSI code page. Empty for null or when it cannot be
// converted.
std::string WideToAnsi(LPCWSTR wide);

// `ansi` as NUL-terminated UTF-16 text in `buffer`. The result points into `buffer` and lives as long as the
// buffer is not changed; it is an empty text when `ansi` cannot be converted.
LPWSTR AnsiToWide(std::string_view ansi, std::basic_string<WCHAR>& buffer);

}  // namespace permora
