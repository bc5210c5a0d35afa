// Texts between the program and the toolkit.
//
// The program's texts are UTF-8, the code page of its manifest. Windows and messages are those of the wide
// functions all the same: to windows of the others the system hands over typed characters byte by byte.
#pragma once

#include <string>
#include <string_view>

#include "platform/api/base.h"

namespace permora::win32 {

// With U+FFFD for bytes that are no text.
std::wstring Wide(std::string_view text);
// The same for halves of surrogate pairs.
std::string Utf8(std::wstring_view text);

std::wstring TextOf(HWND window);
// The name of its class, cut after 63 characters.
std::wstring ClassOf(HWND window);

}  // namespace permora::win32
