#include "framework/win32/image.h"

#include <algorithm>
#include <cstring>

#include "framework/native.h"
#include "framework/resource_file.h"
#include "framework/resource_templates.h"
#include "framework/win32/scale.h"

namespace permora {
namespace {

constexpr std::size_t kPixelBytes = 4;

// A picture in memory whose bytes can be written: rows from the top, blue, green, red, alpha.
struct PixelMap {
    HBITMAP bitmap = nullptr;
    std::uint8_t* pixels = nullptr;
};

PixelMap MakePixelMap(SIZE size) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = size.cx;
    info.bmiHeader.biHeight = -size.cy;  // from the top
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* pixels = nullptr;
    HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pixels, nullptr, 0);
    return {bitmap, static_cast<std::uint8_t*>(pixels)};
}

// The colours' own transparency is all: the mask that icons have beside it hides nothing.
std::shared_ptr<const NativeImage> ImageOf(HBITMAP colours, SIZE size) {
    const std::vector<std::uint8_t> nothing(static_cast<std::size_t>((size.cx + 15) / 16 * 2) *
                                            static_cast<std::size_t>(size.cy));
    HBITMAP mask = CreateBitmap(size.cx, size.cy, 1, 1, nothing.data());
    ICONINFO parts{};
    parts.fIcon = TRUE;
    parts.hbmMask = mask;
    parts.hbmColor = colours;
    HICON icon = CreateIconIndirect(&parts);
    DeleteObject(mask);
    if (icon == nullptr) return nullptr;
    return std::make_shared<const NativeImage>(std::vector<NativeImage::Picture>{{size, icon}});
}

}  // namespace

NativeImage::~NativeImage() {
    for (const Picture& picture : pictures)
        DestroyIcon(picture.icon);
}

const NativeImage::Picture& NativeImage::For(int deviceWidth) const {
    const Picture* best = &pictures.front();
    for (const Picture& each : pictures) {
        const bool isEnough = each.size.cx >= deviceWidth;
        const bool isBestEnough = best->size.cx >= deviceWidth;
        if (isEnough ? !isBestEnough || each.size.cx < best->size.cx
                     : !isBestEnough && each.size.cx > best->size.cx)
            best = &each;
    }
    return *best;
}

std::shared_ptr<const NativeImage> LoadNativeIcon(unsigned int id) {
    constexpr DWORD kIconVersion = 0x00030000;
    const auto group = ParseIconGroup(FindProgramResource(ResourceType::kIconGroup, id));
    std::vector<NativeImage::Picture> pictures;
    for (const IconGroupEntry& entry : group.value_or(std::vector<IconGroupEntry>())) {
        const std::span<const std::byte> bytes = FindProgramResource(ResourceType::kIcon, entry.iconId);
        std::vector<BYTE> copy(bytes.size());
        std::memcpy(copy.data(), bytes.data(), bytes.size());
        HICON icon = CreateIconFromResourceEx(copy.data(), static_cast<DWORD>(copy.size()), TRUE,
                                              kIconVersion, entry.size.cx, entry.size.cy, LR_DEFAULTCOLOR);
        if (icon != nullptr) pictures.push_back({{entry.size.cx, entry.size.cy}, icon});
    }
    return pictures.empty() ? nullptr : std::make_shared<const NativeImage>(std::move(pictures));
}

std::shared_ptr<const NativeImage> LoadNativeBitmap(unsigned int id) {
    auto* bitmap = static_cast<HBITMAP>(
        LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(id), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION));
    BITMAP look{};
    if (bitmap == nullptr || GetObjectW(bitmap, sizeof look, &look) == 0) return nullptr;
    auto image = ImageOf(bitmap, {look.bmWidth, look.bmHeight});
    DeleteObject(bitmap);
    return image;
}

std::shared_ptr<const NativeImage> MakeNativeImage(Size size, std::span<const std::uint8_t> pixels) {
    const PixelMap map = MakePixelMap({size.cx, size.cy});
    if (map.bitmap == nullptr) return nullptr;
    std::memcpy(map.pixels, pixels.data(),
                static_cast<std::size_t>(size.cx) * static_cast<std::size_t>(size.cy) * kPixelBytes);
    auto image = ImageOf(map.bitmap, {size.cx, size.cy});
    DeleteObject(map.bitmap);
    return image;
}

namespace win32 {

HIMAGELIST MakeImageList(const CImageList::Images* images, UINT dpi) {
    if (images == nullptr || images->size == Size{}) return nullptr;
    const int width = ToDevice(images->size.cx, dpi);
    HIMAGELIST made = ImageList_Create(width, ToDevice(images->size.cy, dpi), ILC_COLOR32 | ILC_MASK,
                                       static_cast<int>(images->icons.size()), 1);
    for (const CIcon& icon : images->icons)
        ImageList_AddIcon(made, icon.Native()->For(width).icon);
    return made;
}

void DrawImage(HDC context, const CIcon& icon, const RECT& area) {
    if (!icon) return;
    const int width = area.right - area.left;
    const int height = area.bottom - area.top;
    const NativeImage::Picture& picture = icon.Native()->For(width);
    int shownWidth = width;
    int shownHeight = MulDiv(picture.size.cy, width, picture.size.cx);
    if (shownHeight > height) {
        shownHeight = height;
        shownWidth = MulDiv(picture.size.cx, height, picture.size.cy);
    }
    DrawIconEx(context, area.left + (width - shownWidth) / 2, area.top + (height - shownHeight) / 2,
               picture.icon, shownWidth, shownHeight, 0, nullptr, DI_NORMAL);
}

HBITMAP MakeMenuPicture(const CIcon& icon, SIZE size) {
    const PixelMap map = MakePixelMap(size);
    if (map.bitmap == nullptr) return nullptr;
    HDC context = CreateCompatibleDC(nullptr);
    HGDIOBJ before = SelectObject(context, map.bitmap);
    DrawImage(context, icon, {0, 0, size.cx, size.cy});
    SelectObject(context, before);
    DeleteDC(context);
    return map.bitmap;
}

}  // namespace win32
}  // namespace permora
