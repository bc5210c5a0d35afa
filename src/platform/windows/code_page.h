// Conversion between the program's texts (ANSI code page) and the system's (UTF-16).
#pragma once

#include <string>
#include <string_view>

#include "platform/api/base.h"

namespace permora {

// ERROR_INVALID_NAME for bytes that are no text of the code page.
DWORD ToWide(const std::string& text, std::wstring& wide);

// ERROR_NO_UNICODE_TRANSLATION for characters outside the code page: with question marks in their place the
// name would mean another file.
DWORD ToAnsi(std::wstring_view wide, std::string& text);

// For messages: with a replacement for what the code page lacks.
std::string ShownText(std::wstring_view wide);

}  // namespace permora
