#include "browser/row_order.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "browser/list_presentation.h"

namespace permora {
namespace {

using testing::ElementsAre;
using Texts = std::vector<std::string>;

Texts Sorted(int column, const Texts& texts) {
    std::vector<std::intptr_t> rows(texts.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i] = static_cast<std::intptr_t>(i);
    std::ranges::stable_sort(rows, OrderByColumn(column, texts));
    Texts sorted;
    for (const std::intptr_t row : rows)
        sorted.push_back(texts[static_cast<std::size_t>(row)]);
    return sorted;
}

TEST(RowOrder, NamesAreComparedByBytesWhateverTheirCase) {
    EXPECT_THAT(Sorted(kNameColumn, {"я", "é", "b", "B", "a", "_", "Z", "а", "É", "a1", "𐐨", "Я", ""}),
                ElementsAre("", "a", "a1", "b", "B", "Z", "_", "é", "É", "а", "я", "Я", "𐐨"));
}

TEST(RowOrder, SizesAreComparedByTheirNumbersAlone) {
    EXPECT_THAT(Sorted(kSizeColumn, {"900 KB", "12 MB", "", "1023 Bytes", "5 MB", "100 KB"}),
                ElementsAre("", "5 MB", "12 MB", "100 KB", "900 KB", "1023 Bytes"));
}

TEST(RowOrder, TimesCountMonthsOfThirtyDays) {
    EXPECT_THAT(Sorted(kModifiedColumn, {"1:2:2010  0:9", "30:1:2010  0:9", "31:1:2010  0:9", "1:1:2011  0:0",
                                         "1:1:2010  59:8", "1:1:2010  0:9", ""}),
                ElementsAre("", "1:1:2010  59:8", "1:1:2010  0:9", "30:1:2010  0:9", "1:2:2010  0:9",
                            "31:1:2010  0:9", "1:1:2011  0:0"));
}

}  // namespace
}  // namespace permora
