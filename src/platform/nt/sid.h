// A security identifier as a plain value. Binary form: [MS-DTYP] 2.4.2; text form "S-1-5-32-544": 2.4.2.1.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace permora::nt {

// Always valid: revision 1 and at most fifteen sub-authorities. Copies without touching the heap.
class Sid {
  public:
    static constexpr std::size_t kMaxSubAuthorities = 15;
    static constexpr std::size_t kHeaderBytes = 8;
    static constexpr std::size_t kMaxBytes = kHeaderBytes + 4 * kMaxSubAuthorities;

    // S-1-0-0, which names nobody.
    Sid();
    // More than fifteen sub-authorities is a programming error.
    Sid(std::uint64_t authority, std::initializer_list<std::uint32_t> subAuthorities);

    // The SID at the start of `bytes`, which may be longer; nothing when it is not valid or does not fit.
    static std::optional<Sid> FromBytes(std::span<const std::uint8_t> bytes);
    // The whole of `text` in the form S-1-<authority>-<sub>...; the authority may be decimal or 0x
    // hexadecimal.
    static std::optional<Sid> FromText(std::string_view text);

    std::span<const std::uint8_t> Bytes() const;
    std::size_t ByteSize() const;
    std::string ToText() const;

    std::uint64_t Authority() const;  // 48 bits
    std::size_t SubAuthorityCount() const;
    std::uint32_t SubAuthority(std::size_t index) const;  // index < SubAuthorityCount()

    // This SID with one more sub-authority (a machine's SID with an account's relative id); nothing when it
    // is full.
    std::optional<Sid> Append(std::uint32_t subAuthority) const;
    // True when this SID is `domain` followed by exactly one more sub-authority.
    bool IsDirectlyBelow(const Sid& domain) const;

    friend bool operator==(const Sid& one, const Sid& other);

  private:
    // The unused tail is zero. Aligned as the system's SID is, so that its functions can be lent the bytes.
    alignas(std::uint32_t) std::array<std::uint8_t, kMaxBytes> bytes{};
};

}  // namespace permora::nt
