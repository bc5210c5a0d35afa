#include "platform/nt/sid.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <cstring>
#include <system_error>

#include "platform/nt/byte_io.h"

namespace permora::nt {
namespace {

constexpr std::uint8_t kSidRevision = 1;
constexpr std::size_t kCountOffset = 1;
constexpr std::size_t kAuthorityOffset = 2;
constexpr std::size_t kAuthorityBytes = 6;
constexpr std::uint64_t kMaxAuthority = 0xFFFFFFFFFFFF;

// Removes the number at the start of `text`. False, with `text` unchanged, when there is none or it is larger
// than `limit`.
bool TakeNumber(std::string_view& text, int base, std::uint64_t limit, std::uint64_t& number) {
    std::uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, value, base);
    if (error != std::errc() || value > limit) return false;
    text.remove_prefix(static_cast<std::size_t>(next - text.data()));
    number = value;
    return true;
}

bool TakePrefix(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

// The authority's six bytes are big-endian, unlike every other number of the format.
void StoreAuthority(std::span<std::uint8_t> bytes, std::uint64_t authority) {
    for (std::size_t i = kAuthorityBytes; i-- > 0; authority >>= 8U)
        bytes[kAuthorityOffset + i] = static_cast<std::uint8_t>(authority);
}

void StoreSubAuthority(std::span<std::uint8_t> bytes, std::size_t index, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i, value >>= 8U)
        bytes[Sid::kHeaderBytes + 4 * index + i] = static_cast<std::uint8_t>(value);
}

template <typename Number>
void AppendNumber(std::string& text, Number value) {
    std::array<char, 20> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    text.append(digits.data(), end);
}

}  // namespace

Sid::Sid() : Sid(0, {0}) {}

Sid::Sid(std::uint64_t authority, std::initializer_list<std::uint32_t> subAuthorities) {
    assert(authority <= kMaxAuthority && subAuthorities.size() <= kMaxSubAuthorities);
    bytes[0] = kSidRevision;
    StoreAuthority(bytes, authority);
    std::size_t count = 0;
    for (const std::uint32_t subAuthority : subAuthorities) {
        if (count == kMaxSubAuthorities) break;
        StoreSubAuthority(bytes, count++, subAuthority);
    }
    bytes[kCountOffset] = static_cast<std::uint8_t>(count);
}

std::optional<Sid> Sid::FromBytes(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < kHeaderBytes || bytes[0] != kSidRevision) return std::nullopt;
    const std::size_t count = bytes[kCountOffset];
    const std::size_t size = kHeaderBytes + 4 * count;
    if (count > kMaxSubAuthorities || bytes.size() < size) return std::nullopt;
    Sid sid;
    sid.bytes.fill(0);
    std::copy_n(bytes.begin(), size, sid.bytes.begin());
    return sid;
}

std::optional<Sid> Sid::FromText(std::string_view text) {
    if (!TakePrefix(text, "S-1-")) return std::nullopt;
    const int base = TakePrefix(text, "0x") || TakePrefix(text, "0X") ? 16 : 10;
    std::uint64_t authority = 0;
    if (!TakeNumber(text, base, kMaxAuthority, authority)) return std::nullopt;
    Sid sid(authority, {});
    std::size_t count = 0;
    while (!text.empty()) {
        std::uint64_t subAuthority = 0;
        if (count == kMaxSubAuthorities || !TakePrefix(text, "-") ||
            !TakeNumber(text, 10, 0xFFFFFFFF, subAuthority))
            return std::nullopt;
        StoreSubAuthority(sid.bytes, count++, static_cast<std::uint32_t>(subAuthority));
    }
    sid.bytes[kCountOffset] = static_cast<std::uint8_t>(count);
    return sid;
}

std::span<const std::uint8_t> Sid::Bytes() const {
    return std::span(bytes).first(ByteSize());
}

std::size_t Sid::ByteSize() const {
    return kHeaderBytes + 4 * SubAuthorityCount();
}

std::string Sid::ToText() const {
    std::string text = "S-1-";
    const std::uint64_t authority = Authority();
    if (authority > 0xFFFFFFFF) {
        constexpr std::string_view kDigits = "0123456789abcdef";
        text += "0x";
        for (unsigned shift = 48; shift > 0; shift -= 4)
            text += kDigits[authority >> (shift - 4) & 0xFU];
    } else {
        AppendNumber(text, authority);
    }
    for (std::size_t i = 0; i < SubAuthorityCount(); ++i) {
        text += '-';
        AppendNumber(text, SubAuthority(i));
    }
    return text;
}

std::uint64_t Sid::Authority() const {
    std::uint64_t authority = 0;
    for (std::size_t i = 0; i < kAuthorityBytes; ++i)
        authority = authority << 8U | bytes[kAuthorityOffset + i];
    return authority;
}

std::size_t Sid::SubAuthorityCount() const {
    return bytes[kCountOffset];
}

std::uint32_t Sid::SubAuthority(std::size_t index) const {
    assert(index < SubAuthorityCount());
    return ReadU32(bytes, kHeaderBytes + 4 * index).value_or(0);
}

std::optional<Sid> Sid::Append(std::uint32_t subAuthority) const {
    const std::size_t count = SubAuthorityCount();
    if (count == kMaxSubAuthorities) return std::nullopt;
    Sid longer = *this;
    StoreSubAuthority(longer.bytes, count, subAuthority);
    longer.bytes[kCountOffset] = static_cast<std::uint8_t>(count + 1);
    return longer;
}

bool Sid::IsDirectlyBelow(const Sid& domain) const {
    constexpr std::size_t kAuthorityAt = 2;  // after the revision and the number of parts
    return SubAuthorityCount() == domain.SubAuthorityCount() + 1 &&
           std::memcmp(bytes.data() + kAuthorityAt, domain.bytes.data() + kAuthorityAt,
                       domain.ByteSize() - kAuthorityAt) == 0;
}

bool operator==(const Sid& one, const Sid& other) {
    return std::ranges::equal(one.Bytes(), other.Bytes());
}

}  // namespace permora::nt
