// Reads little-endian numbers and texts from resource bytes, never past their end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace permora {

// After the first read past the end, every read returns zeros and empty texts, and Failed() is true: a parser
// checks it once, at its end or before a loop.
class ResourceReader {
  public:
    explicit ResourceReader(std::span<const std::byte> source) : bytes(source) {}

    bool Failed() const { return hasFailed; }
    bool AtEnd() const { return position == bytes.size(); }
    std::size_t Position() const { return position; }

    std::uint8_t TakeU8();
    std::uint16_t TakeU16();
    std::uint32_t TakeU32();
    std::int32_t TakeS16();
    std::span<const std::byte> TakeBytes(std::size_t count);
    void Skip(std::size_t count) { TakeBytes(count); }
    // To the next multiple of `alignment` from the beginning; the end of the bytes will do as well.
    void Align(std::size_t alignment);
    void Fail() { hasFailed = true; }

    // UTF-16 up to a NUL, or of a given length, in the ANSI code page. Halves of surrogate pairs become
    // U+FFFD.
    std::string TakeText();
    std::string TakeText(std::size_t length);

    // A number (0xFFFF and the number) or a text, as resource names and classes are written.
    struct NumberOrText {
        std::uint16_t number = 0;
        std::string text;
        bool isNumber = false;
    };
    NumberOrText TakeNumberOrText();

  private:
    std::span<const std::byte> bytes;
    std::size_t position = 0;
    bool hasFailed = false;
};

}  // namespace permora
