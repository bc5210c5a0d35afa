// Decodes the pictures of icon and bitmap resources: device-independent bitmaps and PNG files.
//
// Formats: "BITMAPINFOHEADER" and "Icons" in the Windows SDK's documentation. Nothing is returned for damaged
// bytes.
#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "framework/native.h"

namespace permora {

enum class PictureKind {
    kBitmap,
    kIcon,  // twice as high as shown: below the colours stands a mask of one bit a pixel
};

std::optional<PictureData> DecodePicture(std::span<const std::byte> data, PictureKind kind);

}  // namespace permora
