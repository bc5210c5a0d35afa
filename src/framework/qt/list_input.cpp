// The mouse and the keyboard in a list view.
#include <QApplication>
#include <QMouseEvent>
#include <QPointer>
#include <QScrollBar>
#include <QTextDocument>
#include <QToolTip>
#include <algorithm>

#include "framework/qt/list_keys.h"
#include "framework/qt/list_painter.h"
#include "framework/qt/list_widget.h"
#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

constexpr int kBandScrollMilliseconds = 30;

}  // namespace

void ListWidget::ShowTip(const QPoint& viewportPoint, const QPoint& globalPoint) {
    const int row = HitRow(viewportPoint);
    const QPointer<ListWidget> self(this);
    QString tip;
    if (row >= 0 && list->HasExtendedStyle(ListStyle::kLabelTips))
        tip = ListPainter(*this, *list).CutText(row, MirroredCell(row), MirroredPoint(viewportPoint).x());
    if (row >= 0 && tip.isEmpty() && list->HasExtendedStyle(ListStyle::kInfoTips))
        tip = ToQt(list->AskInfoTip(row));
    if (!self) return;
    if (tip.isEmpty()) {
        QToolTip::hideText();
        return;
    }
    // Names of files must not be taken for markup.
    QToolTip::showText(globalPoint, Qt::convertFromPlainText(tip, Qt::WhiteSpacePre), viewport(),
                       CellInViewport(row));
}

// ---- Mouse ----

void ListWidget::mousePressEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    const int row = HitRow(point);
    EndBand();
    press = {event->button(), row, false};
    if (event->button() == Qt::LeftButton) PressLeft(row, point, ModeOf(event->modifiers()));
    if (event->button() == Qt::RightButton) PressRight(row);
}

void ListWidget::PressLeft(int row, const QPoint& viewportPoint, SelectMode mode) {
    if (IsOnCheckBox(row, viewportPoint)) {
        ToggleCheck(*list, row);
        return;
    }
    if (row < 0 && !list->IsSingleSelection()) {
        const QPoint start = ContentPoint(viewportPoint);
        band.emplace(Band{BandSelection(*list, mode), start, start});
        return;
    }
    // If several rows are selected, all stay selected until the button is released.
    press.selectsOnRelease = mode == SelectMode::kReplace && list->Rows().IsSelected(row);
    if (press.selectsOnRelease)
        list->SetCursor({row, row, row});
    else
        SelectByClick(*list, row, mode);
}

void ListWidget::PressRight(int row) {
    if (list->Rows().IsSelected(row))
        list->SetCursor({row, row, row});
    else
        SelectByClick(*list, row, SelectMode::kReplace);
}

void ListWidget::mouseMoveEvent(QMouseEvent* event) {
    if (!band) return;
    const QPoint point = event->position().toPoint();
    MoveBand(point);
    if (viewport()->rect().contains(point))
        bandScroll.stop();
    else if (!bandScroll.isActive())
        bandScroll.start(kBandScrollMilliseconds, this);
}

void ListWidget::MoveBand(const QPoint& viewportPoint) {
    band->end = ContentPoint(viewportPoint);
    const std::vector<int> touched = RowsInBand(QRect(band->start, band->end).normalized());
    band->selection.Update(touched);
    viewport()->update();
}

std::vector<int> ListWidget::RowsInBand(const QRect& frame) const {
    std::vector<int> touched;
    const RowRange rows = layout.RowsIn(FromQt(frame));
    for (int row = rows.first; row < rows.last; ++row)
        if (ToQt(layout.Cell(row)).intersects(frame)) touched.push_back(row);
    return touched;
}

void ListWidget::ScrollForBand() {
    const QPoint point = viewport()->mapFromGlobal(QCursor::pos());
    const QRect seen = viewport()->rect();
    const auto beyond = [](int value, int first, int last) {
        return value < first ? value - first : std::max(value - last, 0);
    };
    QScrollBar& vertical = *verticalScrollBar();
    QScrollBar& horizontal = *horizontalScrollBar();
    vertical.setValue(vertical.value() + beyond(point.y(), seen.top(), seen.bottom()));
    horizontal.setValue(horizontal.value() + beyond(MirroredPoint(point).x(), seen.left(), seen.right()));
    if (band) MoveBand(point);
}

void ListWidget::timerEvent(QTimerEvent* event) {
    if (event->timerId() == bandScroll.timerId())
        ScrollForBand();
    else
        QAbstractScrollArea::timerEvent(event);
}

void ListWidget::EndBand() {
    bandScroll.stop();
    if (!band) return;
    band.reset();
    viewport()->update();
}

void ListWidget::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != press.button) return;
    Press released = press;
    const bool wasDrawn =
        band && (band->end - band->start).manhattanLength() >= QApplication::startDragDistance();
    press = {};
    EndBand();
    if (wasDrawn) return;
    if (released.selectsOnRelease) SelectOnly(*list, released.row);
    if (!list->Rows().Has(released.row)) released.row = -1;  // a handler took it away
    const Point point = ClientPoint(event->position().toPoint());
    if (released.button == Qt::LeftButton) list->ReportRow(Notify::kClick, released.row, point);
    if (released.button == Qt::RightButton) list->ReportRow(Notify::kRightClick, released.row, point);
}

void ListWidget::mouseDoubleClickEvent(QMouseEvent* event) {
    const QPoint point = event->position().toPoint();
    const int row = HitRow(point);
    if (event->button() != Qt::LeftButton || IsOnCheckBox(row, point)) {
        mousePressEvent(event);  // each click on a check box counts
        return;
    }
    press = {};
    list->ReportRow(Notify::kDoubleClick, row, ClientPoint(point));
}

void ListWidget::contextMenuEvent(QContextMenuEvent* event) {
    // The mouse button has already reported it.
    if (event->reason() == QContextMenuEvent::Keyboard) ReportMenuKey();
}

void ListWidget::ReportMenuKey() {
    const int row = list->Rows().cursor.focus;
    const QPoint point = row >= 0 ? CellInViewport(row).intersected(viewport()->rect()).center() : QPoint();
    list->ReportRow(Notify::kRightClick, row, ClientPoint(point));
}

// ---- Keyboard ----

void ListWidget::keyPressEvent(QKeyEvent* event) {
    // The toolkit does not map this to the menu key on every system.
    if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
        ReportMenuKey();
        return;
    }
    const QPointer<ListWidget> self(this);
    const unsigned int virtualKey = VirtualKeyOf(event->key());
    const bool isSearching = sinceTyped.isValid() && !searched.isEmpty() &&
                             sinceTyped.elapsed() < QApplication::keyboardInputInterval();
    // A space within a typed name must not act on the row.
    const bool isSpaceTyped = event->key() == Qt::Key_Space && isSearching;
    const bool isTaken = virtualKey != 0 && !isSpaceTyped && list->ReportKey(virtualKey);
    if (!self) return;
    const SelectMode mode = ModeOf(event->modifiers());
    if (MoveByKey(event->key(), mode)) return;
    if (event->key() == Qt::Key_Space && !isSpaceTyped) {
        PressSpace(*list, mode);
        return;
    }
    const bool isCommand =
        (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0;
    const QString text = event->text();
    if (!isCommand && !text.isEmpty() && text.at(0).isPrint()) {
        SearchFor(isSearching ? searched + text : text);
        return;
    }
    event->setAccepted(isTaken);  // Enter and Escape are the dialog's, where the program did not use them
}

bool ListWidget::MoveByKey(int key, SelectMode mode) {
    const auto step = StepOf(key, layoutDirection());
    if (!step) return false;
    LayOut();
    const int focus = list->Rows().cursor.focus;
    const int target = focus < 0 ? 0 : layout.Neighbour(focus, *step);
    SelectByMove(*list, target, mode);
    EnsureVisible(list->Rows().cursor.focus);
    return true;
}

// The next row that begins with the typed text. Typing one letter several times steps through its rows.
void ListWidget::SearchFor(const QString& typed) {
    searched = typed;
    sinceTyped.start();
    const int count = list->Rows().Count();
    if (count == 0) return;
    const bool isOneLetter = typed.count(typed.at(0), Qt::CaseInsensitive) == typed.size();
    const QString wanted = isOneLetter ? QString(typed.at(0)) : typed;
    const int first = std::max(list->Rows().cursor.focus, 0) + (isOneLetter ? 1 : 0);
    for (int i = 0; i < count; ++i) {
        const int row = (first + i) % count;
        if (!ToQt(list->Rows().Text(row, 0)).startsWith(wanted, Qt::CaseInsensitive)) continue;
        SelectByMove(*list, row, SelectMode::kReplace);
        EnsureVisible(row);
        return;
    }
}

}  // namespace permora::qt
