// The order of a page's rows.
#include "results/result_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace permora {
namespace {

class Page : public ResultPage {
  public:
    std::string Title() const override { return "&Page"; }
    std::span<const ResultColumn> Columns() const override { return kColumns; }
    std::size_t Count() const override { return kNames.size(); }
    std::string Text(std::size_t row, std::size_t /*column*/) const override { return kNames.at(row); }
    std::optional<ResultObject> Object(std::size_t /*row*/) const override { return {}; }

  private:
    static constexpr std::array<ResultColumn, 2> kColumns = {
        {{"Name", 1}, {"Path", 1, ColumnOrder::kArrival}}};
    static constexpr std::array<const char*, 4> kNames = {"b", "A", "c", "a"};
};

TEST(ResultOrder, IsStableInBothDirectionsAndThatOfArrivalForPaths) {
    const Page page;
    const auto sorted = [&](std::size_t column, ResultDirection direction) {
        std::array<std::intptr_t, 4> rows = {0, 1, 2, 3};
        std::ranges::stable_sort(rows, OrderOfPage(page, column, direction));
        std::string text;
        for (const std::intptr_t row : rows)
            text += std::to_string(row);
        return text;
    };
    EXPECT_EQ(sorted(0, ResultDirection::kUp), "1302");
    EXPECT_EQ(sorted(0, ResultDirection::kDown), "2013");
    EXPECT_EQ(sorted(1, ResultDirection::kUp), "0123");
    EXPECT_EQ(sorted(1, ResultDirection::kDown), "3210");
}

}  // namespace
}  // namespace permora
