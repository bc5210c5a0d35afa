#include "saved/saved_path.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "platform/ascii.h"
#include "platform/utf8.h"

namespace permora {
namespace {

constexpr std::string_view kTopItself = ".";
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

enum class Separators {
    kTurned,   // backslashes are written as slashes
    kEscaped,  // they have no meaning and are written as \u{5c}
};

bool IsEscaped(char32_t character) {
    const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
    const bool isPrivate = character >= 0xE000 && character <= 0xF8FF;
    return isControl || isPrivate || character == U'\\' || IsUnseenCharacter(character);
}

// ASCII alone, nothing of which is escaped. Most texts are so.
bool IsOrdinary(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char character) {
        return character >= 0x20 && character < 0x7F && character != '\\';
    });
}

void AppendEscape(char32_t character, std::string& line) {
    std::array<char, 8> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<unsigned>(character), 16).ptr;
    line += "\\u{";
    line.append(digits.data(), end);
    line += '}';
}

void AppendWritten(std::string_view text, Separators separators, std::string& line) {
    for (std::size_t position = 0; position < text.size();) {
        if (text[position] > ' ' && text[position] < 0x7F && text[position] != '\\') {
            line += text[position++];
            continue;
        }
        const Utf8Character next = FirstUtf8Character(text.substr(position));
        const bool isAtEnd = position == 0 || position + next.bytes == text.size();
        if (!next.isWellFormed)
            line += kReplacement;
        else if (next.codePoint == U'\\' && separators == Separators::kTurned)
            line += '/';
        else if (IsEscaped(next.codePoint) || (next.codePoint == U' ' && isAtEnd))
            AppendEscape(next.codePoint, line);
        else
            line += text.substr(position, next.bytes);
        position += next.bytes;
    }
}

// Takes an escape off the front of `written`. False when it is none.
bool TakeEscape(std::string_view& written, std::string& text) {
    const std::size_t end = written.find('}');
    if (!written.starts_with("\\u{") || end == written.npos) return false;
    unsigned value = 0;
    const char* const last = written.data() + end;
    const auto [stop, error] = std::from_chars(written.data() + 3, last, value, 16);
    if (error != std::errc() || stop != last || value > 0x10FFFF) return false;
    AppendUtf8(static_cast<char32_t>(value), text);
    written.remove_prefix(end + 1);
    return true;
}

// Nothing for what AppendWritten would not have written.
std::optional<std::string> FromWritten(std::string_view written, Separators separators) {
    std::string text;
    for (std::string_view rest = written; !rest.empty();) {
        if (rest.front() == '\\') {
            if (!TakeEscape(rest, text)) return std::nullopt;
            continue;
        }
        const bool isSeparator = rest.front() == '/' && separators == Separators::kTurned;
        text += isSeparator ? '\\' : rest.front();
        rest.remove_prefix(1);
    }
    if (IsOrdinary(written) && !written.starts_with(' ') && !written.ends_with(' ')) return text;
    std::string again;
    AppendWritten(text, separators, again);
    if (again != written) return std::nullopt;
    return text;
}

bool IsName(std::string_view name) {
    constexpr std::string_view kImpossible = "/:*?\"<>|";
    if (name.empty() || name == "." || name == "..") return false;
    for (std::size_t position = 0; position < name.size();) {
        const char byte = name[position];
        if (IsControl(byte) || kImpossible.find(byte) != kImpossible.npos) return false;
        if (static_cast<unsigned char>(byte) < 0x80) {
            ++position;
            continue;
        }
        const Utf8Character character = FirstUtf8Character(name.substr(position));
        if (!character.isWellFormed) return false;
        position += character.bytes;
    }
    return true;
}

// The length of "C:\" at the beginning, or of "\\" before a server; 0 for neither.
std::size_t RootLength(std::string_view path) {
    if (path.starts_with("\\\\")) return 2;
    const bool hasDrive = path.size() >= 3 && LowerLetter(path[0]) >= 'a' && LowerLetter(path[0]) <= 'z';
    return hasDrive && path.substr(1, 2) == ":\\" ? 3 : 0;
}

}  // namespace

void AppendWrittenPath(std::string_view path, std::string& line) {
    if (path.empty())
        line += kTopItself;
    else
        AppendWritten(path, Separators::kTurned, line);
}

std::optional<std::string> PathFromWritten(std::string_view written) {
    if (written == kTopItself) return std::string();
    std::optional<std::string> path = FromWritten(written, Separators::kTurned);
    return path && IsPathBelow(*path) ? path : std::nullopt;
}

void AppendWrittenTop(std::string_view path, std::string& line) {
    AppendWritten(path, Separators::kTurned, line);
}

std::optional<std::string> TopFromWritten(std::string_view written) {
    std::optional<std::string> path = FromWritten(written, Separators::kTurned);
    if (!path) return std::nullopt;
    const std::size_t root = RootLength(*path);
    const bool isRoot = root == 3 && path->size() == root;
    return isRoot || (root != 0 && IsPathBelow(std::string_view(*path).substr(root))) ? path : std::nullopt;
}

void AppendWrittenText(std::string_view text, std::string& line) {
    AppendWritten(text, Separators::kEscaped, line);
}

std::optional<std::string> TextFromWritten(std::string_view written) {
    return FromWritten(written, Separators::kEscaped);
}

bool IsPathBelow(std::string_view path) {
    for (;;) {
        const std::size_t end = path.find('\\');
        if (!IsName(path.substr(0, end))) return false;
        if (end == path.npos) return true;
        path.remove_prefix(end + 1);
    }
}

bool ComesBefore(std::string_view one, std::string_view other) {
    // No name has a character below the blank, so a separator sorts below everything in the place of NUL.
    const auto rank = [](char character) {
        return character == '\\' ? 0 : static_cast<int>(static_cast<unsigned char>(character));
    };
    return std::lexicographical_compare(one.begin(), one.end(), other.begin(), other.end(),
                                        [&](char left, char right) { return rank(left) < rank(right); });
}

bool IsBelow(std::string_view path, std::string_view folder) {
    if (folder.empty()) return !path.empty();
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '\\';
}

}  // namespace permora
