#include "framework/resource_templates.h"

#include <algorithm>

#include "framework/resource_file.h"
#include "framework/resource_reader.h"

namespace permora {
namespace {

constexpr DWORD kHasFont = 0x40;  // DS_SETFONT, also part of DS_SHELLFONT
constexpr unsigned int kStringsPerBlock = 16;
// Deeper than any usable menu; keeps a damaged one from exhausting the stack.
constexpr int kDeepestMenu = 16;

std::string ClassName(const ResourceReader::NumberOrText& name) {
    if (!name.isNumber) {
        std::string upper = name.text;
        std::ranges::transform(upper, upper.begin(), [](char c) {
            return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        });
        return upper;
    }
    switch (name.number) {
        case 0x80:
            return "BUTTON";
        case 0x81:
            return "EDIT";
        case 0x82:
            return "STATIC";
        case 0x83:
            return "LISTBOX";
        case 0x84:
            return "SCROLLBAR";
        case 0x85:
            return "COMBOBOX";
        default:
            return {};
    }
}

Rect TakeRect(ResourceReader& reader) {
    const int left = reader.TakeS16();
    const int top = reader.TakeS16();
    const int width = reader.TakeS16();
    const int height = reader.TakeS16();
    return {left, top, left + width, top + height};
}

ControlTemplate TakeControl(ResourceReader& reader) {
    constexpr std::size_t kAlignment = 4;
    ControlTemplate control;
    reader.Align(kAlignment);
    reader.Skip(8);  // help id, extended style
    control.style = reader.TakeU32();
    control.rect = TakeRect(reader);
    control.id = reader.TakeU32();
    control.className = ClassName(reader.TakeNumberOrText());
    auto title = reader.TakeNumberOrText();
    control.pictureId = title.number;
    control.text = std::move(title.text);
    reader.Skip(reader.TakeU16());  // creation data
    return control;
}

// The flags of one menu item.
constexpr unsigned int kMenuGrayed = 0x0001;
constexpr unsigned int kMenuDisabled = 0x0002;
constexpr unsigned int kMenuChecked = 0x0008;
constexpr unsigned int kMenuPopup = 0x0010;
constexpr unsigned int kMenuLast = 0x0080;

bool TakeMenu(ResourceReader& reader, std::vector<MenuItemTemplate>& items, int depth) {
    if (depth > kDeepestMenu) return false;
    unsigned int flags = 0;
    do {
        MenuItemTemplate item;
        flags = reader.TakeU16();
        item.isPopup = (flags & kMenuPopup) != 0;
        item.enabled = (flags & (kMenuGrayed | kMenuDisabled)) == 0;
        item.checked = (flags & kMenuChecked) != 0;
        if (!item.isPopup) item.id = reader.TakeU16();
        item.text = reader.TakeText();
        if (reader.Failed()) return false;
        if (item.isPopup && !TakeMenu(reader, item.items, depth + 1)) return false;
        items.push_back(std::move(item));
    } while ((flags & kMenuLast) == 0);
    return true;
}

}  // namespace

std::optional<DialogTemplate> ParseDialogTemplate(std::span<const std::byte> data) {
    DialogTemplate dialog;
    ResourceReader reader(data);
    const std::uint16_t version = reader.TakeU16();
    const std::uint16_t signature = reader.TakeU16();
    if (version != 1 || signature != 0xFFFF) return std::nullopt;
    reader.Skip(8);  // help id, extended style
    dialog.style = reader.TakeU32();
    const std::uint16_t count = reader.TakeU16();
    const Rect rect = TakeRect(reader);
    dialog.size = {rect.Width(), rect.Height()};
    reader.TakeNumberOrText();  // menu
    reader.TakeNumberOrText();  // window class
    dialog.caption = reader.TakeText();
    if ((dialog.style & kHasFont) != 0) {
        reader.Skip(6);  // size, weight, italic, character set
        reader.TakeText();
    }
    for (int i = 0; i < count && !reader.Failed(); ++i)
        dialog.controls.push_back(TakeControl(reader));
    if (reader.Failed()) return std::nullopt;
    return dialog;
}

std::optional<std::vector<MenuItemTemplate>> ParseMenuTemplate(std::span<const std::byte> data) {
    std::vector<MenuItemTemplate> items;
    ResourceReader reader(data);
    const std::uint16_t version = reader.TakeU16();
    const std::uint16_t headerSize = reader.TakeU16();
    reader.Skip(headerSize);
    if (version != 0 || !TakeMenu(reader, items, 0)) return std::nullopt;
    return items;
}

std::optional<std::vector<AcceleratorTemplate>> ParseAccelerators(std::span<const std::byte> data) {
    constexpr unsigned int kLast = 0x80;
    std::vector<AcceleratorTemplate> keys;
    ResourceReader reader(data);
    unsigned int flags = 0;
    do {
        AcceleratorTemplate key;
        flags = reader.TakeU16();
        key.flags = flags & ~kLast;
        key.key = reader.TakeU16();
        key.command = reader.TakeU16();
        reader.Skip(2);
        if (reader.Failed()) return std::nullopt;
        keys.push_back(key);
    } while ((flags & kLast) == 0);
    return keys;
}

std::optional<ToolbarTemplate> ParseToolbarTemplate(std::span<const std::byte> data) {
    ToolbarTemplate toolbar;
    ResourceReader reader(data);
    const std::uint16_t version = reader.TakeU16();
    reader.Skip(4);  // size of a picture
    const std::uint16_t count = reader.TakeU16();
    for (int i = 0; i < count && !reader.Failed(); ++i)
        toolbar.commands.push_back(reader.TakeU16());
    if (reader.Failed() || version != 1) return std::nullopt;
    return toolbar;
}

std::optional<std::vector<IconGroupEntry>> ParseIconGroup(std::span<const std::byte> data) {
    constexpr int kLargestSize = 256;  // written as 0
    std::vector<IconGroupEntry> icons;
    ResourceReader reader(data);
    reader.Skip(4);  // reserved, type
    const std::uint16_t count = reader.TakeU16();
    for (int i = 0; i < count && !reader.Failed(); ++i) {
        IconGroupEntry icon;
        const int width = reader.TakeU8();
        const int height = reader.TakeU8();
        icon.size = {width != 0 ? width : kLargestSize, height != 0 ? height : kLargestSize};
        reader.Skip(10);  // colours, reserved, planes, depth, size in bytes
        icon.iconId = reader.TakeU16();
        icons.push_back(icon);
    }
    if (reader.Failed()) return std::nullopt;
    return icons;
}

std::string ParseStringBlock(std::span<const std::byte> data, unsigned int index) {
    ResourceReader reader(data);
    for (unsigned int i = 0; i < index; ++i)
        reader.Skip(std::size_t{2} * reader.TakeU16());
    std::string text = reader.TakeText(reader.TakeU16());
    return reader.Failed() ? std::string() : text;
}

std::vector<unsigned int> ParseGrowingControls(std::span<const std::byte> data) {
    std::vector<unsigned int> controls;
    ResourceReader reader(data);
    while (!reader.AtEnd() && !reader.Failed())
        controls.push_back(reader.TakeU16());
    return reader.Failed() ? std::vector<unsigned int>() : controls;
}

std::optional<DialogTemplate> LoadDialogTemplate(unsigned int id) {
    auto dialog = ParseDialogTemplate(FindProgramResource(ResourceType::kDialog, id));
    if (dialog)
        dialog->growing = ParseGrowingControls(FindProgramResource(ResourceType::kGrowingControls, id));
    return dialog;
}

std::optional<std::vector<MenuItemTemplate>> LoadMenuTemplate(unsigned int id) {
    return ParseMenuTemplate(FindProgramResource(ResourceType::kMenu, id));
}

std::optional<std::vector<AcceleratorTemplate>> LoadAcceleratorTable(unsigned int id) {
    return ParseAccelerators(FindProgramResource(ResourceType::kAccelerators, id));
}

std::optional<ToolbarTemplate> LoadToolbarTemplate(unsigned int id) {
    return ParseToolbarTemplate(FindProgramResource(ResourceType::kToolbar, id));
}

std::string LoadResourceString(unsigned int id) {
    const auto block = FindProgramResource(ResourceType::kStringTable, id / kStringsPerBlock + 1);
    return ParseStringBlock(block, id % kStringsPerBlock);
}

}  // namespace permora
