// The lines of a saved text, one after the other.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "saved/saved_list.h"
#include "saved/saved_list_reader.h"

namespace permora {

// The longest line that is written, and read: that of a path through thousands of folders, or of a descriptor
// with lists of 64 KiB.
inline constexpr std::size_t kLongestLine = std::size_t{4} << 20;  // bytes

// What a line is made of: bytes, or the pairs of bytes of UTF-16LE.
enum class LineUnit : std::uint8_t { kByte = 1, kTwoBytes = 2 };

class SavedLines {
  public:
    explicit SavedLines(SavedInput& source) : input(source) {}

    // The first bytes of the text, up to `count` of them, before the first line is taken. False when they
    // cannot be read, with the reason in `fault`.
    bool Peek(std::size_t count, std::string_view& bytes, SavedFault& fault);
    void Skip(std::size_t count) { begin += count; }
    void SetUnit(LineUnit lineUnit) { unit = lineUnit; }

    // The next line without its line feed; it lives until the next call. False at the end of the text (then
    // `fault` stays empty), or when the text ends in the middle of a line, the line is too long, or reading
    // fails.
    bool Next(std::string_view& line, SavedFault& fault);
    // Of the line that was taken last, from 1.
    std::uint64_t Number() const { return number; }

  private:
    std::size_t FindEnd() const;
    bool Fill(SavedFault& fault);

    SavedInput& input;
    LineUnit unit = LineUnit::kByte;
    std::vector<char> block;
    std::size_t begin = 0;  // what is left in the block
    std::size_t end = 0;
    std::size_t searched = 0;  // no line ends before this
    bool isOver = false;
    std::uint64_t number = 0;
};

}  // namespace permora
