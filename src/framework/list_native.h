// The seam of the list view: the shared half keeps the rows and reports changes; a back end shows them and
// reports the actions of the user.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "framework/list_ctrl.h"
#include "framework/list_rows.h"
#include "framework/native.h"

namespace permora {

struct ListColumn {
    std::string header;
    int width = 0;  // logical pixels; the back end keeps it when the user drags the header
};

class NativeListView : public NativeWindow {
  public:
    using NativeWindow::NativeWindow;

    // The contents. The back end reads them; rows are changed through the functions below.
    const ListRows& Rows() const { return rows; }
    const std::vector<ListColumn>& Columns() const { return columns; }
    bool HasStyle(ListStyle bit) const;
    bool IsSingleSelection() const;
    ListView View() const;
    const CImageList::Images* Images() const;  // those of the view; null: none given

    bool InsertRow(int row, const std::string& text, int image);
    bool SetRowText(int row, int column, const std::string& text);
    bool SetRowData(int row, std::intptr_t data) { return rows.SetData(row, data); }
    bool DeleteRow(int row);
    void DeleteAllRows();
    void SortRows(const std::function<bool(std::intptr_t, std::intptr_t)>& isLess);
    void InsertColumn(int column, const ListColumn& made);
    void SetColumnHeader(int column, const std::string& header);
    void SetColumnWidth(int column, int width);
    void SetListStyle(ListStyle style);
    void SetImages(const CImageList& images, ImageListKind kind);

    // Each sends kItemChanged for every row whose state changes, after the change. A handler may change
    // the list, but not destroy it. In a single-selection list the row selected before is unselected first.
    bool Select(int row, bool selected);
    bool Check(int row, bool checked);
    void SetCursor(const ListCursor& cursor);

    virtual void EnsureVisible(int row) = 0;
    virtual bool IsInView(int row) = 0;  // at least a part of it

    // Reports of the back end about actions of the user. True: a handler took it. A handler may destroy the
    // list.
    bool ReportRow(Notify code, int row, Point client);
    bool ReportKey(unsigned int virtualKey);
    void ReportColumnClick(int column);
    std::string AskInfoTip(int row);

  protected:
    // The back end must show these changes soon, but not at once: callers change many rows one after the
    // other.
    virtual void OnRowsChanged() = 0;  // their number or order
    virtual void OnRowTextChanged(int row) = 0;
    virtual void OnRowStateChanged(int row) = 0;  // selected or checked
    virtual void OnColumnsChanged() = 0;          // their number, headers or widths
    virtual void OnAppearanceChanged() = 0;       // view, images, check boxes
    virtual void OnFocusRowChanged(int /*before*/) = 0;

  private:
    void ReportItemChanged(int row);

    ListRows rows;
    std::vector<ListColumn> columns;
    ListStyle listStyle = ListStyle::kNone;
    std::shared_ptr<CImageList::Images> normalImages;
    std::shared_ptr<CImageList::Images> smallImages;
};

// Made by the back end; `spec` is of the kind kListView.
std::unique_ptr<NativeWindow> MakeNativeListView(CWnd& window, CWnd& parent, const ControlSpec& spec);

}  // namespace permora
