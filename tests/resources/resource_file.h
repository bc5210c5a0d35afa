// Reads a compiled resource file into plain lists, as far as the tests look at it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace permora::test {

// Numbers of the resource types, of the control classes and of the styles looked at, as the SDK's winuser.h
// gives them.
enum ResourceType : std::uint16_t {
    kBitmap = 2,
    kMenu = 4,
    kDialog = 5,
    kStringBlock = 6,
    kAccelerators = 9,
    kIconGroup = 14,
    kVersion = 16,
    kManifest = 24,
    kToolbar = 241,
};

struct Control {
    std::uint32_t id = 0;
    std::uint32_t style = 0;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    // "BUTTON", "EDIT", "STATIC", "COMBOBOX" or, in the resource compiler's capitals, the registered name.
    std::string className;
    // Empty when the control shows a picture.
    std::string text;
};

struct Dialog {
    std::uint32_t style = 0;
    int width = 0;
    int height = 0;
    std::string caption;
    std::string font;
    std::vector<Control> controls;
};

struct MenuItem {
    // 0: a separator or a pop-up.
    std::uint16_t id = 0;
    std::string text;
    std::vector<MenuItem> items;
};

struct Accelerator {
    std::uint16_t flags = 0;
    std::uint16_t key = 0;
    std::uint16_t command = 0;
};

struct ResourceFile {
    std::map<std::uint16_t, Dialog> dialogs;
    std::map<std::uint16_t, MenuItem> menus;
    std::map<std::uint16_t, std::vector<Accelerator>> accelerators;
    // Commands in order; 0: a separator.
    std::map<std::uint16_t, std::vector<std::uint16_t>> toolbars;
    std::map<std::uint16_t, std::string> strings;
    // Widths of the pictures of each icon.
    std::map<std::uint16_t, std::vector<int>> iconSizes;
    struct BitmapSize {
        int width = 0;
        int height = 0;
        bool operator==(const BitmapSize&) const = default;
    };
    std::map<std::uint16_t, BitmapSize> bitmapSizes;
    // All (type, id) pairs in the order of the file.
    std::vector<std::pair<std::uint16_t, std::uint16_t>> entries;
};

// Throws std::out_of_range where an entry is shorter than what it announces, std::runtime_error for a dialog
// template in the old format or a resource with a name in place of a number.
ResourceFile ReadResourceFile(std::span<const std::byte> bytes);

}  // namespace permora::test
