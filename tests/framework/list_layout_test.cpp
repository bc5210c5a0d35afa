#include "framework/list_layout.h"

#include <gtest/gtest.h>

namespace permora {
namespace {

// Ten rows in cells of 50 x 20, seen through 170 x 90: three cells side by side, four below each other.
ListLayout TenRows(ListView view) {
    return {view, 10, {50, 20}, {170, 90}};
}

TEST(ListLayout, FindsEveryRowAtItsCellAndNothingBeside) {
    for (const ListView view :
         {ListView::kIcons, ListView::kSmallIcons, ListView::kList, ListView::kReport}) {
        const ListLayout layout = TenRows(view);
        for (int row = 0; row < 10; ++row) {
            const Rect cell = layout.Cell(row);
            EXPECT_EQ(layout.RowAt({cell.left, cell.top}), row);
            EXPECT_EQ(layout.RowAt({cell.right - 1, cell.bottom - 1}), row);
            const RowRange range = layout.RowsIn(cell);
            EXPECT_TRUE(range.first <= row && row < range.last);
        }
        const Size content = layout.ContentSize();
        EXPECT_EQ(layout.RowAt({content.cx, content.cy}), -1);
        EXPECT_EQ(layout.RowAt({-1, 0}), -1);
        const RowRange all = layout.RowsIn({-100, -100, 1000, 1000});
        EXPECT_EQ(all.first, 0);
        EXPECT_EQ(all.last, 10);
    }
    EXPECT_EQ(TenRows(ListView::kIcons).RowAt({60, 65}), -1) << "after the last icon of the last line";
    EXPECT_EQ(TenRows(ListView::kList).RowAt({110, 45}), -1) << "below the last row of the last column";
}

TEST(ListLayout, StepsLeadToTheNeighbourOrStay) {
    struct Case {
        ListView view;
        int row;
        ListStep step;
        int target;
    };
    for (const Case& each : {Case{ListView::kReport, 4, ListStep::kDown, 5},
                             {ListView::kReport, 4, ListStep::kLeft, 4},
                             {ListView::kReport, 9, ListStep::kDown, 9},
                             {ListView::kReport, 0, ListStep::kPageDown, 3},
                             {ListView::kReport, 1, ListStep::kPageUp, 0},
                             {ListView::kIcons, 4, ListStep::kDown, 7},
                             {ListView::kIcons, 8, ListStep::kDown, 8},
                             {ListView::kIcons, 4, ListStep::kLeft, 3},
                             {ListView::kList, 4, ListStep::kDown, 5},
                             {ListView::kList, 4, ListStep::kRight, 8},
                             {ListView::kList, 2, ListStep::kLeft, 2},
                             {ListView::kList, 2, ListStep::kEnd, 9},
                             {ListView::kIcons, 5, ListStep::kHome, 0}}) {
        EXPECT_EQ(TenRows(each.view).Neighbour(each.row, each.step), each.target)
            << static_cast<int>(each.view) << ' ' << each.row << ' ' << static_cast<int>(each.step);
    }
    EXPECT_EQ(ListLayout(ListView::kReport, 0, {50, 20}, {10, 10}).Neighbour(-1, ListStep::kEnd), -1);
}

TEST(ListLayout, AWindowSmallerThanACellStillShowsRowsOneByOne) {
    const ListLayout layout(ListView::kIcons, 3, {50, 20}, {10, 5});
    EXPECT_EQ(layout.ContentSize(), (Size{50, 60}));
    EXPECT_EQ(layout.Neighbour(0, ListStep::kPageDown), 1);
}

}  // namespace
}  // namespace permora
