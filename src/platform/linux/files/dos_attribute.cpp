#include "platform/linux/files/dos_attribute.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

#include "platform/nt/byte_io.h"

namespace permora::host {
namespace {

constexpr std::uint16_t kOldestVersion = 3;
constexpr std::uint16_t kNewestVersion = 5;
// The longest text is "0x" and eight digits.
constexpr std::size_t kLongestText = 10;

// The bytes after the attributes. 3: the size of the extended attributes, size, allocated size, creation and
// change time; 4: two times; 5: creation time.
constexpr std::size_t OtherFieldsSize(std::uint16_t version) {
    return version == 3 ? 4 + 4 * 8 : version == 4 ? 2 * 8 : 8;
}

std::optional<DosAttribute> FromText(std::string_view text) {
    if (!text.starts_with("0x") || text.size() == 2) return std::nullopt;
    DosAttribute attribute;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data() + 2, end, attribute.attributes, 16);
    if (error != std::errc{} || rest != end) return std::nullopt;
    return attribute;
}

}  // namespace

std::optional<DosAttribute> DosAttribute::FromBytes(std::span<const std::uint8_t> bytes) {
    const auto textEnd = std::find(bytes.begin(), bytes.end(), std::uint8_t{0});
    const std::string text(bytes.begin(), textEnd);
    if (text.size() > kLongestText) return std::nullopt;
    const std::size_t versionAt = (text.size() + 2) & ~std::size_t{1};
    if (bytes.size() <= versionAt) return FromText(text);

    const std::size_t fieldsAt = nt::RoundUpToFour(versionAt + 4);
    const auto version = nt::ReadU16(bytes, versionAt);
    const auto versionAgain = nt::ReadU16(bytes, versionAt + 2);
    const auto validFields = nt::ReadU32(bytes, fieldsAt);
    const auto attributes = nt::ReadU32(bytes, fieldsAt + 4);
    if (!version || version != versionAgain || !validFields || !attributes) return std::nullopt;
    if (*version < kOldestVersion || *version > kNewestVersion) return std::nullopt;
    const auto others = nt::Slice(bytes, fieldsAt + 8, OtherFieldsSize(*version));
    if (!others) return std::nullopt;
    return DosAttribute{*version, *validFields, *attributes, {others->begin(), others->end()}};
}

std::vector<std::uint8_t> DosAttribute::ToBytes() const {
    std::vector<std::uint8_t> bytes{0, 0};
    nt::AppendU16(bytes, version);
    nt::AppendU16(bytes, version);
    nt::AppendU16(bytes, 0);
    nt::AppendU32(bytes, validFields);
    nt::AppendU32(bytes, attributes);
    nt::AppendBytes(bytes, others);
    bytes.resize(bytes.size() - others.size() + OtherFieldsSize(version));
    return bytes;
}

}  // namespace permora::host
