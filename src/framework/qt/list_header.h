// The column headers of a report.
#pragma once

#include <QAbstractTableModel>
#include <QHeaderView>

#include "framework/list_ctrl.h"

namespace permora::qt {

// Shows the headers of a list's columns. The user's dragging changes the columns' widths.
class ListHeader : public QHeaderView {
  public:
    ListHeader(CListCtrl& list, QWidget* parent);
    ~ListHeader() override;
    // The list's columns or its style changed.
    void Refresh();
    // How much room the column's text needs.
    int TextWidth(int column) const { return sectionSizeFromContents(column).width(); }

  protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    class Model : public QAbstractTableModel {
      public:
        explicit Model(const CListCtrl& shown) : list(shown) {}
        int rowCount(const QModelIndex& /*parent*/) const override { return 0; }
        int columnCount(const QModelIndex& parent) const override;
        QVariant data(const QModelIndex& /*index*/, int /*role*/) const override { return {}; }
        QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
        void Reset();

      private:
        const CListCtrl& list;
    };

    CListCtrl& list;
    Model model;
    bool isRefreshing = false;
};

}  // namespace permora::qt
