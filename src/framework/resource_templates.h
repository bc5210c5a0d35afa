// Resources as plain values. The Parse functions take the bytes of one resource and trust none of them; the
// Load functions take the program's own resource of that number. Nothing is returned for damaged bytes and
// for a resource that does not exist. Texts are UTF-8.
//
// Formats: "DLGTEMPLATEEX", "MENUHEADER", "ACCELTABLEENTRY", "STRINGTABLE" and "NEWHEADER" in the Windows
// SDK's documentation; the toolbar is the class library's (version, width, height, count, then the commands).
// The older format of dialogs and the newer one of menus, which the program has none of, count as damaged.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "framework/geometry.h"
#include "platform/api/base.h"

namespace permora {

struct ControlTemplate {
    unsigned int id = 0;
    DWORD style = 0;
    Rect rect;              // dialog units
    std::string className;  // upper case; predefined classes by their names ("BUTTON")
    std::string text;
    unsigned int pictureId = 0;  // where the text is the number of a picture
};

struct DialogTemplate {
    DWORD style = 0;
    Size size;  // dialog units
    std::string caption;
    std::vector<ControlTemplate> controls;
    std::vector<unsigned int> growing;  // none: the user cannot enlarge the dialog
};

// A separator has neither text, id nor items.
struct MenuItemTemplate {
    unsigned int id = 0;
    std::string text;
    bool enabled = true;
    bool checked = false;
    bool isPopup = false;
    std::vector<MenuItemTemplate> items;
};

struct AcceleratorTemplate {
    unsigned int command = 0;
    unsigned int key = 0;  // VK_ code, or a character when kVirtualKey is not set
    unsigned int flags = 0;
    static constexpr unsigned int kVirtualKey = 0x01;
    static constexpr unsigned int kShift = 0x04;
    static constexpr unsigned int kControl = 0x08;
    static constexpr unsigned int kAlt = 0x10;
};

struct ToolbarTemplate {
    std::vector<unsigned int> commands;  // 0: separator
};

struct IconGroupEntry {
    Size size;
    unsigned int iconId = 0;
};

// Without the growing controls, which are a resource of their own.
std::optional<DialogTemplate> ParseDialogTemplate(std::span<const std::byte> data);
std::vector<unsigned int> ParseGrowingControls(std::span<const std::byte> data);
std::optional<std::vector<MenuItemTemplate>> ParseMenuTemplate(std::span<const std::byte> data);
std::optional<std::vector<AcceleratorTemplate>> ParseAccelerators(std::span<const std::byte> data);
std::optional<ToolbarTemplate> ParseToolbarTemplate(std::span<const std::byte> data);
std::optional<std::vector<IconGroupEntry>> ParseIconGroup(std::span<const std::byte> data);
// The string at `index` (0 to 15) of a block of sixteen; empty when it has none.
std::string ParseStringBlock(std::span<const std::byte> data, unsigned int index);

std::optional<DialogTemplate> LoadDialogTemplate(unsigned int id);
std::optional<std::vector<MenuItemTemplate>> LoadMenuTemplate(unsigned int id);
std::optional<std::vector<AcceleratorTemplate>> LoadAcceleratorTable(unsigned int id);
std::optional<ToolbarTemplate> LoadToolbarTemplate(unsigned int id);
std::string LoadResourceString(unsigned int id);

}  // namespace permora
