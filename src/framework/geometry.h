// Points, sizes and rectangles, in logical pixels unless a declaration says dialog units.
#pragma once

namespace permora {

struct Point {
    int x = 0;
    int y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

struct Size {
    int cx = 0;
    int cy = 0;
    friend bool operator==(const Size&, const Size&) = default;
};

// The right and bottom edges lie outside.
struct Rect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool Contains(Point point) const {
        return point.x >= left && point.x < right && point.y >= top && point.y < bottom;
    }
    friend bool operator==(const Rect&, const Rect&) = default;
};

}  // namespace permora
