// The desktop's icons of files and folders: a service of our own, because the system's hands out icons that
// only its own windows can draw.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/api/base.h"

namespace permora {

// Rows from the top, each pixel in the bytes blue, green, red, alpha (not premultiplied). On a screen with a
// scale there are more pixels than the icon's size asks for.
struct ShellPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;
};

// Null where the desktop has none.
struct ShellIcon {
    std::shared_ptr<const ShellPicture> large;  // 32 pixels
    std::shared_ptr<const ShellPicture> small;  // 16 pixels
};

// What the desktop chooses the icon of the file or folder `path` by, for FindShellIcon alone; empty when
// there is no such object. Asks the volume. Any thread.
std::string ShellIconKindOf(LPCSTR path);

// The icon for a kind. Objects of one kind share their pictures, so a caller can keep what it made of one by
// its address. User-interface thread; the current directory is still the one of ShellIconKindOf.
ShellIcon FindShellIcon(const std::string& kind);

// The small picture by which the desktop marks what asks for the rights of the administrator; null where it
// has none.
std::shared_ptr<const ShellPicture> FindShieldPicture();

}  // namespace permora
