// Painting text into a window, as far as the program does it itself.
#pragma once

#include <string>

#include "framework/geometry.h"
#include "platform/api/base.h"  // the SDK renames DrawText

namespace permora {

enum class TextStyle { kNormal, kUnderlined };

// 8-bit channels.
struct Colour {
    unsigned char red = 0;
    unsigned char green = 0;
    unsigned char blue = 0;
};

// Draws with the window's own font on a transparent background. Lives for one OnPaint.
class CDC {
  public:
    virtual ~CDC() = default;
    // The theme's text colour until another is set. A back end may show it lighter on a dark background.
    virtual void SetTextColor(Colour colour) = 0;
    // One line at the top left of `rect`, clipped to it.
    virtual void DrawText(const std::string& text, const Rect& rect, TextStyle style) = 0;
};

}  // namespace permora
