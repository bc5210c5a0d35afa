// The desktop's icons of files and folders: a service of our own, because the system's hands out icons that
// only its own windows can draw.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/api/base.h"

namespace permora {

enum class ShellIconSize {
    kSmall,  // 16 pixels
    kLarge,  // 32 pixels
};

// A picture in one of two forms.
struct ShellPicture {
    // A whole PNG file, from the desktop's icon theme: nothing in it was checked. Its size may differ a
    // little from the one asked for.
    std::vector<std::byte> png;
    // Or rows from the top, each pixel in the bytes blue, green, red, alpha (not premultiplied).
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;
};

// The icon of the file or folder `path`; null when the desktop has none. Objects of one kind share one
// picture, so a caller can keep what it made of it by its address.
std::shared_ptr<const ShellPicture> FindShellIcon(LPCSTR path, ShellIconSize size);

}  // namespace permora
