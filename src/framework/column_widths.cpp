#include "framework/column_widths.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace permora {
namespace {

int Total(std::span<const ColumnNeed> columns) {
    return std::accumulate(columns.begin(), columns.end(), 0,
                           [](int sum, const ColumnNeed& column) { return sum + column.width; });
}

int FullWidth(const ColumnNeed& column) {
    return std::max(column.given, column.text);
}

// Widens the columns in `room` towards `wanted`: those first that lack least, so that few stay short of it.
template <class Wanted>
void Widen(std::span<ColumnNeed> columns, int room, const Wanted& wanted) {
    std::vector<ColumnNeed*> byLack;
    for (ColumnNeed& column : columns)
        byLack.push_back(&column);
    const auto lack = [&](const ColumnNeed* column) { return std::max(wanted(*column) - column->width, 0); };
    std::ranges::stable_sort(byLack, {}, lack);
    int spare = std::max(room - Total(columns), 0);
    int left = static_cast<int>(byLack.size());
    for (ColumnNeed* column : byLack) {
        const int more = std::min(lack(column), spare / left--);
        column->width += more;
        spare -= more;
    }
}

}  // namespace

void FitColumns(std::span<ColumnNeed> columns, int room) {
    if (columns.empty()) return;
    for (ColumnNeed& column : columns)
        column.width = columns.size() == 1 ? column.text : std::min(column.given, column.text);
    Widen(columns, room, [](const ColumnNeed& column) { return column.text; });
    Widen(columns, room, FullWidth);
    columns.back().width += std::max(room - Total(columns), 0);
}

}  // namespace permora
