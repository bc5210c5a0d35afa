#include "cli/terminal_text.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdio>

#include "platform/terminal.h"
#include "platform/utf8.h"

namespace permora {
namespace {

// A byte that begins no UTF-8 character is one byte of no character.
Utf8Character DecodeFirst(std::string_view text) {
    const Utf8Character first = FirstUtf8Character(text);
    return first.isWellFormed ? first : Utf8Character{0, 1, false};
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
        const Utf8Character next = DecodeFirst(text);
        if (!next.isWellFormed)
            printable += "\\x" + HexText(static_cast<unsigned char>(text.front()));
        else if (ColumnsOfCharacter(next.codePoint) < 0 || next.codePoint == 0 ||
                 IsUnseenCharacter(next.codePoint))
            printable += "\\u{" + HexText(static_cast<unsigned>(next.codePoint)) + '}';
        else
            printable += text.substr(0, next.bytes);
        text.remove_prefix(next.bytes);
    }
    return printable;
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const Utf8Character next = DecodeFirst(text);
        if (!next.isWellFormed) return false;
        text.remove_prefix(next.bytes);
    }
    return true;
}

std::size_t DisplayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        const Utf8Character next = DecodeFirst(text);
        width +=
            static_cast<std::size_t>(std::max(0, next.isWellFormed ? ColumnsOfCharacter(next.codePoint) : 1));
        text.remove_prefix(next.bytes);
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
