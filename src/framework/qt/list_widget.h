// The widget of a list view: lays the rows out, scrolls, and turns the mouse and the keyboard into selection.
#pragma once

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QElapsedTimer>
#include <memory>
#include <optional>
#include <vector>

#include "framework/list_layout.h"
#include "framework/list_native.h"
#include "framework/list_selection.h"
#include "framework/qt/list_header.h"

namespace permora::qt {

class ListWidget : public QAbstractScrollArea, public ListDisplay {
  public:
    explicit ListWidget(QWidget* parent);

    // Shows `list`, whose native half owns this widget.
    void Show(CListCtrl& list);
    CListCtrl* List() const { return list; }

    // Rows are laid out again before the next painting or query, however many changed.
    void RowsChanged() override;
    void RowTextChanged(int row) override;
    void RowStateChanged(int row) override;
    void AppearanceChanged() override;
    void FocusRowChanged(int before) override;
    void EnsureVisible(int row) override;
    bool IsInView(int row) override;

    // Where the row is seen, in the viewport; may lie outside.
    QRect CellInViewport(int row);
    // Of its parts: the one on which a click is a click on the row, and the check box, if it has one.
    QRect HotPartInViewport(int row);
    QRect CheckBoxInViewport(int row);
    // The row whose picture or text is there; -1: none.
    int HitRow(const QPoint& viewportPoint);

  protected:
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

  private:
    // A frame that the user draws with the mouse, in the coordinates of the whole content, which begin where
    // its rows do: at the right, where the layout goes from right to left.
    struct Band {
        BandSelection selection;
        QPoint start;
        QPoint end;
    };
    // A pressed mouse button, until its release.
    struct Press {
        Qt::MouseButton button = Qt::NoButton;
        int row = -1;
        bool selectsOnRelease = false;  // a row of several selected ones was pressed
    };

    void MarkForLayout();
    std::vector<int> ColumnTexts() const;
    void LayOut();
    void LayOutHeader();
    void SetScrollRanges(const QSize& client);
    QPoint ScrollOffset() const;
    QPoint ContentPoint(const QPoint& viewportPoint) const;
    QRect InViewport(const QRect& content) const;
    QRect MirroredCell(int row);  // as the painter has it
    QPoint MirroredPoint(const QPoint& viewportPoint) const;
    void Update(int row);
    void PaintEmptyText(QPainter& painter) const;
    void ShowTip(const QPoint& viewportPoint, const QPoint& globalPoint);
    bool IsOnCheckBox(int row, const QPoint& viewportPoint);
    Point ClientPoint(const QPoint& viewportPoint) const;

    void PressLeft(int row, const QPoint& viewportPoint, SelectMode mode);
    void PressRight(int row);
    void MoveBand(const QPoint& viewportPoint);
    void ScrollForBand();
    void EndBand();
    std::vector<int> RowsInBand(const QRect& frame) const;

    void ReportMenuKey();
    bool MoveByKey(int key, SelectMode mode);
    void SearchFor(const QString& typed);

    CListCtrl* list = nullptr;
    ListHeader* header = nullptr;  // a child widget
    ListLayout layout;
    bool needsLayout = true;
    bool hasOtherRows = false;  // since the last layout
    Press press;
    std::optional<Band> band;
    QBasicTimer bandScroll;  // runs while a frame is drawn beyond the edge
    QString searched;        // what was typed without a pause
    QElapsedTimer sinceTyped;
};

std::unique_ptr<NativeWindow> MakeListView(CListCtrl& list, CWnd& parent, const ControlSpec& spec);

}  // namespace permora::qt
