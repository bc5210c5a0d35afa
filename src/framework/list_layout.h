// Positions of the rows of a list view. All cells of a view have one size, so that no position is stored and
// each is found in constant time.
#pragma once

#include "framework/geometry.h"
#include "framework/list_ctrl.h"

namespace permora {

// The direction in which the keyboard moves from a row.
enum class ListStep { kUp, kDown, kLeft, kRight, kPageUp, kPageDown, kHome, kEnd };

// The cells with `first` up to and without `last`.
struct RowRange {
    int first = 0;
    int last = 0;
};

class ListLayout {
  public:
    ListLayout() = default;
    // `cell` is the size of one row, at least one pixel each way; `client` is the visible area.
    ListLayout(ListView view, int count, Size cell, Size client);

    Size ContentSize() const;
    // In the coordinates of the whole content.
    Rect Cell(int row) const;
    int RowAt(Point point) const;  // -1: beside all cells
    // All rows whose cells meet `area`; with cells in several columns perhaps some more.
    RowRange RowsIn(const Rect& area) const;
    // The row to which `step` leads; `row` itself when it leads nowhere.
    int Neighbour(int row, ListStep step) const;

  private:
    bool FillsDown() const { return view == ListView::kList; }  // the others fill their lines from the left
    int PageStep() const;

    ListView view = ListView::kReport;
    int count = 0;
    Size cell{1, 1};
    Size client;
    int lineLength = 1;  // cells side by side before the next line (or column) begins
};

}  // namespace permora
