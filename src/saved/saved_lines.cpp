#include "saved/saved_lines.h"

#include <algorithm>
#include <cstring>

#include "platform/system_message.h"

namespace permora {
namespace {

constexpr std::size_t kFirstBlock = std::size_t{64} << 10;
constexpr std::size_t kNotFound = std::string_view::npos;

}  // namespace

bool SavedLines::Peek(std::size_t count, std::string_view& bytes, SavedFault& fault) {
    while (end - begin < count && !isOver)
        if (!Fill(fault)) return false;
    bytes = std::string_view(block.data() + begin, std::min(count, end - begin));
    return true;
}

// The position of the line feed, or kNotFound.
std::size_t SavedLines::FindEnd() const {
    const std::size_t step = static_cast<std::size_t>(unit);
    std::size_t from = std::max(begin, searched);
    if (unit == LineUnit::kByte) {
        const void* found = from < end ? std::memchr(block.data() + from, '\n', end - from) : nullptr;
        return found == nullptr ? kNotFound
                                : static_cast<std::size_t>(static_cast<const char*>(found) - block.data());
    }
    from -= (from - begin) % step;
    for (; from + step <= end; from += step)
        if (block[from] == '\n' && block[from + 1] == 0) return from;
    return kNotFound;
}

bool SavedLines::Fill(SavedFault& fault) {
    std::copy(block.begin() + static_cast<std::ptrdiff_t>(begin),
              block.begin() + static_cast<std::ptrdiff_t>(end), block.begin());
    end -= begin;
    searched -= std::min(searched, begin);
    begin = 0;
    if (block.size() < kFirstBlock) block.resize(kFirstBlock);
    if (end == block.size()) block.resize(block.size() * 2);
    std::size_t count = 0;
    const DWORD error = input.Read(std::span(block).subspan(end), count);
    if (error != ERROR_SUCCESS) {
        fault = {number, SystemMessageLine(error)};
        return false;
    }
    end += count;
    isOver = count == 0;
    return true;
}

bool SavedLines::Next(std::string_view& line, SavedFault& fault) {
    std::size_t found = FindEnd();
    while (found == kNotFound && !isOver) {
        if (end - begin > kLongestLine) {
            fault = {number + 1, "the line is too long"};
            return false;
        }
        searched = end;
        if (!Fill(fault)) return false;
        found = FindEnd();
    }
    if (found == kNotFound && begin == end) return false;
    ++number;
    if (found == kNotFound) {
        fault = {number, "the text was cut off in the middle of this line"};
        return false;
    }
    line = std::string_view(block.data() + begin, found - begin);
    begin = searched = found + static_cast<std::size_t>(unit);
    return true;
}

}  // namespace permora
