#include "framework/win32/scale.h"

#include <map>
#include <string_view>

#include "framework/native.h"

namespace permora {
namespace win32 {
namespace {

// A screen's context with the message font in it.
class Measuring {
  public:
    explicit Measuring(UINT dpi) : context(GetDC(nullptr)), before(SelectObject(context, MessageFont(dpi))) {}
    ~Measuring() {
        SelectObject(context, before);
        ReleaseDC(nullptr, context);
    }
    Measuring(const Measuring&) = delete;
    Measuring& operator=(const Measuring&) = delete;
    HDC Context() const { return context; }

  private:
    HDC context;
    HGDIOBJ before;
};

}  // namespace

int ToDevice(int logical, UINT dpi) {
    return MulDiv(logical, static_cast<int>(dpi), kLogicalDpi);
}

int ToLogical(int device, UINT dpi) {
    return MulDiv(device, kLogicalDpi, static_cast<int>(dpi));
}

RECT ToDevice(const Rect& logical, UINT dpi) {
    return {ToDevice(logical.left, dpi), ToDevice(logical.top, dpi), ToDevice(logical.right, dpi),
            ToDevice(logical.bottom, dpi)};
}

Rect ToLogical(const RECT& device, UINT dpi) {
    return {ToLogical(device.left, dpi), ToLogical(device.top, dpi), ToLogical(device.right, dpi),
            ToLogical(device.bottom, dpi)};
}

HFONT MessageFont(UINT dpi) {
    static std::map<UINT, HFONT> fonts;
    HFONT& font = fonts[dpi];
    if (font != nullptr) return font;
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    if (SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, dpi) != 0)
        font = CreateFontIndirectW(&metrics.lfMessageFont);
    return font;
}

SIZE TextSize(const std::wstring& text, UINT dpi, int width, UINT drawFlags) {
    const Measuring measuring(dpi);
    RECT area{0, 0, width, 0};
    const UINT flags = drawFlags | DT_CALCRECT | (width != 0 ? UINT{DT_WORDBREAK} : 0U);
    DrawTextW(measuring.Context(), text.data(), static_cast<int>(text.size()), &area, flags);
    return {area.right, area.bottom};
}

}  // namespace win32

Size DialogBaseUnits() {
    constexpr std::wstring_view kLetters = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    const win32::Measuring measuring(win32::kLogicalDpi);
    TEXTMETRICW metrics{};
    SIZE size{};
    GetTextMetricsW(measuring.Context(), &metrics);
    GetTextExtentPoint32W(measuring.Context(), kLetters.data(), static_cast<int>(kLetters.size()), &size);
    const int half = static_cast<int>(kLetters.size()) / 2;
    return {(size.cx / half + 1) / 2, metrics.tmHeight};
}

}  // namespace permora
