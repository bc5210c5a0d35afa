// Icons, bitmaps and image lists.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "framework/geometry.h"

namespace permora {

class NativeImage;  // the back end's half; immutable and shared

// An icon with all its sizes. Copies share the pictures.
class CIcon {
  public:
    CIcon() = default;
    explicit CIcon(std::shared_ptr<const NativeImage> native) : image(std::move(native)) {}
    // Icon resource `id`; an empty icon when there is none.
    static CIcon Load(unsigned int id);
    // Bitmap resource `id`, as a picture of one size; empty when there is none.
    static CIcon FromBitmap(unsigned int id);
    // A picture of one size from pixels: rows from the top, each pixel in the bytes blue, green, red, alpha
    // (not premultiplied). Empty when there are too few for the size.
    static CIcon FromPixels(Size size, std::span<const std::uint8_t> pixels);
    explicit operator bool() const { return image != nullptr; }
    const std::shared_ptr<const NativeImage>& Native() const { return image; }

  private:
    std::shared_ptr<const NativeImage> image;
};

// System sizes of icons, in logical pixels (SM_CXICON, SM_CXSMICON).
constexpr Size LargeIconSize() {
    return {32, 32};
}
constexpr Size SmallIconSize() {
    return {16, 16};
}

// A list of icons of one size. Controls that show it share it, and see icons that are added later.
class CImageList {
  public:
    CImageList();
    bool Create(Size size);
    void DeleteImageList();
    // The new image's index, or -1 when the icon is empty or the list not created.
    int Add(const CIcon& icon);

    struct Images {
        Size size;
        std::vector<CIcon> icons;
    };
    const std::shared_ptr<Images>& Shared() const { return images; }

  private:
    std::shared_ptr<Images> images;
};

}  // namespace permora
