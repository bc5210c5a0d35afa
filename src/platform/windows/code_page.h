// Texts in the ANSI code page, in which the program speaks, and in UTF-16, in which the system does.
#pragma once

#include <string>
#include <string_view>

#include "platform/api/base.h"

namespace permora {

// ERROR_INVALID_NAME for what is no text of the code page.
DWORD ToWide(const std::string& text, std::wstring& wide);

// ERROR_NO_UNICODE_TRANSLATION for what the code page does not have: a name with a question mark in it would
// mean another file.
DWORD ToAnsi(std::wstring_view wide, std::string& text);

}  // namespace permora
