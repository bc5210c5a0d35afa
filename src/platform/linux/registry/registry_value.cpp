#include "platform/linux/registry/registry_value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstring>

#include "platform/ascii.h"
#include "platform/linux/base/wide_text.h"

namespace permora::host {
namespace {

constexpr std::string_view kBlanks = " \t";

std::string_view WithoutBlanksBefore(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text;
}

bool IsBlank(std::string_view text) {
    return WithoutBlanksBefore(text).empty();
}

bool EndsWithBackslash(std::string_view text) {
    return text.substr(0, text.find_last_not_of(kBlanks) + 1).ends_with('\\');
}

bool IsText(DWORD type) {
    return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ;
}

// Removes a text in quotes from the front of `rest`.
bool TakeQuoted(std::string_view& rest, std::string& text) {
    std::string taken;
    for (std::size_t i = 1; rest.starts_with('"') && i < rest.size(); ++i) {
        char character = rest[i];
        if (character == '"') {
            rest.remove_prefix(i + 1);
            text = std::move(taken);
            return true;
        }
        if (character == '\\') {
            if (++i == rest.size()) return false;
            character = rest[i];
            if (character != '\\' && character != '"') return false;
        }
        taken += character;
    }
    return false;
}

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') quoted += '\\';
        quoted += character;
    }
    return quoted + '"';
}

bool ParseHexNumber(std::string_view digits, std::size_t mostDigits, DWORD& number) {
    DWORD parsed = 0;
    const char* end = digits.data() + digits.size();
    const auto [stop, problem] = std::from_chars(digits.data(), end, parsed, 16);
    if (digits.empty() || digits.size() > mostDigits || problem != std::errc() || stop != end) return false;
    number = parsed;
    return true;
}

// "01,2,ff", with blanks and the backslashes of continued lines anywhere between the numbers.
bool ParseBytes(std::string_view list, std::vector<std::uint8_t>& bytes) {
    std::string digits;
    for (const char character : std::string(list) + ',') {
        if (character == ' ' || character == '\t' || character == '\\') continue;
        if (character != ',') {
            digits += character;
            continue;
        }
        DWORD byte = 0;
        if (digits.empty()) continue;
        if (!ParseHexNumber(digits, 2, byte)) return false;
        bytes.push_back(static_cast<std::uint8_t>(byte));
        digits.clear();
    }
    return true;
}

bool TextFromUtf16(const std::vector<std::uint8_t>& bytes, std::vector<std::uint8_t>& text) {
    if (bytes.size() % sizeof(WCHAR) != 0) return false;
    std::u16string wide(bytes.size() / sizeof(WCHAR), u'\0');
    if (!bytes.empty()) std::memcpy(wide.data(), bytes.data(), bytes.size());
    const std::string narrow = ToAnsi(wide);
    text.assign(narrow.begin(), narrow.end());
    return true;
}

std::vector<std::uint8_t> TextToUtf16(const std::vector<std::uint8_t>& text) {
    const std::u16string wide = ToWide(std::string(text.begin(), text.end()));
    std::vector<std::uint8_t> bytes(wide.size() * sizeof(WCHAR));
    if (!bytes.empty()) std::memcpy(bytes.data(), wide.data(), bytes.size());
    return bytes;
}

void EndText(std::vector<std::uint8_t>& text) {
    if (text.empty() || text.back() != 0) text.push_back(0);
}

// "hex:..." or "hex(type):...".
bool ParseHexContent(std::string_view content, DWORD& type, std::vector<std::uint8_t>& data) {
    DWORD parsedType = REG_BINARY;
    if (content.starts_with("(")) {
        const std::size_t end = content.find(')');
        if (end == content.npos || !ParseHexNumber(content.substr(1, end - 1), 8, parsedType)) return false;
        content.remove_prefix(end + 1);
    }
    // The last line ends with a continuation mark: the rest was lost.
    if (!content.starts_with(":") || EndsWithBackslash(content)) return false;
    std::vector<std::uint8_t> bytes;
    if (!ParseBytes(content.substr(1), bytes)) return false;
    if (IsText(parsedType)) {
        if (!TextFromUtf16(bytes, bytes)) return false;
        EndText(bytes);
    }
    type = parsedType;
    data = std::move(bytes);
    return true;
}

bool ParseStringContent(std::string_view content, std::vector<std::uint8_t>& data) {
    std::string text;
    if (!TakeQuoted(content, text) || !IsBlank(content)) return false;
    if (std::any_of(text.begin(), text.end(), IsControl)) return false;
    data.assign(text.begin(), text.end());
    EndText(data);
    return true;
}

bool ParseNumberContent(std::string_view digits, std::vector<std::uint8_t>& data) {
    DWORD number = 0;
    digits = digits.substr(0, digits.find_last_not_of(kBlanks) + 1);
    if (!ParseHexNumber(digits, 8, number)) return false;
    data.resize(sizeof number);
    std::memcpy(data.data(), &number, sizeof number);
    return true;
}

// Lines of at most about 80 columns, as the registry editor breaks them.
std::string HexLines(std::string beginning, const std::vector<std::uint8_t>& bytes,
                     std::string_view lineEnd) {
    constexpr std::size_t kColumns = 76;
    std::string lines;
    std::string line = std::move(beginning);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::array<char, 4> number{};
        std::snprintf(number.data(), number.size(), "%02x%s", bytes[i], i + 1 < bytes.size() ? "," : "");
        line += number.data();
        if (line.size() >= kColumns && i + 1 < bytes.size()) {
            lines += line + '\\';
            lines += lineEnd;
            line = "  ";
        }
    }
    return lines + line;
}

}  // namespace

std::optional<ValueLine> SplitValueLine(std::string_view line) {
    ValueLine split;
    line = WithoutBlanksBefore(line);
    if (line.starts_with('@'))
        line.remove_prefix(1);
    else if (!TakeQuoted(line, split.name) || std::any_of(split.name.begin(), split.name.end(), IsControl))
        return std::nullopt;
    line = WithoutBlanksBefore(line);
    if (!line.starts_with('=')) return std::nullopt;
    split.content = WithoutBlanksBefore(line.substr(1));
    return split;
}

bool IsContinued(std::string_view content) {
    return content.starts_with("hex") && EndsWithBackslash(content);
}

bool ParseValueContent(std::string_view content, RegistryValue& value) {
    constexpr std::string_view kNumber = "dword:";
    constexpr std::string_view kBytes = "hex";
    DWORD type = REG_SZ;
    std::vector<std::uint8_t> data;
    bool isRead = false;
    if (content.starts_with(kNumber)) {
        type = REG_DWORD;
        isRead = ParseNumberContent(content.substr(kNumber.size()), data);
    } else if (content.starts_with(kBytes)) {
        isRead = ParseHexContent(content.substr(kBytes.size()), type, data);
    } else {
        isRead = ParseStringContent(content, data);
    }
    if (!isRead) return false;
    value.type = type;
    value.data = std::move(data);
    return true;
}

std::string FormatValue(const RegistryValue& value, std::string_view lineEnd) {
    std::string line = value.name.empty() ? "@" : Quoted(value.name);
    line += '=';
    std::vector<std::uint8_t> data = value.data;
    if (value.type == REG_SZ) {
        const auto end = std::find(data.begin(), data.end(), 0);
        const std::string text(data.begin(), end);
        if (std::none_of(text.begin(), text.end(), IsControl)) return line + Quoted(text);
        data.assign(text.begin(), text.end());
        EndText(data);
    }
    if (value.type == REG_DWORD && data.size() == sizeof(DWORD)) {
        DWORD number = 0;
        std::memcpy(&number, data.data(), sizeof number);
        std::array<char, 16> digits{};
        std::snprintf(digits.data(), digits.size(), "dword:%08x", number);
        return line + digits.data();
    }
    if (value.type == REG_BINARY) return HexLines(line + "hex:", data, lineEnd);
    if (IsText(value.type)) {
        EndText(data);
        data = TextToUtf16(data);
    }
    std::array<char, 16> type{};
    std::snprintf(type.data(), type.size(), "hex(%x):", value.type);
    return HexLines(line + type.data(), data, lineEnd);
}

}  // namespace permora::host
