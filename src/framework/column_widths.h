// How wide the columns of a report are: as wide as their texts where there is room.
#pragma once

#include <span>

namespace permora {

// In logical pixels.
struct ColumnNeed {
    int given = 0;  // what the list was made with: the least where there is room
    int text = 0;   // the widest text together with the header
    int width = 0;  // the result
};

// Sets the widths. In `room`, each column is at least as wide as given and as its text, and the last one
// takes what is left. Where that does not fit, empty space goes first; then the columns with the longest
// texts are cut, down to the given widths. What needs more room than that is scrolled; a sole column is never
// cut.
void FitColumns(std::span<ColumnNeed> columns, int room);

}  // namespace permora
