#include "saved/sha256.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace permora {
namespace {

// The first bits of the fractional parts of the cube roots of the first 64 primes.
constexpr std::array<std::uint32_t, 64> kRoundConstants = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t BigEndian(const char* bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i)
        value = (value << 8) | static_cast<unsigned char>(bytes[i]);
    return value;
}

}  // namespace

void Sha256::AddBlock(const char* bytes) {
    std::array<std::uint32_t, 64> words{};
    for (std::size_t i = 0; i < 16; ++i)
        words[i] = BigEndian(bytes + i * 4);
    for (std::size_t i = 16; i < words.size(); ++i) {
        const std::uint32_t early = words[i - 15];
        const std::uint32_t late = words[i - 2];
        words[i] = words[i - 16] + (std::rotr(early, 7) ^ std::rotr(early, 18) ^ (early >> 3)) +
                   words[i - 7] + (std::rotr(late, 17) ^ std::rotr(late, 19) ^ (late >> 10));
    }
    auto [a, b, c, d, e, f, g, h] = state;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::uint32_t one = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                  ((e & f) ^ (~e & g)) + kRoundConstants[i] + words[i];
        const std::uint32_t two =
            (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + one;
        d = c;
        c = b;
        b = a;
        a = one + two;
    }
    const std::array<std::uint32_t, 8> added = {a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < state.size(); ++i)
        state[i] += added[i];
}

void Sha256::Add(std::string_view bytes) {
    bytesInAll += bytes.size();
    if (pendingBytes != 0) {
        const std::size_t taken = std::min(bytes.size(), kBlockBytes - pendingBytes);
        std::memcpy(pending.data() + pendingBytes, bytes.data(), taken);
        pendingBytes += taken;
        bytes.remove_prefix(taken);
        if (pendingBytes < kBlockBytes) return;
        AddBlock(pending.data());
        pendingBytes = 0;
    }
    for (; bytes.size() >= kBlockBytes; bytes.remove_prefix(kBlockBytes))
        AddBlock(bytes.data());
    std::copy(bytes.begin(), bytes.end(), pending.begin());
    pendingBytes = bytes.size();
}

std::string Sha256::Digest() const {
    // A one bit, zeros, and the number of bits, up to the end of a block.
    Sha256 padded = *this;
    std::string padding(1, '\x80');
    padding.append((2 * kBlockBytes - 9 - pendingBytes) % kBlockBytes, '\0');
    for (int shift = 56; shift >= 0; shift -= 8)
        padding += static_cast<char>((bytesInAll * 8) >> shift);
    padded.Add(padding);
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string digest;
    for (const std::uint32_t word : padded.state)
        for (int shift = 28; shift >= 0; shift -= 4)
            digest += kDigits[(word >> shift) & 0xF];
    return digest;
}

}  // namespace permora
