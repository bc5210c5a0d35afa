#include "framework/column_widths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace permora {
namespace {

TEST(ColumnWidths, FollowTheTextsWhereThereIsRoom) {
    struct Case {
        const char* what;
        std::vector<ColumnNeed> columns;  // given, text
        int room;
        std::vector<int> widths;
    };
    for (Case each :
         {Case{"the last one takes the rest", {{60, 40}, {120, 170}, {100, 90}}, 500, {60, 170, 270}},
          {"empty space goes first", {{60, 40}, {120, 170}, {100, 90}}, 310, {45, 170, 95}},
          {"then the longest is cut", {{60, 40}, {120, 400}, {100, 150}}, 400, {40, 210, 150}},
          {"what lacks little is whole", {{60, 70}, {60, 300}, {60, 300}}, 270, {70, 100, 100}},
          {"the rest is scrolled", {{60, 40}, {120, 170}, {100, 150}}, 50, {40, 120, 100}},
          {"a sole one is scrolled whole", {{500, 900}}, 300, {900}},
          {"and is no wider than the list", {{500, 90}}, 300, {300}},
          {"no columns", {}, 300, {}}}) {
        FitColumns(each.columns, each.room);
        std::vector<int> widths;
        for (const ColumnNeed& column : each.columns)
            widths.push_back(column.width);
        EXPECT_EQ(widths, each.widths) << each.what;
    }
}

}  // namespace
}  // namespace permora
