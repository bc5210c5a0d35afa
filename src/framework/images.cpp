#include "framework/images.h"

#include "framework/native.h"

namespace permora {

CIcon CIcon::Load(unsigned int id) {
    return CIcon(LoadNativeIcon(id));
}

CIcon CIcon::FromBitmap(unsigned int id) {
    return CIcon(LoadNativeBitmap(id));
}

CIcon CIcon::FromPixels(Size size, std::span<const std::uint8_t> pixels) {
    constexpr std::size_t kChannels = 4;
    if (size.cx <= 0 || size.cy <= 0) return {};
    if (pixels.size() / kChannels / static_cast<std::size_t>(size.cx) < static_cast<std::size_t>(size.cy))
        return {};
    return CIcon(MakeNativeImage(size, pixels));
}

CImageList::CImageList() : images(std::make_shared<Images>()) {}

bool CImageList::Create(Size size) {
    if (size.cx <= 0 || size.cy <= 0) return false;
    images->size = size;
    images->icons.clear();
    return true;
}

void CImageList::DeleteImageList() {
    *images = {};
}

int CImageList::Add(const CIcon& icon) {
    if (!icon || images->size == Size{}) return -1;
    images->icons.push_back(icon);
    return static_cast<int>(images->icons.size()) - 1;
}

}  // namespace permora
