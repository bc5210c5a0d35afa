// What the writer and the reader of the history's rows agree on.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/change_recorder.h"
#include "platform/fnv_hash.h"

namespace permora {

// Larger ones are neither written nor read: no volume keeps them.
inline constexpr std::size_t kMostDescriptorBytes = std::size_t{1} << 20;
inline constexpr std::size_t kMostPathBytes = std::size_t{1} << 20;

// A name that leads nowhere but to an entry of its folder. Empty is one, too.
constexpr bool IsBareName(std::string_view name) {
    return name != "." && name != ".." &&
           name.find_first_of(std::string_view("\\/\0", 3)) == std::string_view::npos;
}

// FNV-1a (platform/fnv_hash.h) over numbers as eight bytes, the lowest first, and over texts and bytes, each
// after its length, which is a number; folded to 24 bits.
class Seal {
  public:
    template <typename... Values>
    static std::int64_t Of(const Values&... values) {
        Seal seal;
        (seal.Add(values), ...);
        constexpr std::uint64_t kMask = 0xffffff;
        const std::uint64_t hash = seal.hash;
        return static_cast<std::int64_t>((hash ^ hash >> 24 ^ hash >> 48) & kMask);
    }

  private:
    void Add(std::int64_t number) {
        std::array<std::uint8_t, sizeof number> bytes{};
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<std::uint8_t>(static_cast<std::uint64_t>(number) >> 8 * i);
        hash = HashFnv(bytes, hash);
    }
    void Add(std::string_view text) {
        Add(static_cast<std::int64_t>(text.size()));
        hash = HashFnv(text, hash);
    }
    void Add(std::span<const std::uint8_t> bytes) {
        Add(static_cast<std::int64_t>(bytes.size()));
        hash = HashFnv(bytes, hash);
    }

    std::uint64_t hash = HashFnv(std::string_view());
};

// All that distinguishes what is kept of one object from that of another: the bytes, the form as one byte,
// and the host's owner in decimal digits, where there is one.
inline std::string KeyOf(const StoredSecurity& stored) {
    std::string key(stored.bytes.begin(), stored.bytes.end());
    key += static_cast<char>(stored.form);
    if (stored.hostOwner) key += std::to_string(*stored.hostOwner);
    return key;
}

// FNV-1a of the key. It finds candidates; equal are equal bytes.
inline std::int64_t HashOfKey(std::string_view key) {
    return static_cast<std::int64_t>(HashFnv(key));
}

}  // namespace permora
