#include "framework/qt/list_widget.h"

#include <QAccessible>
#include <QCoreApplication>
#include <QPaintEvent>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionRubberBand>
#include <algorithm>
#include <utility>

#include "framework/list_styles.h"
#include "framework/qt/list_accessible.h"
#include "framework/qt/list_painter.h"
#include "framework/qt/widget.h"

namespace permora::qt {

ListWidget::ListWidget(QWidget* parent) : QAbstractScrollArea(parent) {
    setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    viewport()->setAutoFillBackground(true);
    viewport()->setMouseTracking(false);
}

void ListWidget::Show(CListCtrl& shown) {
    InstallListAccessibility();
    list = &shown;
    header = new ListHeader(shown, this);
}

// ---- Changes ----

void ListWidget::MarkForLayout() {
    if (needsLayout) return;
    needsLayout = true;
    QCoreApplication::postEvent(this, new QEvent(QEvent::LayoutRequest));
    viewport()->update();
}

void ListWidget::RowsChanged() {
    EndBand();
    press.selectsOnRelease = false;  // the pressed row may be another now
    hasOtherRows = true;
    MarkForLayout();
}

void ListWidget::RowStateChanged(int row) {
    if (hasOtherRows) return;
    Update(row);
    NotifyStateChanged(*this, row);
}

void ListWidget::RowTextChanged(int row) {
    const ListView view = list->GetView();
    const bool fitsColumns = view == ListView::kReport && list->FitsColumns();
    if (fitsColumns || view == ListView::kList || view == ListView::kSmallIcons)
        MarkForLayout();
    else
        Update(row);
}

void ListWidget::AppearanceChanged() {
    LayOutHeader();
    header->Refresh();
    MarkForLayout();
}

void ListWidget::FocusRowChanged(int before) {
    if (before < 0)
        viewport()->update();
    else
        Update(before);
    Update(list->Rows().cursor.focus);
    NotifyFocusRow(*this, list->Rows().cursor.focus);
}

void ListWidget::Update(int row) {
    if (needsLayout || !list->Rows().Has(row)) return;
    viewport()->update(InViewport(ToQt(layout.Cell(row))));
}

// ---- Layout ----

void ListWidget::LayOutHeader() {
    const bool hasHeader =
        list->GetView() == ListView::kReport && (list->GetStyle() & LVS_NOCOLUMNHEADER) == 0;
    header->setVisible(hasHeader);
    const int height = hasHeader ? header->sizeHint().height() : 0;
    setViewportMargins(0, height, 0, 0);
    const QRect area = viewport()->geometry();
    header->setGeometry(area.left(), area.top() - height, area.width(), height);
}

// What each column of a report needs for its texts; nothing where the widths are given.
std::vector<int> ListWidget::ColumnTexts() const {
    std::vector<int> widths;
    if (list->GetView() != ListView::kReport || !list->FitsColumns()) return widths;
    const ListPainter painter(*this, *list);
    for (int column = 0; column < static_cast<int>(list->Columns().size()); ++column) {
        const int title = header->isHidden() ? 0 : header->TextWidth(column);
        widths.push_back(std::max(title, painter.ColumnTextWidth(column)));
    }
    return widths;
}

// A scroll bar takes room from the contents, so one may make the other necessary.
void ListWidget::LayOut() {
    if (!needsLayout || list == nullptr) return;
    needsLayout = false;
    const QSize whole = maximumViewportSize();
    const std::vector<int> texts = ColumnTexts();
    const QSize bars(verticalScrollBar()->sizeHint().width(), horizontalScrollBar()->sizeHint().height());
    bool hasVertical = false;
    bool hasHorizontal = false;
    QSize client;
    for (int pass = 0; pass < 3; ++pass) {
        client = whole - QSize(hasVertical ? bars.width() : 0, hasHorizontal ? bars.height() : 0);
        if (!texts.empty()) list->FitColumnsTo(texts, client.width());
        const QSize cell = ListPainter(*this, *list).CellSize(whole);
        layout = ListLayout(list->GetView(), list->Rows().Count(), {cell.width(), cell.height()},
                            {client.width(), client.height()});
        const Size content = layout.ContentSize();
        hasVertical = hasVertical || content.cy > client.height();
        hasHorizontal = hasHorizontal || content.cx > client.width();
    }
    if (!texts.empty()) header->Refresh();
    SetScrollRanges(client);
    if (std::exchange(hasOtherRows, false)) NotifyRowsChanged(*this);
}

void ListWidget::SetScrollRanges(const QSize& client) {
    const Size content = layout.ContentSize();
    const Rect cell = layout.Cell(0);
    QScrollBar& vertical = *verticalScrollBar();
    QScrollBar& horizontal = *horizontalScrollBar();
    vertical.setRange(0, std::max(content.cy - client.height(), 0));
    vertical.setPageStep(std::max(client.height(), 1));
    vertical.setSingleStep(cell.Height());
    horizontal.setRange(0, std::max(content.cx - client.width(), 0));
    horizontal.setPageStep(std::max(client.width(), 1));
    horizontal.setSingleStep(list->GetView() == ListView::kList ? cell.Width()
                                                                : fontMetrics().averageCharWidth() * 2);
    header->setOffset(horizontal.value());
}

QPoint ListWidget::ScrollOffset() const {
    return {horizontalScrollBar()->value(), verticalScrollBar()->value()};
}

void ListWidget::EnsureVisible(int row) {
    LayOut();
    if (!list->Rows().Has(row)) return;
    const Rect cell = layout.Cell(row);
    const QSize seen = viewport()->size();
    const auto reveal = [](QScrollBar& bar, int first, int last, int size) {
        if (last - bar.value() > size) bar.setValue(last - size);
        if (first < bar.value()) bar.setValue(first);
    };
    reveal(*verticalScrollBar(), cell.top, cell.bottom, seen.height());
    if (list->GetView() != ListView::kReport)
        reveal(*horizontalScrollBar(), cell.left, cell.right, seen.width());
}

bool ListWidget::IsInView(int row) {
    return viewport()->rect().intersects(CellInViewport(row));
}

QPoint ListWidget::MirroredPoint(const QPoint& viewportPoint) const {
    return QStyle::visualPos(layoutDirection(), viewport()->rect(), viewportPoint);
}

QPoint ListWidget::ContentPoint(const QPoint& viewportPoint) const {
    return MirroredPoint(viewportPoint) + ScrollOffset();
}

QRect ListWidget::InViewport(const QRect& content) const {
    return Mirrored(*viewport(), content.translated(-ScrollOffset()));
}

QRect ListWidget::MirroredCell(int row) {
    LayOut();
    return ToQt(layout.Cell(row)).translated(-ScrollOffset());
}

QRect ListWidget::CellInViewport(int row) {
    return Mirrored(*viewport(), MirroredCell(row));
}

QRect ListWidget::HotPartInViewport(int row) {
    return Mirrored(*viewport(), ListPainter(*this, *list).HotPart(row, MirroredCell(row)));
}

QRect ListWidget::CheckBoxInViewport(int row) {
    return Mirrored(*viewport(), ListPainter(*this, *list).CheckBox(MirroredCell(row)));
}

int ListWidget::HitRow(const QPoint& viewportPoint) {
    LayOut();
    const QPoint point = ContentPoint(viewportPoint);
    const int row = layout.RowAt({point.x(), point.y()});
    if (row < 0) return -1;
    return HotPartInViewport(row).contains(viewportPoint) ? row : -1;
}

bool ListWidget::IsOnCheckBox(int row, const QPoint& viewportPoint) {
    if (row < 0 || !list->HasExtendedStyle(ListStyle::kCheckBoxes)) return false;
    return CheckBoxInViewport(row).contains(viewportPoint);
}

Point ListWidget::ClientPoint(const QPoint& viewportPoint) const {
    const QPoint point = viewport()->mapTo(this, viewportPoint);
    return {point.x(), point.y()};
}

// ---- Events of the area ----

bool ListWidget::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) {
        LayOut();
        return true;
    }
    return QAbstractScrollArea::event(event);
}

bool ListWidget::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto& help = static_cast<const QHelpEvent&>(*event);
        ShowTip(help.pos(), help.globalPos());
        return true;
    }
    return QAbstractScrollArea::viewportEvent(event);
}

void ListWidget::paintEvent(QPaintEvent* event) {
    if (list == nullptr) return;
    LayOut();
    QPainter painter(viewport());
    const ListPainter rowPainter(*this, *list);
    const QRect area = Mirrored(*viewport(), event->rect()).translated(ScrollOffset());
    const RowRange rows = layout.RowsIn(FromQt(area));
    for (int row = rows.first; row < rows.last; ++row) {
        const QRect cell = ToQt(layout.Cell(row));
        if (cell.intersects(area)) rowPainter.Paint(painter, row, cell.translated(-ScrollOffset()));
    }
    // While no row has the keyboard, the place of the first one shows that it is here: the next key leads
    // there.
    if (hasFocus() && !list->Rows().Has(list->Rows().cursor.focus))
        rowPainter.PaintFocus(painter, {0, 0, viewport()->width(), layout.Cell(0).Height()});
    PaintEmptyText(painter);
    if (!band) return;
    QStyleOptionRubberBand option;
    option.initFrom(viewport());
    option.rect = InViewport(QRect(band->start, band->end).normalized());
    option.shape = QRubberBand::Rectangle;
    style()->drawControl(QStyle::CE_RubberBand, &option, &painter, viewport());
}

// In full colour even where the list is disabled: it is there to be read.
void ListWidget::PaintEmptyText(QPainter& painter) const {
    constexpr int kMargin = 8;
    painter.setPen(palette().color(QPalette::Active, QPalette::Text));
    style()->drawItemText(&painter, viewport()->rect().adjusted(kMargin, kMargin, -kMargin, -kMargin),
                          static_cast<int>(Qt::AlignLeft | Qt::AlignTop) | Qt::TextWordWrap, palette(), true,
                          ToQt(list->EmptyText()));
}

void ListWidget::resizeEvent(QResizeEvent* /*event*/) {
    if (list == nullptr) return;
    LayOutHeader();
    MarkForLayout();
}

void ListWidget::scrollContentsBy(int /*dx*/, int /*dy*/) {
    if (header != nullptr) header->setOffset(horizontalScrollBar()->value());
    viewport()->update();
}

void ListWidget::wheelEvent(QWheelEvent* event) {
    // Rows that fill downwards are scrolled sideways by the ordinary wheel.
    if (list->GetView() == ListView::kList)
        QCoreApplication::sendEvent(horizontalScrollBar(), event);
    else
        QAbstractScrollArea::wheelEvent(event);
}

void ListWidget::focusInEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusInEvent(event);
    const ListCursor cursor = list->Rows().cursor;
    if (cursor.focus < 0 && list->Rows().Count() > 0) list->SetCursor({0, cursor.mark, cursor.anchor});
    NotifyFocusRow(*this, list->Rows().cursor.focus);
    viewport()->update();
}

void ListWidget::focusOutEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

void ListWidget::changeEvent(QEvent* event) {
    QAbstractScrollArea::changeEvent(event);
    if (list == nullptr) return;
    if (event->type() == QEvent::EnabledChange)
        viewport()->setBackgroundRole(isEnabled() ? QPalette::Base : QPalette::Window);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        LayOutHeader();
        MarkForLayout();
    }
    viewport()->update();
}

}  // namespace permora::qt
