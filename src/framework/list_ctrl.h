// The list view: icons, small icons, list, or rows with columns.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

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
    kInfoTips = 4,   // shows the tips that kInfoTip handlers give
    kLabelTips = 8,  // shows a report's texts in full where they are cut (LVS_EX_LABELTIP)
};
constexpr ListStyle operator|(ListStyle one, ListStyle other) {
    return static_cast<ListStyle>(static_cast<unsigned int>(one) | static_cast<unsigned int>(other));
}

// Rows are counted from 0, as shown. Rows are cheap: 100,000 of them may be inserted one by one.
class CListCtrl : public CWnd {
  public:
    // A list as the child of `owner` that is not from a template.
    bool Create(CWnd& owner, DWORD style, const Rect& rect, unsigned int id);

    void InsertColumn(int column, const std::string& header, int width);  // pixels; left-aligned
    void SetColumnText(int column, const std::string& header);
    void SetExtendedStyle(ListStyle style);
    void SetImageList(const CImageList& images, ImageListKind kind);
    void SetView(ListView view);
    ListView GetView() const;

    // Inserts a row before `row` (at the end when it is the count). False when `row` is out of range.
    bool InsertItem(int row, const std::string& text, int image = -1);
    bool SetItemText(int row, int column, const std::string& text);
    std::string GetItemText(int row, int column) const { return Rows().Text(row, column); }
    bool SetItemData(int row, std::intptr_t data);
    std::intptr_t GetItemData(int row) const { return Rows().Data(row); }
    bool DeleteItem(int row);
    bool DeleteAllItems();
    int GetItemCount() const { return Rows().Count(); }

    int GetSelectedCount() const { return Rows().SelectedCount(); }
    bool IsSelected(int row) const { return Rows().IsSelected(row); }
    // In a single-selection list selecting a row unselects the one before. Sends kItemChanged when it
    // changes.
    bool SetSelected(int row, bool selected);
    // First selected row at or after `from`; -1 when there is none.
    int NextSelected(int from) const { return Rows().NextSelected(from); }
    // The row that the user last clicked or moved to; -1: none.
    int GetSelectionMark() const { return Rows().cursor.mark; }
    void SetSelectionMark(int row);
    // Where the keyboard is within the list; -1: nowhere.
    int GetFocusedRow() const { return Rows().cursor.focus; }
    // Moves the keyboard to a row, which is brought into view. Neither selects nor marks it.
    void SetFocusedRow(int row);

    // Check boxes (ListStyle::kCheckBoxes). Setting sends kItemChanged when it changes something, as a click
    // does.
    bool GetCheck(int row) const { return Rows().IsChecked(row); }
    void SetCheck(int row, bool checked);

    // Stable; `isLess` compares item data.
    void SortItems(const std::function<bool(std::intptr_t, std::intptr_t)>& isLess);
    void EnsureVisible(int row);
    // Whether at least a part of the row can be seen without scrolling.
    bool IsItemVisible(int row) const;

  private:
    const ListRows& Rows() const;  // none while there is no window
};

}  // namespace permora
