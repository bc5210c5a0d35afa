// The list view: icons, small icons, list, or rows with columns.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "framework/images.h"
#include "framework/list_rows.h"
#include "framework/window.h"

namespace permora {

enum class ListView { kIcons, kSmallIcons, kList, kReport };
enum class ImageListKind { kNormal, kSmall };

// Extended styles, combinable.
enum class ListStyle : unsigned int {
    kNone = 0,
    kFullRowSelect = 1,
    kCheckBoxes = 2,
    kInfoTips = 4,      // shows the tips that kInfoTip handlers give
    kLabelTips = 8,     // shows a report's texts in full where they are cut (LVS_EX_LABELTIP)
    kFixedMarks = 16,   // with kCheckBoxes: the user reads the marks and cannot change them
    kGivenWidths = 32,  // a report's columns keep the widths that they were given
};
constexpr ListStyle operator|(ListStyle one, ListStyle other) {
    return static_cast<ListStyle>(static_cast<unsigned int>(one) | static_cast<unsigned int>(other));
}

enum class SortOrder { kUp, kDown };

struct ListColumn {
    std::string header;  // left-aligned
    int given = 0;       // logical pixels
    int width = 0;       // as it is shown
};

class ListDisplay;
class NativeListView;

// Rows are counted from 0, as shown. Rows are cheap: 100,000 of them may be inserted one by one. The columns
// of a report follow their texts (column_widths.h) until the user drags one.
class CListCtrl : public CWnd {
  public:
    CListCtrl() = default;
    ~CListCtrl() override { DestroyWindow(); }

    // A list as the child of `owner` that is not from a template.
    bool Create(CWnd& owner, DWORD style, const Rect& rect, unsigned int id);

    void InsertColumn(int column, const std::string& header, int width);
    // The rows keep texts of their own under the columns' numbers.
    void DeleteColumn(int column);
    void SetColumnText(int column, const std::string& header);
    // The mark in the header of the column that the rows are sorted by; -1: none.
    void ShowSortMark(int column, SortOrder order);
    void SetExtendedStyle(ListStyle style);
    void SetImageList(const CImageList& images, ImageListKind kind);
    void SetView(ListView view);
    ListView GetView() const;

    // Inserts a row before `row` (at the end when it is the count). False when `row` is out of range.
    bool InsertItem(int row, const std::string& text, int image = -1);
    // For texts that are not known, or not kept, before they are seen: those of `firstColumn` and the columns
    // behind it come from `texts`, which outlives the window or is replaced before its end. Null: the list
    // keeps them.
    void SetTexts(const ListTexts* texts, int firstColumn = 0) { rows.SetTexts(texts, firstColumn); }
    // Rows at the end, whose data is their number.
    void AppendItems(int count);
    bool SetItemText(int row, int column, const std::string& text);
    std::string GetItemText(int row, int column) const { return rows.Text(row, column); }
    bool SetItemData(int row, std::intptr_t data) { return rows.SetData(row, data); }
    std::intptr_t GetItemData(int row) const { return rows.Data(row); }
    bool DeleteItem(int row);
    bool DeleteAllItems();  // false without a window
    int GetItemCount() const { return rows.Count(); }

    // What stands in the place of the rows while there are none; assistive technology reads it.
    void SetEmptyText(const std::string& text);

    int GetSelectedCount() const { return rows.SelectedCount(); }
    bool IsSelected(int row) const { return rows.IsSelected(row); }
    // In a single-selection list selecting a row unselects the one before. Sends kItemChanged after each
    // row's change. A handler may change the list, but not destroy it; the same holds for SetCheck.
    bool SetSelected(int row, bool selected);
    // First selected row at or after `from`; -1 when there is none.
    int NextSelected(int from) const { return rows.NextSelected(from); }
    // The row that the user last clicked or moved to; -1: none.
    int GetSelectionMark() const { return rows.cursor.mark; }
    void SetSelectionMark(int row);
    // Where the keyboard is within the list; -1: nowhere.
    int GetFocusedRow() const { return rows.cursor.focus; }
    // Moves the keyboard to a row, which is brought into view. Neither selects nor marks it.
    void SetFocusedRow(int row);

    // Check boxes (ListStyle::kCheckBoxes). Setting sends kItemChanged when it changes something, as a click
    // does.
    bool GetCheck(int row) const { return rows.IsChecked(row); }
    void SetCheck(int row, bool checked);

    // Stable; `isLess` compares item data.
    void SortItems(const std::function<bool(std::intptr_t, std::intptr_t)>& isLess);
    void EnsureVisible(int row);
    // Whether at least a part of the row can be seen without scrolling.
    bool IsItemVisible(int row) const;

    // ---- For the back end, which shows the list and reports the actions of the user ----

    const ListRows& Rows() const { return rows; }
    const std::vector<ListColumn>& Columns() const { return columns; }
    // Empty while there are rows.
    std::string EmptyText() const { return rows.Count() == 0 ? emptyText : std::string(); }
    int SortedColumn() const { return sortedColumn; }  // -1: no header has a mark
    SortOrder Sorting() const { return sortOrder; }
    bool HasExtendedStyle(ListStyle bit) const;
    bool IsSingleSelection() const;
    const CImageList::Images* Images() const;  // those of the view; null: none given
    // The user's own width: from now on all columns keep theirs, until FitColumnsAgain.
    void SetColumnWidth(int column, int width);
    void FitColumnsAgain();
    bool FitsColumns() const { return !hasOwnWidths && !HasExtendedStyle(ListStyle::kGivenWidths); }
    // Fits the columns, whose widest texts are `texts`, into `room`. Does not show it.
    void FitColumnsTo(std::span<const int> texts, int room);
    void SetCursor(const ListCursor& cursor);

    // True: a handler took it. A handler may destroy the list.
    bool ReportRow(Notify code, int row, Point client);
    bool ReportKey(unsigned int virtualKey);
    void ReportColumnClick(int column);
    void ReportHeaderMenu(Point client);
    std::string AskInfoTip(int row);

  protected:
    void OnDestroy() override;  // the contents go with the window

  private:
    NativeListView& Native() const;  // only while there is a window
    ListDisplay& Display() const;    // as above
    bool HasColumn(int column) const;
    void ReportChangeOf(int row);

    ListRows rows;
    std::vector<ListColumn> columns;
    std::string emptyText;
    bool hasOwnWidths = false;
    int sortedColumn = -1;
    SortOrder sortOrder = SortOrder::kUp;
    ListStyle extendedStyle = ListStyle::kNone;
    std::shared_ptr<CImageList::Images> normalImages;
    std::shared_ptr<CImageList::Images> smallImages;
};

}  // namespace permora
