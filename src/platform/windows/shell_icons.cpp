#include "platform/shell_icons.h"

#include <memory>
#include <type_traits>

#include "platform/api/shell.h"

namespace permora {
namespace {

struct IconCloser {
    void operator()(HICON icon) const { DestroyIcon(icon); }
};
using UniqueIcon = std::unique_ptr<std::remove_pointer_t<HICON>, IconCloser>;

struct BitmapCloser {
    void operator()(HBITMAP bitmap) const { DeleteObject(bitmap); }
};
using UniqueBitmap = std::unique_ptr<std::remove_pointer_t<HBITMAP>, BitmapCloser>;

struct ScreenCloser {
    void operator()(HDC screen) const { ReleaseDC(nullptr, screen); }
};
using UniqueScreen = std::unique_ptr<std::remove_pointer_t<HDC>, ScreenCloser>;

constexpr int kChannels = 4;

// The bitmap's pixels in 32 bits each, from the top; empty on failure.
std::vector<std::uint8_t> PixelsOf(HDC screen, HBITMAP bitmap, int width, int height) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                                     kChannels);
    const int rows =
        GetDIBits(screen, bitmap, 0, static_cast<UINT>(height), pixels.data(), &info, DIB_RGB_COLORS);
    if (rows != height) pixels.clear();
    return pixels;
}

// Icons without transparency of their own have a mask in which white is see-through.
void TakeAlphaFromMask(std::vector<std::uint8_t>& pixels, const std::vector<std::uint8_t>& mask) {
    bool hasAlpha = false;
    for (std::size_t i = 3; i < pixels.size(); i += kChannels)
        hasAlpha = hasAlpha || pixels[i] != 0;
    if (hasAlpha || mask.size() != pixels.size()) return;
    for (std::size_t i = 3; i < pixels.size(); i += kChannels)
        pixels[i] = mask[i - 3] == 0 ? 0xFF : 0;
}

std::shared_ptr<const ShellPicture> PictureOf(HICON icon) {
    ICONINFO info{};
    if (!GetIconInfo(icon, &info)) return nullptr;
    const UniqueBitmap colour(info.hbmColor);
    const UniqueBitmap mask(info.hbmMask);
    BITMAP shape{};
    if (!colour || GetObjectA(colour.get(), sizeof shape, &shape) == 0) return nullptr;
    const UniqueScreen screen(GetDC(nullptr));
    auto picture = std::make_shared<ShellPicture>();
    picture->width = shape.bmWidth;
    picture->height = shape.bmHeight;
    picture->pixels = PixelsOf(screen.get(), colour.get(), shape.bmWidth, shape.bmHeight);
    if (picture->pixels.empty()) return nullptr;
    TakeAlphaFromMask(picture->pixels, PixelsOf(screen.get(), mask.get(), shape.bmWidth, shape.bmHeight));
    return picture;
}

// `size`: SHGFI_LARGEICON or SHGFI_SMALLICON.
std::shared_ptr<const ShellPicture> IconOfSize(LPCSTR path, UINT size) {
    SHFILEINFOA info{};
    if (SHGetFileInfoA(path, 0, &info, sizeof info, SHGFI_ICON | size) == 0 || info.hIcon == nullptr)
        return nullptr;
    const UniqueIcon icon(info.hIcon);
    return PictureOf(icon.get());
}

}  // namespace

// A program has an icon of its own, so the kind is the path.
std::string ShellIconKindOf(LPCSTR path) {
    return path;
}

ShellIcon FindShellIcon(const std::string& kind) {
    return {IconOfSize(kind.c_str(), SHGFI_LARGEICON), IconOfSize(kind.c_str(), SHGFI_SMALLICON)};
}

std::shared_ptr<const ShellPicture> FindShieldPicture() {
    SHSTOCKICONINFO info{};
    info.cbSize = sizeof info;
    if (FAILED(SHGetStockIconInfo(SIID_SHIELD, SHGSI_ICON | SHGSI_SMALLICON, &info))) return nullptr;
    const UniqueIcon icon(info.hIcon);
    return PictureOf(icon.get());
}

}  // namespace permora
