// How one row of a list view looks, in each of its views.
#pragma once

#include <QAbstractScrollArea>
#include <QPainter>
#include <QRect>

#include "framework/list_ctrl.h"

namespace permora::qt {

// Made for one layout, painting or query; both arguments must outlive it. All rectangles and points are in
// the viewport, from the side where its rows begin: the right one, where the layout goes from right to left.
class ListPainter {
  public:
    ListPainter(const QAbstractScrollArea& widget, const CListCtrl& list);

    // The size of the cells, when `available` is the visible area.
    QSize CellSize(const QSize& available) const;
    // The room that the texts of a report's column need; in long lists, those of the first rows.
    int ColumnTextWidth(int column) const;
    void Paint(QPainter& painter, int row, const QRect& cell) const;
    void PaintFocus(QPainter& painter, const QRect& rect) const;
    // The parts of a cell. A click on the hot part is a click on the row.
    QRect CheckBox(const QRect& cell) const;  // empty when there are no check boxes
    QRect HotPart(int row, const QRect& cell) const;
    // The text of the report's column at `x` when it is cut there; else empty.
    QString CutText(int row, const QRect& cell, int x) const;

  private:
    struct Parts {
        QRect check;
        QRect icon;
        QRect label;  // the room for the text
    };
    Parts PartsOf(const QRect& cell) const;
    QRect LabelOf(int row, const QRect& cell) const;
    QSize CheckSize() const;
    QSize IconSize() const;
    int RowHeight() const;
    int WidestLabel() const;
    int FirstColumnWidth(const QRect& cell) const;
    QRect TextRect(int row, const QRect& label) const;
    QRect Mirrored(const QRect& rect) const;  // to where it is painted
    bool ShowsSelection() const;
    bool HasInactiveColour() const;
    QPalette::ColorGroup ColourGroup() const;
    QString Text(int row, int column) const;

    void PaintCheckBox(QPainter& painter, int row, const QRect& rect) const;
    void PaintIcon(QPainter& painter, int row, const QRect& rect) const;
    void PaintSelection(QPainter& painter, const QRect& rect) const;
    enum class Ground { kPlain, kSelected };  // on which a text stands
    void PaintLine(QPainter& painter, const QRect& room, const QString& text, Qt::AlignmentFlag side,
                   Ground ground) const;
    void PaintWrapped(QPainter& painter, const QRect& rect, const QString& text, Ground ground) const;
    void PaintOtherColumns(QPainter& painter, int row, const QRect& cell, bool isHighlighted) const;
    void SetTextColour(QPainter& painter, bool isHighlighted) const;

    const QAbstractScrollArea& widget;
    const CListCtrl& list;
    ListView view;
};

}  // namespace permora::qt
