#include "framework/list_rows.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace permora {
namespace {

void MoveForInsertion(int& place, int row) {
    if (place >= row) ++place;
}

void MoveForDeletion(int& place, int row) {
    if (place == row)
        place = -1;
    else if (place > row)
        --place;
}

}  // namespace

bool ListRows::Insert(int row, const std::string& text, int image, int columns) {
    if (row < 0 || row > Count()) return false;
    Row made;
    made.texts.reserve(static_cast<std::size_t>(std::max(columns, 1)));
    made.texts.push_back(text);
    made.image = image;
    rows.insert(rows.begin() + row, std::move(made));
    MoveForInsertion(cursor.focus, row);
    MoveForInsertion(cursor.mark, row);
    MoveForInsertion(cursor.anchor, row);
    NoteLength(text);
    return true;
}

void ListRows::Append(int count) {
    for (int i = 0; i < count; ++i)
        rows.push_back({.texts = {}, .data = Count()});
}

bool ListRows::Delete(int row) {
    if (!Has(row)) return false;
    if (At(row).isSelected) --selectedCount;
    rows.erase(rows.begin() + row);
    if (rows.empty()) {
        Clear();
        return true;
    }
    const bool hadFocus = cursor.focus == row;
    MoveForDeletion(cursor.focus, row);
    MoveForDeletion(cursor.mark, row);
    MoveForDeletion(cursor.anchor, row);
    if (hadFocus) cursor.focus = std::min(row, Count() - 1);  // the keyboard goes on where it was
    return true;
}

void ListRows::Clear() {
    rows.clear();
    selectedCount = 0;
    longest.clear();
    cursor = {};
}

bool ListRows::SetText(int row, int column, const std::string& text) {
    if (!Has(row) || column < 0) return false;
    std::vector<std::string>& texts = At(row).texts;
    const auto index = static_cast<std::size_t>(column);
    if (index >= texts.size()) texts.resize(index + 1);
    if (texts[index] == text) return false;
    texts[index] = text;
    if (column == 0) NoteLength(text);
    return true;
}

std::string ListRows::Text(int row, int column) const {
    if (!Has(row) || column < 0) return {};
    if (foreignTexts != nullptr && column >= firstForeignColumn) return foreignTexts->Text(Data(row), column);
    const std::vector<std::string>& texts = At(row).texts;
    const auto index = static_cast<std::size_t>(column);
    return index < texts.size() ? texts[index] : std::string();
}

bool ListRows::SetData(int row, std::intptr_t data) {
    if (!Has(row)) return false;
    At(row).data = data;
    return true;
}

bool ListRows::SetSelected(int row, bool selected) {
    if (!Has(row) || At(row).isSelected == selected) return false;
    At(row).isSelected = selected;
    selectedCount += selected ? 1 : -1;
    return true;
}

int ListRows::NextSelected(int from) const {
    if (selectedCount == 0) return -1;
    for (int row = std::max(from, 0); row < Count(); ++row)
        if (At(row).isSelected) return row;
    return -1;
}

bool ListRows::SetChecked(int row, bool checked) {
    if (!Has(row) || At(row).isChecked == checked) return false;
    At(row).isChecked = checked;
    return true;
}

void ListRows::Sort(const std::function<bool(std::intptr_t, std::intptr_t)>& isLess) {
    std::vector<int> order(rows.size());  // the old place of each new row
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](int one, int other) { return isLess(At(one).data, At(other).data); });
    std::deque<Row> sorted;
    ListCursor moved;
    for (int place = 0; place < Count(); ++place) {
        const int old = order[static_cast<std::size_t>(place)];
        if (cursor.focus == old) moved.focus = place;
        if (cursor.mark == old) moved.mark = place;
        if (cursor.anchor == old) moved.anchor = place;
        sorted.push_back(std::move(At(old)));
    }
    rows = std::move(sorted);
    cursor = moved;
}

void ListRows::NoteLength(const std::string& text) {
    if (text.size() > longest.size()) longest = text;
}

}  // namespace permora
