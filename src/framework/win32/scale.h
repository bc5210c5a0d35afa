// Logical pixels, of which the contract's geometry is made, and those of a display.
#pragma once

#include <string>

#include "framework/geometry.h"
#include "platform/api/base.h"

namespace permora::win32 {

// At this many dots per inch a logical pixel is one of the display's.
inline constexpr UINT kLogicalDpi = 96;

int ToDevice(int logical, UINT dpi);
int ToLogical(int device, UINT dpi);
RECT ToDevice(const Rect& logical, UINT dpi);
Rect ToLogical(const RECT& device, UINT dpi);

// The font of the system's message boxes, as large as it is at `dpi`. It lives as long as the process.
HFONT MessageFont(UINT dpi);

// How large a text is in that font, in the display's pixels; its lines are broken at `width` unless that is
// 0.
SIZE TextSize(const std::wstring& text, UINT dpi, int width, UINT drawFlags);

}  // namespace permora::win32
