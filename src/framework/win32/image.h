// Pictures: an icon of the system for each size.
#pragma once

#include <vector>

#include "framework/images.h"
#include "framework/styles.h"
#include "platform/api/base.h"

namespace permora {

class NativeImage {
  public:
    struct Picture {
        SIZE size{};
        HICON icon = nullptr;
    };
    // Takes the icons over; there is at least one.
    explicit NativeImage(std::vector<Picture> made) : pictures(std::move(made)) {}
    ~NativeImage();
    NativeImage(const NativeImage&) = delete;
    NativeImage& operator=(const NativeImage&) = delete;

    // The smallest that is at least so wide, else the largest.
    const Picture& For(int deviceWidth) const;
    const std::vector<Picture>& All() const { return pictures; }

  private:
    std::vector<Picture> pictures;
};

namespace win32 {

// For a control that draws at `dpi`; the caller destroys it. Null when `images` are none.
HIMAGELIST MakeImageList(const CImageList::Images* images, UINT dpi);

// As large as fits into `area`, in its middle.
void DrawImage(HDC context, const CIcon& icon, const RECT& area);
// The icon as a menu shows one. The caller deletes it.
HBITMAP MakeMenuPicture(const CIcon& icon, SIZE size);

}  // namespace win32
}  // namespace permora
