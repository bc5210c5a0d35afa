#include "framework/resource_reader.h"

#include <algorithm>

#include "platform/api/text.h"

namespace permora {
namespace {

using WideText = std::basic_string<WCHAR>;

std::string InCodePage(const WideText& wide) {
    if (wide.empty()) return {};
    std::string text(3 * wide.size(), '\0');  // the most that a unit can take
    const int count = WideCharToMultiByte(CP_ACP, 0, wide.data(), static_cast<int>(wide.size()), text.data(),
                                          static_cast<int>(text.size()), nullptr, nullptr);
    text.resize(static_cast<std::size_t>(count));
    return text;
}

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
    WideText text;
    while (const std::uint16_t unit = TakeU16())
        text.push_back(static_cast<WCHAR>(unit));
    return InCodePage(text);
}

std::string ResourceReader::TakeText(std::size_t length) {
    WideText text;
    for (std::size_t i = 0; i < length && !hasFailed; ++i)
        text.push_back(static_cast<WCHAR>(TakeU16()));
    return InCodePage(text);
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
