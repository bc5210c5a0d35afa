#include "framework/list_layout.h"

#include <algorithm>

namespace permora {

ListLayout::ListLayout(ListView shown, int rowCount, Size cellSize, Size clientSize)
    : view(shown),
      count(rowCount),
      cell{std::max(cellSize.cx, 1), std::max(cellSize.cy, 1)},
      client(clientSize) {
    if (view == ListView::kReport) return;
    lineLength = std::max(FillsDown() ? client.cy / cell.cy : client.cx / cell.cx, 1);
}

Size ListLayout::ContentSize() const {
    if (count == 0) return view == ListView::kReport ? Size{cell.cx, 0} : Size{};
    const int lines = (count + lineLength - 1) / lineLength;
    const int perLine = std::min(count, lineLength);
    if (FillsDown()) return {lines * cell.cx, perLine * cell.cy};
    return {perLine * cell.cx, lines * cell.cy};
}

Rect ListLayout::Cell(int row) const {
    const int line = row / lineLength;
    const int place = row % lineLength;
    const int left = (FillsDown() ? line : place) * cell.cx;
    const int top = (FillsDown() ? place : line) * cell.cy;
    return {left, top, left + cell.cx, top + cell.cy};
}

int ListLayout::RowAt(Point point) const {
    if (point.x < 0 || point.y < 0) return -1;
    const int across = point.x / cell.cx;
    const int down = point.y / cell.cy;
    const int line = FillsDown() ? across : down;
    const int place = FillsDown() ? down : across;
    if (place >= lineLength || line >= (count + lineLength - 1) / lineLength) return -1;
    const int row = line * lineLength + place;
    return row < count ? row : -1;
}

RowRange ListLayout::RowsIn(const Rect& area) const {
    const int start = std::max(FillsDown() ? area.left : area.top, 0);
    const int end = std::max(FillsDown() ? area.right : area.bottom, start);
    const int size = FillsDown() ? cell.cx : cell.cy;
    const int lines = (count + lineLength - 1) / lineLength;
    const int firstLine = std::min(start / size, lines);
    const int lastLine = std::min((end + size - 1) / size, lines);
    return {std::min(firstLine * lineLength, count), std::min(lastLine * lineLength, count)};
}

// Visible cells, without the one that stays in sight.
int ListLayout::PageStep() const {
    const int lines = FillsDown() ? client.cx / cell.cx : client.cy / cell.cy;
    return std::max(view == ListView::kReport ? lines - 1 : lines, 1) * lineLength;
}

int ListLayout::Neighbour(int row, ListStep step) const {
    if (count == 0) return -1;
    const int alongLine = 1;
    const int acrossLines = lineLength;
    int target = row;
    switch (step) {
        case ListStep::kHome:
            return 0;
        case ListStep::kEnd:
            return count - 1;
        case ListStep::kPageUp:
            return std::max(row - PageStep(), 0);
        case ListStep::kPageDown:
            return std::min(row + PageStep(), count - 1);
        case ListStep::kUp:
            target = row - (FillsDown() ? alongLine : acrossLines);
            break;
        case ListStep::kDown:
            target = row + (FillsDown() ? alongLine : acrossLines);
            break;
        case ListStep::kLeft:
            if (view != ListView::kReport) target = row - (FillsDown() ? acrossLines : alongLine);
            break;
        case ListStep::kRight:
            if (view != ListView::kReport) target = row + (FillsDown() ? acrossLines : alongLine);
            break;
    }
    return target >= 0 && target < count ? target : row;
}

}  // namespace permora
