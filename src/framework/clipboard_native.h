// The clipboard's seam: a back end's functions beside RegisterClipboardFormat and
// Clipboard::IsFormatAvailable.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "framework/clipboard.h"

namespace permora {

// False while the clipboard is open.
bool OpenNativeClipboard(CWnd& owner);
void CloseNativeClipboard();
bool EmptyNativeClipboard();
// Beside what this program has put there before, in other formats.
bool SetNativeClipboardData(unsigned int format, std::span<const std::uint8_t> bytes);
// As the functions of Clipboard; more than `limit` bytes are none.
ClipboardAnswer AwaitNativeClipboardFormats();
ClipboardAnswer NativeClipboardData(unsigned int format, std::size_t limit, std::vector<std::uint8_t>& bytes);

}  // namespace permora
