#include "framework/list_rows.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace permora {
namespace {

ListRows RowsOf(const std::vector<std::string>& texts) {
    ListRows rows;
    for (const std::string& text : texts) {
        const int row = rows.Count();
        rows.Insert(row, text, -1, 1);
        rows.SetData(row, row);
    }
    return rows;
}

std::string Texts(const ListRows& rows) {
    std::string texts;
    for (int row = 0; row < rows.Count(); ++row)
        texts += rows.Text(row, 0);
    return texts;
}

TEST(ListRows, TheCursorStaysWithItsRows) {
    ListRows rows = RowsOf({"a", "b", "c", "d"});
    rows.cursor = {2, 1, 0};
    rows.Insert(1, "new", -1, 1);
    EXPECT_EQ(rows.cursor.focus, 3);
    EXPECT_EQ(rows.cursor.mark, 2);
    EXPECT_EQ(rows.cursor.anchor, 0);
    rows.Delete(2);  // the mark's row
    EXPECT_EQ(rows.cursor.focus, 2);
    EXPECT_EQ(rows.cursor.mark, -1);
    rows.Delete(3);
    rows.Delete(2);  // the focus row, now the last one
    EXPECT_EQ(rows.cursor.focus, 1);
    rows.Clear();
    EXPECT_EQ(rows.cursor.focus, -1);
}

// Texts of a list that keeps none.
class Numbers : public ListTexts {
  public:
    std::string Text(std::intptr_t data, int column) const override {
        return std::to_string(data) + (column == 0 ? " " : "b ");
    }
    int Indent(std::intptr_t data) const override { return static_cast<int>(data); }
};

TEST(ListRows, AsksForTextsByTheDataOfRowsWhereverTheyAre) {
    ListRows rows;
    const Numbers numbers;
    rows.SetTexts(&numbers);
    rows.Append(2);
    rows.Append(2);
    rows.SetSelected(1, true);
    rows.Sort([](std::intptr_t one, std::intptr_t other) { return other < one; });
    EXPECT_EQ(Texts(rows), "3 2 1 0 ");
    EXPECT_EQ(rows.Text(0, 1), "3b ");
    EXPECT_EQ(rows.Indent(0), 3);
    EXPECT_EQ(rows.NextSelected(0), 2);
    EXPECT_EQ(rows.Text(4, 0), "");
}

TEST(ListRows, SortingIsStableMovesEveryStateAndReadsTheOldOrder) {
    ListRows rows = RowsOf({"bb", "a", "cc", "d"});
    rows.SetChecked(0, true);
    rows.SetSelected(2, true);
    rows.cursor = {3, 0, 1};
    rows.Sort([&](std::intptr_t one, std::intptr_t other) {
        return rows.Text(static_cast<int>(one), 0).size() < rows.Text(static_cast<int>(other), 0).size();
    });
    EXPECT_EQ(Texts(rows), "adbbcc");
    EXPECT_TRUE(rows.IsChecked(2));
    EXPECT_EQ(rows.Data(2), 0);
    EXPECT_EQ(rows.cursor.focus, 1);
    EXPECT_EQ(rows.cursor.mark, 2);
    EXPECT_EQ(rows.cursor.anchor, 0);
    EXPECT_EQ(rows.NextSelected(0), 3);
    rows.Delete(3);
    EXPECT_EQ(rows.SelectedCount(), 0);
}

}  // namespace
}  // namespace permora
