#include "report/visible_text.h"

#include <array>
#include <cstdio>

#include "platform/utf8.h"
#include "platform/visible_text.h"

namespace permora {
std::string HtmlText(std::string_view text) {
    std::string html;
    for (const char character : VisibleText(text)) {
        switch (character) {
            case '&':
                html += "&amp;";
                break;
            case '<':
                html += "&lt;";
                break;
            case '>':
                html += "&gt;";
                break;
            case '"':
                html += "&quot;";
                break;
            case '\'':
                html += "&#39;";
                break;
            default:
                html += character;
        }
    }
    return html;
}

std::string ScriptText(std::string_view json) {
    std::string text;
    text.reserve(json.size());
    for (const char character : json) {
        switch (character) {
            case '<':
                text += "\\u003c";
                break;
            case '>':
                text += "\\u003e";
                break;
            case '&':
                text += "\\u0026";
                break;
            default:
                text += character;
        }
    }
    return text;
}

std::string CsvCell(std::string_view text) {
    std::string cell = VisibleText(text);
    // The fullwidth forms of = + - @ mean the same to some spreadsheets.
    constexpr std::array<std::string_view, 8> kFormulaSigns = {
        "=", "+", "-", "@", "\xEF\xBC\x9D", "\xEF\xBC\x8B", "\xEF\xBC\x8D", "\xEF\xBC\xA0"};
    const std::size_t begin = cell.find_first_not_of(' ');
    bool isFormula = false;
    for (const std::string_view sign : kFormulaSigns)
        isFormula =
            isFormula || (begin != cell.npos && std::string_view(cell).substr(begin).starts_with(sign));
    if (isFormula) cell.insert(0, "'");
    if (!isFormula && cell.find_first_of(",\"") == cell.npos && !cell.starts_with(' ') &&
        !cell.ends_with(' '))
        return cell;
    std::string quoted = "\"";
    for (const char character : cell) {
        if (character == '"') quoted += '"';
        quoted += character;
    }
    return quoted + '"';
}

std::string CsvLine(std::initializer_list<std::string_view> cells) {
    std::string line;
    for (const std::string_view& cell : cells)
        line += (&cell == cells.begin() ? "" : ",") + CsvCell(cell);
    return line + "\r\n";
}

bool IsWellFormedUtf8(std::string_view text) {
    while (!text.empty()) {
        const Utf8Character next = FirstUtf8Character(text);
        if (!next.isWellFormed) return false;
        text.remove_prefix(next.bytes);
    }
    return true;
}

std::string HexOfBytes(std::string_view bytes) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string digits;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        digits += kDigits[value >> 4U];
        digits += kDigits[value & 0xFU];
    }
    return digits;
}

}  // namespace permora
