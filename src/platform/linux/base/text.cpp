#include "platform/api/text.h"

#include <climits>
#include <string>
#include <string_view>

#include "platform/api/errors.h"
#include "platform/linux/base/failure.h"
#include "platform/utf8.h"

namespace {

using permora::host::Fail;

constexpr char32_t kReplacement = 0xFFFD;

struct Decoded {
    char32_t codePoint;
    std::size_t units;  // of the source, at least 1
};

constexpr bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// The code point at the start of `wide`, which is not empty. A lone surrogate becomes the replacement
// character.
Decoded DecodeUtf16(std::u16string_view wide) {
    const char32_t unit = wide[0];
    if (!IsHighSurrogate(unit) && !IsLowSurrogate(unit)) return {unit, 1};
    if (IsHighSurrogate(unit) && wide.size() > 1 && IsLowSurrogate(wide[1]))
        return {0x10000 + ((unit - 0xD800) << 10) + (wide[1] - 0xDC00U), 2};
    return {kReplacement, 1};
}

Decoded DecodeAnsi(std::string_view ansi) {
    const permora::Utf8Character character = permora::FirstUtf8Character(ansi);
    return {character.isWellFormed ? character.codePoint : kReplacement, character.bytes};
}

// Stores the code point as UTF-8 unless `target` is null. Returns the number of bytes in both cases.
std::size_t EncodeUtf8(char32_t codePoint, char* target) {
    char bytes[4];
    std::size_t count = 0;
    if (codePoint < 0x80) {
        bytes[count++] = static_cast<char>(codePoint);
    } else {
        if (codePoint < 0x800) {
            bytes[count++] = static_cast<char>(0xC0 | (codePoint >> 6));
        } else {
            if (codePoint < 0x10000) {
                bytes[count++] = static_cast<char>(0xE0 | (codePoint >> 12));
            } else {
                bytes[count++] = static_cast<char>(0xF0 | (codePoint >> 18));
                bytes[count++] = static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F));
            }
            bytes[count++] = static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
        }
        bytes[count++] = static_cast<char>(0x80 | (codePoint & 0x3F));
    }
    if (target != nullptr) std::char_traits<char>::copy(target, bytes, count);
    return count;
}

// The same for UTF-16.
std::size_t EncodeUtf16(char32_t codePoint, char16_t* target) {
    if (codePoint < 0x10000) {
        if (target != nullptr) target[0] = static_cast<char16_t>(codePoint);
        return 1;
    }
    if (target != nullptr) {
        target[0] = static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
        target[1] = static_cast<char16_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
    }
    return 2;
}

// Converts all of `source` unless `target` is null. Returns the number of target units in both cases.
template <typename Source, typename Target>
std::size_t ConvertAll(std::basic_string_view<Source> source, Target* target,
                       Decoded (*decode)(std::basic_string_view<Source>),
                       std::size_t (*encode)(char32_t, Target*)) {
    std::size_t written = 0;
    while (!source.empty()) {
        const Decoded decoded = decode(source);
        written += encode(decoded.codePoint, target != nullptr ? target + written : nullptr);
        source.remove_prefix(decoded.units);
    }
    return written;
}

// The shared contract of both services. The size is computed before anything is stored, so a target that is
// too small is left unchanged.
template <typename Source, typename Target>
int Convert(UINT codePage, DWORD flags, const Source* source, int sourceCount, Target* target, int targetSize,
            Decoded (*decode)(std::basic_string_view<Source>), std::size_t (*encode)(char32_t, Target*)) {
    if (flags != 0) return Fail(ERROR_INVALID_FLAGS);
    const bool sameBlock = static_cast<const void*>(source) == static_cast<const void*>(target);
    if (codePage != CP_ACP || source == nullptr || sourceCount == 0 || sourceCount < -1 || targetSize < 0 ||
        (targetSize > 0 && (target == nullptr || sameBlock))) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const std::size_t count = sourceCount == -1 ? std::char_traits<Source>::length(source) + 1
                                                : static_cast<std::size_t>(sourceCount);
    const std::basic_string_view<Source> text(source, count);
    const std::size_t needed = ConvertAll<Source, Target>(text, nullptr, decode, encode);
    if (needed > INT_MAX) return Fail(ERROR_INVALID_PARAMETER);
    if (targetSize > 0) {
        if (needed > static_cast<std::size_t>(targetSize)) return Fail(ERROR_INSUFFICIENT_BUFFER);
        ConvertAll(text, target, decode, encode);
    }
    return static_cast<int>(needed);
}

}  // namespace

int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR wide, int wideCount, LPSTR ansi,
                               int ansiSize, LPCSTR defaultChar, LPBOOL usedDefaultChar) {
    // UTF-8 can express every character, and the SDK accepts no substitute character for it.
    if (defaultChar != nullptr || usedDefaultChar != nullptr) return Fail(ERROR_INVALID_PARAMETER);
    return Convert(codePage, flags, wide, wideCount, ansi, ansiSize, DecodeUtf16, EncodeUtf8);
}

int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR ansi, int ansiCount, LPWSTR wide,
                               int wideSize) {
    return Convert(codePage, flags, ansi, ansiCount, wide, wideSize, DecodeAnsi, EncodeUtf16);
}
