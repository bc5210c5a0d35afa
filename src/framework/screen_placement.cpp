#include "framework/screen_placement.h"

#include <algorithm>
#include <cstdint>

namespace permora {
namespace {

constexpr Size kSmallest{200, 150};

std::int64_t SharedArea(const Rect& one, const Rect& other) {
    const std::int64_t width =
        std::int64_t{std::min(one.right, other.right)} - std::max(one.left, other.left);
    const std::int64_t height =
        std::int64_t{std::min(one.bottom, other.bottom)} - std::max(one.top, other.top);
    return width > 0 && height > 0 ? width * height : 0;
}

struct Span {
    int start;
    int end;
};

// Stored numbers may be anything, so differences need 64 bits.
Span FitInto(Span wanted, Span room, int smallest) {
    const std::int64_t extent = room.end - room.start;
    const std::int64_t length = std::clamp<std::int64_t>(std::int64_t{wanted.end} - wanted.start,
                                                         std::min<std::int64_t>(smallest, extent), extent);
    const std::int64_t start = std::clamp<std::int64_t>(wanted.start, room.start, room.end - length);
    return {static_cast<int>(start), static_cast<int>(start + length)};
}

}  // namespace

Rect PutOnScreen(const Rect& wanted, std::span<const Rect> screens) {
    if (screens.empty()) return wanted;
    const Rect& screen = *std::ranges::max_element(
        screens, {}, [&wanted](const Rect& each) { return SharedArea(each, wanted); });
    const Span across = FitInto({wanted.left, wanted.right}, {screen.left, screen.right}, kSmallest.cx);
    const Span down = FitInto({wanted.top, wanted.bottom}, {screen.top, screen.bottom}, kSmallest.cy);
    return {across.start, down.start, across.end, down.end};
}

}  // namespace permora
