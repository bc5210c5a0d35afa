// The hash SHA-256, by which a change of a text is noticed, and which "sha256sum" computes too.
//
// Source: FIPS 180-4, sections 4 to 6. Nothing that the program links already has it on both systems.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace permora {

class Sha256 {
  public:
    void Add(std::string_view bytes);
    // In hexadecimal, 64 small digits, of everything that was added.
    std::string Digest() const;

  private:
    void AddBlock(const char* bytes);

    static constexpr std::size_t kBlockBytes = 64;

    std::array<std::uint32_t, 8> state = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                          0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<char, kBlockBytes> pending{};
    std::size_t pendingBytes = 0;
    std::uint64_t bytesInAll = 0;
};

}  // namespace permora
