#include "framework/resource_reader.h"

#include <algorithm>

namespace permora {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string& text, char32_t c) {
    const auto append = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    const auto appendTail = [&](unsigned int shift) { append(0x80U | ((c >> shift) & 0x3FU)); };
    if (c < 0x80) {
        append(c);
    } else if (c < 0x800) {
        append(0xC0U | c >> 6U);
        appendTail(0);
    } else if (c < 0x10000) {
        append(0xE0U | c >> 12U);
        appendTail(6);
        appendTail(0);
    } else {
        append(0xF0U | c >> 18U);
        appendTail(12);
        appendTail(6);
        appendTail(0);
    }
}

bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}
bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

// Collects code units and knows how to join surrogate pairs.
class TextBuilder {
  public:
    void Add(char32_t unit) {
        if (IsLowSurrogate(unit) && high != 0) {
            AppendUtf8(text, 0x10000U + ((high - 0xD800U) << 10U) + (unit - 0xDC00U));
            high = 0;
            return;
        }
        Flush();
        if (IsHighSurrogate(unit)) {
            high = unit;
        } else {
            AppendUtf8(text, IsLowSurrogate(unit) ? kReplacement : unit);
        }
    }
    std::string Take() {
        Flush();
        return std::move(text);
    }

  private:
    void Flush() {
        if (high != 0) AppendUtf8(text, kReplacement);
        high = 0;
    }

    std::string text;
    char32_t high = 0;
};

}  // namespace

std::span<const std::byte> ResourceReader::TakeBytes(std::size_t count) {
    if (hasFailed || count > bytes.size() - position) {
        hasFailed = true;
        return {};
    }
    position += count;
    return bytes.subspan(position - count, count);
}

std::uint8_t ResourceReader::TakeU8() {
    const auto field = TakeBytes(1);
    return field.empty() ? std::uint8_t{0} : std::to_integer<std::uint8_t>(field[0]);
}

std::uint16_t ResourceReader::TakeU16() {
    const auto field = TakeBytes(2);
    if (field.empty()) return 0;
    return static_cast<std::uint16_t>(std::to_integer<unsigned int>(field[0]) |
                                      std::to_integer<unsigned int>(field[1]) << 8U);
}

std::uint32_t ResourceReader::TakeU32() {
    const std::uint32_t low = TakeU16();
    return low | std::uint32_t{TakeU16()} << 16U;
}

std::int32_t ResourceReader::TakeS16() {
    return static_cast<std::int16_t>(TakeU16());
}

void ResourceReader::Align(std::size_t alignment) {
    const std::size_t aligned = (position + alignment - 1) / alignment * alignment;
    position = std::min(aligned, bytes.size());
}

std::string ResourceReader::TakeText() {
    TextBuilder text;
    while (const char32_t unit = TakeU16())
        text.Add(unit);
    return text.Take();
}

std::string ResourceReader::TakeText(std::size_t length) {
    TextBuilder text;
    for (std::size_t i = 0; i < length && !hasFailed; ++i)
        text.Add(TakeU16());
    return text.Take();
}

ResourceReader::NumberOrText ResourceReader::TakeNumberOrText() {
    constexpr std::uint16_t kNumberFollows = 0xFFFF;
    NumberOrText result;
    const std::size_t start = position;
    if (TakeU16() == kNumberFollows) {
        result.isNumber = true;
        result.number = TakeU16();
        return result;
    }
    if (!hasFailed) {
        position = start;
        result.text = TakeText();
    }
    return result;
}

}  // namespace permora
