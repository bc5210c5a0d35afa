#include "framework/list_selection.h"

#include <algorithm>

namespace permora {
namespace {

enum class Others { kUnselect, kKeep };

// Handlers run between the changes and may change the list, so nothing is kept across a call.
void SelectRange(CListCtrl& list, int one, int other, Others others) {
    const auto [first, last] = std::minmax(one, other);
    if (others == Others::kUnselect) {
        for (int row = list.Rows().NextSelected(0); row >= 0; row = list.Rows().NextSelected(row + 1))
            if (row < first || row > last) list.SetSelected(row, false);
    }
    for (int row = first; row <= last && list.Rows().Has(row); ++row)
        list.SetSelected(row, true);
}

void ExtendTo(CListCtrl& list, int row, Others others) {
    ListCursor cursor = list.Rows().cursor;
    if (!list.Rows().Has(cursor.anchor)) cursor.anchor = row;
    list.SetCursor({row, row, cursor.anchor});
    SelectRange(list, cursor.anchor, row, others);
}

SelectMode Allowed(const CListCtrl& list, SelectMode mode) {
    const bool isRange = mode == SelectMode::kExtend || mode == SelectMode::kAddRange;
    return list.IsSingleSelection() && isRange ? SelectMode::kReplace : mode;
}

}  // namespace

void SelectOnly(CListCtrl& list, int row) {
    SelectRange(list, row, row, Others::kUnselect);
}

void SelectByClick(CListCtrl& list, int row, SelectMode wanted) {
    const SelectMode mode = Allowed(list, wanted);
    if (!list.Rows().Has(row)) {
        if (mode == SelectMode::kReplace) SelectOnly(list, -1);
        return;
    }
    if (mode == SelectMode::kExtend || mode == SelectMode::kAddRange) {
        ExtendTo(list, row, mode == SelectMode::kExtend ? Others::kUnselect : Others::kKeep);
        return;
    }
    list.SetCursor({row, row, row});
    if (mode == SelectMode::kToggle)
        list.SetSelected(row, !list.Rows().IsSelected(row));
    else
        SelectOnly(list, row);
}

void SelectByMove(CListCtrl& list, int row, SelectMode wanted) {
    if (!list.Rows().Has(row)) return;
    const SelectMode mode = Allowed(list, wanted);
    if (mode == SelectMode::kToggle)
        list.SetCursor({row, row, list.Rows().cursor.anchor});
    else
        SelectByClick(list, row, mode);
}

void PressSpace(CListCtrl& list, SelectMode mode) {
    const int focus = list.Rows().cursor.focus;
    if (!list.Rows().Has(focus)) return;
    if (!list.HasExtendedStyle(ListStyle::kCheckBoxes) || list.HasExtendedStyle(ListStyle::kFixedMarks)) {
        SelectByClick(list, focus, mode);
        return;
    }
    const bool checked = !list.Rows().IsChecked(focus);
    const bool isOneOfSelected = list.Rows().IsSelected(focus);
    list.SetCheck(focus, checked);
    if (!isOneOfSelected) return;
    for (int row = list.Rows().NextSelected(0); row >= 0; row = list.Rows().NextSelected(row + 1))
        list.SetCheck(row, checked);
}

void ToggleCheck(CListCtrl& list, int row) {
    if (!list.Rows().Has(row)) return;
    list.SetCursor({row, row, row});
    if (!list.HasExtendedStyle(ListStyle::kFixedMarks)) list.SetCheck(row, !list.Rows().IsChecked(row));
}

BandSelection::BandSelection(CListCtrl& shown, SelectMode wanted) : list(shown), mode(wanted) {
    if (mode == SelectMode::kReplace) SelectOnly(list, -1);
    for (int row = list.Rows().NextSelected(0); row >= 0; row = list.Rows().NextSelected(row + 1))
        before.push_back(row);
}

bool BandSelection::WasSelected(int row) const {
    return std::binary_search(before.begin(), before.end(), row);
}

void BandSelection::Update(const std::vector<int>& touched) {
    for (const int row : inside)
        if (!std::binary_search(touched.begin(), touched.end(), row)) list.SetSelected(row, WasSelected(row));
    for (const int row : touched)
        list.SetSelected(row, mode != SelectMode::kToggle || !WasSelected(row));
    inside = touched;
}

}  // namespace permora
