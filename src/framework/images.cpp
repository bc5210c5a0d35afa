#include "framework/images.h"

#include "framework/native.h"
#include "framework/picture_decoder.h"
#include "framework/resource_file.h"
#include "framework/resource_templates.h"

namespace permora {

CIcon CIcon::Load(unsigned int id) {
    const auto group = ParseIconGroup(FindProgramResource(ResourceType::kIconGroup, id));
    if (!group) return {};
    std::vector<PictureData> pictures;
    for (const IconGroupEntry& entry : *group) {
        const auto bytes = FindProgramResource(ResourceType::kIcon, entry.iconId);
        if (auto picture = DecodePicture(bytes, PictureKind::kIcon)) pictures.push_back(*std::move(picture));
    }
    return CIcon(MakeNativeImage(pictures));
}

CIcon CIcon::FromBitmap(unsigned int id) {
    std::vector<PictureData> pictures;
    const auto bytes = FindProgramResource(ResourceType::kBitmap, id);
    if (auto picture = DecodePicture(bytes, PictureKind::kBitmap)) pictures.push_back(*std::move(picture));
    return CIcon(MakeNativeImage(pictures));
}

CIcon CIcon::FromFile(std::span<const std::byte> file, Size size) {
    PictureData picture;
    picture.size = size;
    picture.file = file;
    return file.empty() ? CIcon() : CIcon(MakeNativeImage({&picture, 1}));
}

CIcon CIcon::FromPixels(Size size, const std::vector<std::uint8_t>& pixels) {
    constexpr std::size_t kChannels = 4;
    if (size.cx <= 0 || size.cy <= 0) return {};
    if (pixels.size() / kChannels / static_cast<std::size_t>(size.cx) < static_cast<std::size_t>(size.cy))
        return {};
    PictureData picture;
    picture.size = size;
    picture.pixels = pixels;
    return CIcon(MakeNativeImage({&picture, 1}));
}

Size LargeIconSize() {
    return {32, 32};
}

Size SmallIconSize() {
    return {16, 16};
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
    return GetImageCount() - 1;
}

int CImageList::GetImageCount() const {
    return static_cast<int>(images->icons.size());
}

Size CImageList::ImageSize() const {
    return images->size;
}

}  // namespace permora
