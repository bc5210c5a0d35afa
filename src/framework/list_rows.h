// The rows of a list view: texts, pictures, item data, check and selection states, without anything that
// shows them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace permora {

// Rows that the keyboard and the mouse work from; -1: none. They stay with their row when others come, go or
// are sorted.
struct ListCursor {
    int focus = -1;   // the row that has the focus within the list
    int mark = -1;    // the row that the user last clicked or moved to
    int anchor = -1;  // where a range that Shift extends begins
};

// Texts of rows that a list does not keep, by the rows' item data.
class ListTexts {
  public:
    virtual ~ListTexts() = default;
    virtual std::string Text(std::intptr_t data, int column) const = 0;
    // How many steps the first column's text stands to the right in a report.
    virtual int Indent(std::intptr_t /*data*/) const { return 0; }
};

// Rows are counted from 0. Setters return true when something changed. Rows and columns that do not exist are
// ignored.
class ListRows {
  public:
    int Count() const { return static_cast<int>(rows.size()); }
    bool Has(int row) const { return row >= 0 && row < Count(); }

    // Before `row`, at the end when it is the count. False when `row` is out of range. `columns` texts are
    // reserved.
    bool Insert(int row, const std::string& text, int image, int columns);
    // At the end, without texts. The data of each is its number.
    void Append(int count);
    bool Delete(int row);
    void Clear();

    bool SetText(int row, int column, const std::string& text);
    // The texts of `firstColumn` and the columns behind it come from `texts` from now on; null: from the rows
    // themselves.
    void SetTexts(const ListTexts* texts, int firstColumn = 0) {
        foreignTexts = texts;
        firstForeignColumn = firstColumn;
    }
    // Empty where nothing was set.
    std::string Text(int row, int column) const;
    int Indent(int row) const {
        return foreignTexts != nullptr && Has(row) ? foreignTexts->Indent(Data(row)) : 0;
    }
    int Image(int row) const { return Has(row) ? At(row).image : -1; }
    bool SetData(int row, std::intptr_t data);
    std::intptr_t Data(int row) const { return Has(row) ? At(row).data : 0; }

    bool SetSelected(int row, bool selected);
    bool IsSelected(int row) const { return Has(row) && At(row).isSelected; }
    int SelectedCount() const { return selectedCount; }
    int NextSelected(int from) const;  // -1: none at or after `from`

    bool SetChecked(int row, bool checked);
    bool IsChecked(int row) const { return Has(row) && At(row).isChecked; }

    // Stable. The rows can be read in their old order while `isLess` runs; it must not change them.
    void Sort(const std::function<bool(std::intptr_t, std::intptr_t)>& isLess);

    // The longest first-column text, by its bytes, that any row has had since the list was last empty.
    const std::string& LongestText() const { return longest; }

    ListCursor cursor;

  private:
    struct Row {
        std::vector<std::string> texts;
        std::intptr_t data = 0;
        int image = -1;
        bool isSelected = false;
        bool isChecked = false;
    };

    const Row& At(int row) const { return rows[static_cast<std::size_t>(row)]; }
    Row& At(int row) { return rows[static_cast<std::size_t>(row)]; }
    void NoteLength(const std::string& text);

    std::deque<Row> rows;  // long lists grow without being moved
    const ListTexts* foreignTexts = nullptr;
    int firstForeignColumn = 0;
    int selectedCount = 0;
    std::string longest;
};

}  // namespace permora
