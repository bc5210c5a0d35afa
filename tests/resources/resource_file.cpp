#include "tests/resources/resource_file.h"

#include <cstring>
#include <stdexcept>

namespace permora::test {
namespace {

constexpr std::uint16_t kOrdinal = 0xFFFF;

class Reader {
  public:
    explicit Reader(std::span<const std::byte> source) : bytes(source) {}

    template <typename T>
    T Take() {
        T value;
        std::memcpy(&value, TakeBytes(sizeof(T)).data(), sizeof(T));
        return value;
    }

    std::span<const std::byte> TakeBytes(std::size_t count) {
        if (count > bytes.size() - position) {
            throw std::out_of_range("resource ends early");
        }
        position += count;
        return bytes.subspan(position - count, count);
    }

    // The resources are written in plain ASCII; anything else is a fault of the script.
    std::string TakeText() {
        std::string text;
        while (const auto unit = Take<char16_t>()) {
            text.push_back(NarrowUnit(unit));
        }
        return text;
    }

    std::string TakeCountedText() {
        std::string text(Take<std::uint16_t>(), '\0');
        for (char& c : text) {
            c = NarrowUnit(Take<char16_t>());
        }
        return text;
    }

    // A number or a text; the text is empty for a number.
    std::uint16_t TakeNumberOrText(std::string& text) {
        if (const std::size_t start = position; Take<std::uint16_t>() != kOrdinal) {
            position = start;
            text = TakeText();
            return 0;
        }
        return Take<std::uint16_t>();
    }

    std::uint16_t TakeNumber() {
        if (Take<std::uint16_t>() != kOrdinal) {
            throw std::runtime_error("a number was expected, not a name");
        }
        return Take<std::uint16_t>();
    }

    void Align() { position = (position + 3) / 4 * 4; }
    [[nodiscard]] bool AtEnd() const { return position >= bytes.size(); }

  private:
    static char NarrowUnit(char16_t unit) {
        if (unit > 0x7E) {
            throw std::runtime_error("text is not ASCII");
        }
        return static_cast<char>(unit);
    }

    std::span<const std::byte> bytes;
    std::size_t position = 0;
};

std::string PredefinedClass(std::uint16_t number) {
    switch (number) {
        case 0x80:
            return "BUTTON";
        case 0x81:
            return "EDIT";
        case 0x82:
            return "STATIC";
        case 0x85:
            return "COMBOBOX";
        default:
            throw std::runtime_error("unknown control class");
    }
}

Control ReadControl(Reader& reader) {
    Control control;
    reader.Align();
    reader.Take<std::uint32_t>();  // help id
    reader.Take<std::uint32_t>();  // extended style
    control.style = reader.Take<std::uint32_t>();
    control.x = reader.Take<std::int16_t>();
    control.y = reader.Take<std::int16_t>();
    control.width = reader.Take<std::int16_t>();
    control.height = reader.Take<std::int16_t>();
    control.id = reader.Take<std::uint32_t>();
    if (const std::uint16_t number = reader.TakeNumberOrText(control.className); number != 0) {
        control.className = PredefinedClass(number);
    }
    reader.TakeNumberOrText(control.text);
    reader.TakeBytes(reader.Take<std::uint16_t>());  // creation data
    return control;
}

Dialog ReadDialog(Reader reader) {
    Dialog dialog;
    if (reader.Take<std::uint16_t>() != 1 || reader.Take<std::uint16_t>() != kOrdinal) {
        throw std::runtime_error("not an extended dialog template");
    }
    reader.Take<std::uint32_t>();  // help id
    reader.Take<std::uint32_t>();  // extended style
    dialog.style = reader.Take<std::uint32_t>();
    const auto count = reader.Take<std::uint16_t>();
    reader.Take<std::uint32_t>();  // position
    dialog.width = reader.Take<std::int16_t>();
    dialog.height = reader.Take<std::int16_t>();
    std::string unused;
    reader.TakeNumberOrText(unused);  // menu
    reader.TakeNumberOrText(unused);  // window class
    dialog.caption = reader.TakeText();
    dialog.font = std::to_string(reader.Take<std::uint16_t>());
    reader.Take<std::uint32_t>();  // weight, italic, character set
    dialog.font += " " + reader.TakeText();
    for (int i = 0; i < count; ++i) {
        dialog.controls.push_back(ReadControl(reader));
    }
    return dialog;
}

void ReadMenuItems(Reader& reader, std::vector<MenuItem>& items) {
    constexpr std::uint16_t kPopUp = 0x10;
    constexpr std::uint16_t kLast = 0x80;
    std::uint16_t flags = 0;
    do {
        flags = reader.Take<std::uint16_t>();
        MenuItem item;
        if ((flags & kPopUp) == 0) {
            item.id = reader.Take<std::uint16_t>();
        }
        item.text = reader.TakeText();
        if ((flags & kPopUp) != 0) {
            ReadMenuItems(reader, item.items);
        }
        items.push_back(std::move(item));
    } while ((flags & kLast) == 0);
}

MenuItem ReadMenu(Reader reader) {
    MenuItem menu;
    reader.Take<std::uint32_t>();  // version and header size
    ReadMenuItems(reader, menu.items);
    return menu;
}

std::vector<Accelerator> ReadAccelerators(Reader reader) {
    std::vector<Accelerator> keys;
    while (!reader.AtEnd()) {
        Accelerator key;
        key.flags = reader.Take<std::uint16_t>();
        key.key = reader.Take<std::uint16_t>();
        key.command = reader.Take<std::uint16_t>();
        reader.Take<std::uint16_t>();
        keys.push_back(key);
    }
    return keys;
}

std::vector<std::uint16_t> ReadToolbar(Reader reader) {
    std::vector<std::uint16_t> commands;
    if (reader.Take<std::uint16_t>() != 1) {
        throw std::runtime_error("unknown version of the toolbar format");
    }
    reader.Take<std::uint32_t>();  // width and height of a button
    commands.resize(reader.Take<std::uint16_t>());
    for (std::uint16_t& command : commands) {
        command = reader.Take<std::uint16_t>();
    }
    if (!reader.AtEnd()) {
        throw std::runtime_error("the toolbar has more entries than it announces");
    }
    return commands;
}

void ReadStringBlock(std::uint16_t block, Reader reader, std::map<std::uint16_t, std::string>& strings) {
    for (int i = 0; i < 16; ++i) {
        if (std::string text = reader.TakeCountedText(); !text.empty()) {
            strings[static_cast<std::uint16_t>((block - 1) * 16 + i)] = std::move(text);
        }
    }
}

std::vector<int> ReadIconSizes(Reader reader) {
    std::vector<int> sizes;
    reader.Take<std::uint32_t>();  // reserved and kind
    const auto count = reader.Take<std::uint16_t>();
    for (int i = 0; i < count; ++i) {
        const auto width = reader.Take<std::uint8_t>();
        sizes.push_back(width == 0 ? 256 : width);
        reader.TakeBytes(13);
    }
    return sizes;
}

ResourceFile::BitmapSize ReadBitmapSize(Reader reader) {
    reader.Take<std::uint32_t>();  // header size
    const auto width = reader.Take<std::int32_t>();
    return {width, reader.Take<std::int32_t>()};
}

void ReadEntry(std::uint16_t type, std::uint16_t id, Reader data, ResourceFile& file) {
    file.entries.emplace_back(type, id);
    switch (type) {
        case kDialog:
            file.dialogs[id] = ReadDialog(data);
            break;
        case kMenu:
            file.menus[id] = ReadMenu(data);
            break;
        case kAccelerators:
            file.accelerators[id] = ReadAccelerators(data);
            break;
        case kToolbar:
            file.toolbars[id] = ReadToolbar(data);
            break;
        case kStringBlock:
            ReadStringBlock(id, data, file.strings);
            break;
        case kIconGroup:
            file.iconSizes[id] = ReadIconSizes(data);
            break;
        case kBitmap:
            file.bitmapSizes[id] = ReadBitmapSize(data);
            break;
        default:
            break;
    }
}

}  // namespace

ResourceFile ReadResourceFile(std::span<const std::byte> bytes) {
    ResourceFile file;
    Reader reader(bytes);
    while (!reader.AtEnd()) {
        const auto dataSize = reader.Take<std::uint32_t>();
        reader.Take<std::uint32_t>();  // header size
        const std::uint16_t type = reader.TakeNumber();
        const std::uint16_t id = reader.TakeNumber();
        reader.Align();
        reader.TakeBytes(16);  // versions, flags, language, characteristics
        const auto data = reader.TakeBytes(dataSize);
        reader.Align();
        if (type != 0) {  // the file begins with an empty entry
            ReadEntry(type, id, Reader(data), file);
        }
    }
    return file;
}

}  // namespace permora::test
