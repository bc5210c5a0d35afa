#include "cli/terminal_text.h"

#include <wchar.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdio>

namespace permora {
namespace {

struct CharacterRange {
    wchar_t first;
    wchar_t last;
};

// Invisible characters that reverse the text around them, join or split it, or end a line. The Unicode
// Character Database's general category Cf, and the two separators Zl and Zp.
constexpr std::array<CharacterRange, 9> kUnseenCharacters = {{
    {0x00AD, 0x00AD},
    {0x061C, 0x061C},
    {0x180E, 0x180E},
    {0x200B, 0x200F},
    {0x2028, 0x202E},
    {0x2060, 0x206F},
    {0xFEFF, 0xFEFF},
    {0xFFF9, 0xFFFB},
    {0xE0000, 0xE007F},
}};

constexpr wchar_t kLastCharacter = 0x10FFFF;  // Unicode's; UTF-8 as it was once meant went further

bool IsUnseen(wchar_t character) {
    return std::any_of(kUnseenCharacters.begin(), kUnseenCharacters.end(), [character](CharacterRange range) {
        return character >= range.first && character <= range.last;
    });
}

// The next character of a text and its bytes. A byte that begins no UTF-8 character stands alone, without a
// character.
struct DecodedCharacter {
    bool isCharacter;
    wchar_t value;
    std::size_t length;
};

DecodedCharacter DecodeFirst(std::string_view text) {
    // For the C library, NUL ends the text. Here it is a control character like any other.
    if (text.front() == '\0') return {true, L'\0', 1};
    wchar_t value = 0;
    mbstate_t state = {};
    const std::size_t length = mbrtowc(&value, text.data(), text.size(), &state);
    if (length == 0 || length > text.size() || value > kLastCharacter) return {false, L'\0', 1};
    return {true, value, length};
}

}  // namespace

std::string CutToColumns(std::string text, std::size_t columns) {
    const auto isContinuation = [](char byte) { return (byte & 0xC0) == 0x80; };
    while (DisplayWidth(text) > columns) {
        while (isContinuation(text.back()))
            text.pop_back();
        text.pop_back();
    }
    return text;
}

std::string HexText(unsigned value) {
    std::array<char, 16> buffer = {};
    std::snprintf(buffer.data(), buffer.size(), "%x", value);
    return buffer.data();
}

void UseUtf8Terminal() {
    std::setlocale(LC_CTYPE, "C.UTF-8");
}

std::string PrintableText(std::string_view text) {
    std::string printable;
    while (!text.empty()) {
        const DecodedCharacter next = DecodeFirst(text);
        if (!next.isCharacter)
            printable += "\\x" + HexText(static_cast<unsigned char>(text.front()));
        else if (wcwidth(next.value) < 0 || next.value == L'\0' || IsUnseen(next.value))
            printable += "\\u{" + HexText(static_cast<unsigned>(next.value)) + '}';
        else
            printable += text.substr(0, next.length);
        text.remove_prefix(next.length);
    }
    return printable;
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const DecodedCharacter next = DecodeFirst(text);
        if (!next.isCharacter) return false;
        text.remove_prefix(next.length);
    }
    return true;
}

std::size_t DisplayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        const DecodedCharacter next = DecodeFirst(text);
        width += static_cast<std::size_t>(std::max(0, next.isCharacter ? wcwidth(next.value) : 1));
        text.remove_prefix(next.length);
    }
    return width;
}

std::string AlignedTable(const std::vector<std::vector<std::string>>& lines, std::string_view indent) {
    std::vector<std::size_t> widths;
    return AlignedTable(lines, indent, widths);
}

std::string AlignedTable(const std::vector<std::vector<std::string>>& lines, std::string_view indent,
                         std::vector<std::size_t>& widths) {
    std::vector<std::vector<std::string>> cells;
    for (const std::vector<std::string>& line : lines) {
        cells.emplace_back();
        widths.resize(std::max(widths.size(), line.size()));
        for (std::size_t column = 0; column < line.size(); ++column) {
            cells.back().push_back(PrintableText(line[column]));
            widths[column] = std::max(widths[column], DisplayWidth(cells.back().back()));
        }
    }
    std::string table;
    for (const std::vector<std::string>& line : cells) {
        table += indent;
        for (std::size_t column = 0; column < line.size(); ++column) {
            table += line[column];
            if (column + 1 == line.size()) break;
            table.append(widths[column] - DisplayWidth(line[column]) + 2, ' ');
        }
        table.erase(table.find_last_not_of(' ') + 1);
        table += '\n';
    }
    return table;
}

}  // namespace permora
