#include "framework/qt/list_painter.h"

#include <QStyle>
#include <QStyleOption>
#include <QTextLayout>
#include <algorithm>

#include "framework/list_styles.h"
#include "framework/qt/dialog_style.h"
#include "framework/qt/image.h"
#include "framework/qt/shown_text.h"
#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

constexpr int kGap = 4;            // between check box, icon and text
constexpr int kIndentStep = 16;    // of one level of a tree
constexpr int kIconPadding = 6;    // above and below a large icon
constexpr int kLabelLines = 2;     // under a large icon
constexpr int kLabelLetters = 14;  // the width of a label under a large icon
// The number of rows whose texts are measured for the width of a cell or a column. For the common width of
// cells in longer lists, the longest text decides.
constexpr int kMeasuredRows = 256;

QRect Centred(const QSize& size, const QRect& area) {
    return QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size, area);
}

QPen Dimmed(QPen pen) {
    constexpr float kDimmed = 0.6F;
    QColor colour = pen.color();
    colour.setAlphaF(kDimmed);
    pen.setColor(colour);
    return pen;
}

}  // namespace

ListPainter::ListPainter(const QAbstractScrollArea& shownIn, const CListCtrl& shown)
    : widget(shownIn), list(shown), view(shown.GetView()) {}

QSize ListPainter::CheckSize() const {
    if (!list.HasExtendedStyle(ListStyle::kCheckBoxes)) return {0, 0};
    const QStyle& style = *widget.style();
    return {style.pixelMetric(QStyle::PM_IndicatorWidth, nullptr, &widget),
            style.pixelMetric(QStyle::PM_IndicatorHeight, nullptr, &widget)};
}

QSize ListPainter::IconSize() const {
    const CImageList::Images* images = list.Images();
    return images != nullptr ? QSize(images->size.cx, images->size.cy) : QSize(0, 0);
}

int ListPainter::RowHeight() const {
    return std::max({widget.fontMetrics().height() + 4, IconSize().height() + 2, CheckSize().height() + 4});
}

int ListPainter::WidestLabel() const {
    const QFontMetrics metrics = widget.fontMetrics();
    int widest = metrics.horizontalAdvance(ShownText(ToQt(list.Rows().LongestText())));
    const int measured = std::min(list.Rows().Count(), kMeasuredRows);
    for (int row = 0; row < measured; ++row)
        widest = std::max(widest, metrics.horizontalAdvance(ShownText(Text(row, 0))));
    return widest;
}

int ListPainter::ColumnTextWidth(int column) const {
    const QFontMetrics metrics = widget.fontMetrics();
    const int start = column == 0 ? PartsOf({0, 0, 0, RowHeight()}).label.left() : 0;
    int widest = 0;
    const int measured = std::min(list.Rows().Count(), kMeasuredRows);
    for (int row = 0; row < measured; ++row) {
        const int indent = column == 0 ? list.Rows().Indent(row) * kIndentStep : 0;
        widest = std::max(widest, start + indent + metrics.horizontalAdvance(ShownText(Text(row, column))));
    }
    return widest + 2 * kCellMargin;
}

QSize ListPainter::CellSize(const QSize& available) const {
    const QFontMetrics metrics = widget.fontMetrics();
    if (view == ListView::kIcons) {
        const QSize icon = IconSize();
        const int width = std::max(metrics.averageCharWidth() * kLabelLetters,
                                   icon.width() + 2 * (CheckSize().width() + kGap));
        return {width + 2 * kCellMargin,
                icon.height() + 2 * kIconPadding + kLabelLines * metrics.height() + kCellMargin};
    }
    if (view == ListView::kReport) {
        int width = list.Columns().empty() ? available.width() : 0;
        for (const ListColumn& column : list.Columns())
            width += column.width;
        return {width, RowHeight()};
    }
    const QRect nothing(0, 0, 0, RowHeight());
    const int width = PartsOf(nothing).label.left() + WidestLabel() + 3 * kCellMargin;
    return {std::min(width, std::max(available.width(), 1)), RowHeight()};
}

int ListPainter::FirstColumnWidth(const QRect& cell) const {
    const bool hasColumns = view == ListView::kReport && !list.Columns().empty();
    return hasColumns ? list.Columns().front().width : cell.width();
}

ListPainter::Parts ListPainter::PartsOf(const QRect& cell) const {
    const QSize check = CheckSize();
    const QSize icon = IconSize();
    Parts parts;
    if (view == ListView::kIcons) {
        const QRect top(cell.left(), cell.top() + kIconPadding, cell.width(), icon.height());
        parts.icon = Centred(icon, top);
        parts.check = QRect(QPoint(parts.icon.left() - kGap - check.width(), top.top()), check);
        const int labelTop = top.top() + icon.height() + kIconPadding;
        parts.label = QRect(cell.left() + kCellMargin, labelTop, cell.width() - 2 * kCellMargin,
                            kLabelLines * widget.fontMetrics().height());
        return parts;
    }
    int left = cell.left() + kCellMargin;
    const auto place = [&](const QSize& size) {
        const QRect rect(QPoint(left, cell.top() + (cell.height() - size.height()) / 2), size);
        if (size.width() > 0) left += size.width() + kGap;
        return rect;
    };
    parts.check = place(check);
    parts.icon = place(icon);
    const int right = cell.left() + FirstColumnWidth(cell);
    parts.label = QRect(left, cell.top(), std::max(right - left, 0), cell.height());
    return parts;
}

// The deepest levels still show some of their text.
QRect ListPainter::LabelOf(int row, const QRect& cell) const {
    const QRect label = PartsOf(cell).label;
    const int indent = view == ListView::kReport ? list.Rows().Indent(row) * kIndentStep : 0;
    return label.adjusted(std::min(indent, label.width() / 2), 0, 0, 0);
}

QRect ListPainter::CheckBox(const QRect& cell) const {
    return PartsOf(cell).check;
}

// The rectangle of the text with some space around, within the cell.
QRect ListPainter::TextRect(int row, const QRect& label) const {
    const QFontMetrics metrics = widget.fontMetrics();
    const int advance = metrics.horizontalAdvance(ShownText(Text(row, 0)));
    if (view == ListView::kIcons) {
        if (advance > label.width()) return label.adjusted(-kCellMargin, 0, kCellMargin, 0);
        const int width = advance + 2 * kCellMargin;
        return {label.left() + (label.width() - width) / 2, label.top(), width, metrics.height()};
    }
    const int width = advance + 2 * kCellMargin;
    return {label.left(), label.top(), std::min(width, label.width()), label.height()};
}

QString ListPainter::CutText(int row, const QRect& cell, int x) const {
    if (view != ListView::kReport) return {};
    int left = cell.left();
    for (std::size_t i = 0; i < list.Columns().size(); ++i) {
        const int right = left + list.Columns()[i].width;
        if (x < right) {
            const QString text = ShownText(Text(row, static_cast<int>(i)));
            const int start = i == 0 ? LabelOf(row, cell).left() : left;
            const bool fits = widget.fontMetrics().horizontalAdvance(text) <= right - start - 2 * kCellMargin;
            return fits ? QString() : text;
        }
        left = right;
    }
    return {};
}

QRect ListPainter::HotPart(int row, const QRect& cell) const {
    if (view == ListView::kReport && list.HasExtendedStyle(ListStyle::kFullRowSelect)) return cell;
    const Parts parts = PartsOf(cell);
    return parts.check.united(parts.icon).united(TextRect(row, LabelOf(row, cell)));
}

QRect ListPainter::Mirrored(const QRect& rect) const {
    return qt::Mirrored(*widget.viewport(), rect);
}

// Also while another window has the keyboard that the list will get back: a question may be about the
// selection.
bool ListPainter::ShowsSelection() const {
    return widget.window()->focusWidget() == &widget || (list.GetStyle() & LVS_SHOWSELALWAYS) != 0;
}

QPalette::ColorGroup ListPainter::ColourGroup() const {
    if (!widget.isEnabled()) return QPalette::Disabled;
    return widget.hasFocus() ? QPalette::Active : QPalette::Inactive;
}

QString ListPainter::Text(int row, int column) const {
    return ToQt(list.Rows().Text(row, column));
}

// Most palettes have one colour for lists with and without the keyboard.
bool ListPainter::HasInactiveColour() const {
    const QPalette palette = widget.palette();
    return palette.color(QPalette::Inactive, QPalette::Highlight) !=
           palette.color(QPalette::Active, QPalette::Highlight);
}

void ListPainter::SetTextColour(QPainter& painter, bool isHighlighted) const {
    const bool isOnColour = isHighlighted && (widget.hasFocus() || HasInactiveColour());
    painter.setPen(
        widget.palette().color(ColourGroup(), isOnColour ? QPalette::HighlightedText : QPalette::Text));
}

void ListPainter::Paint(QPainter& painter, int row, const QRect& cell) const {
    const Parts parts = PartsOf(cell);
    const QRect label = LabelOf(row, cell);
    const bool isFullRow = view == ListView::kReport && list.HasExtendedStyle(ListStyle::kFullRowSelect);
    const bool isHighlighted = list.Rows().IsSelected(row) && ShowsSelection();
    const bool isFocused = row == list.Rows().cursor.focus && widget.hasFocus();
    // Measuring a text costs as much as painting it, so only marked rows are measured.
    QRect marked = cell;
    if (!isFullRow && (isHighlighted || isFocused)) marked = TextRect(row, label);
    if (isHighlighted) PaintSelection(painter, marked);
    if (isFocused) PaintFocus(painter, marked);  // some styles fill it, which would veil the text
    PaintCheckBox(painter, row, parts.check);
    PaintIcon(painter, row, parts.icon);
    SetTextColour(painter, isHighlighted);
    const Ground ground = isHighlighted ? Ground::kSelected : Ground::kPlain;
    if (view == ListView::kIcons)
        PaintWrapped(painter, label, Text(row, 0), ground);
    else
        PaintLine(painter, label.adjusted(kCellMargin, 0, -kCellMargin, 0), Text(row, 0), Qt::AlignLeft,
                  ground);
    if (view == ListView::kReport) PaintOtherColumns(painter, row, cell, isHighlighted && isFullRow);
}

void ListPainter::PaintOtherColumns(QPainter& painter, int row, const QRect& cell, bool isHighlighted) const {
    SetTextColour(painter, isHighlighted);
    const Ground ground = isHighlighted ? Ground::kSelected : Ground::kPlain;
    int left = cell.left();
    for (std::size_t i = 0; i < list.Columns().size(); ++i) {
        const int width = list.Columns()[i].width;
        const QRect room(left + kCellMargin, cell.top(), width - 2 * kCellMargin, cell.height());
        left += width;
        const QString text = i == 0 ? QString() : Text(row, static_cast<int>(i));
        if (!text.isEmpty() && room.width() > 0) PaintLine(painter, room, text, Qt::AlignLeft, ground);
    }
}

void ListPainter::PaintCheckBox(QPainter& painter, int row, const QRect& rect) const {
    if (rect.isEmpty()) return;
    QStyleOptionViewItem option;
    option.initFrom(&widget);
    option.rect = Mirrored(rect);
    option.state.setFlag(QStyle::State_HasFocus, false);
    option.state.setFlag(list.Rows().IsChecked(row) ? QStyle::State_On : QStyle::State_Off);
    widget.style()->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &option, &painter, &widget);
}

void ListPainter::PaintIcon(QPainter& painter, int row, const QRect& rect) const {
    const CImageList::Images* images = list.Images();
    const int image = list.Rows().Image(row);
    if (images == nullptr || image < 0 || image >= static_cast<int>(images->icons.size())) return;
    const QIcon::Mode mode = widget.isEnabled() ? QIcon::Normal : QIcon::Disabled;
    ToQt(images->icons[static_cast<std::size_t>(image)])
        .paint(&painter, Mirrored(rect), Qt::AlignCenter, mode);
}

void ListPainter::PaintSelection(QPainter& painter, const QRect& rect) const {
    const QPalette palette = widget.palette();
    if (widget.hasFocus() || HasInactiveColour()) {
        painter.fillRect(Mirrored(rect), palette.brush(ColourGroup(), QPalette::Highlight));
        return;
    }
    constexpr float kTint = 0.25F;
    QColor grey = palette.color(ColourGroup(), QPalette::Text);
    grey.setAlphaF(kTint);
    painter.fillRect(Mirrored(rect), grey);
}

void ListPainter::PaintFocus(QPainter& painter, const QRect& rect) const {
    QStyleOptionFocusRect option;
    option.initFrom(&widget);
    option.rect = Mirrored(rect);
    option.state |= QStyle::State_KeyboardFocusChange | QStyle::State_Item;
    option.backgroundColor = widget.palette().color(QPalette::Base);
    widget.style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, &widget);
}

// One line, in the middle of the height of `room`, cut with an ellipsis where it does not fit. Texts of names
// and lists are read from left to right, whatever the layout, unless they begin with letters that are not.
void ListPainter::PaintLine(QPainter& painter, const QRect& room, const QString& text, Qt::AlignmentFlag side,
                            Ground ground) const {
    const QFontMetrics metrics = widget.fontMetrics();
    const QList<TextPiece> pieces = PiecesOf(text);
    int width = 0;
    for (const TextPiece& piece : pieces)
        width += metrics.horizontalAdvance(piece.text);
    width = std::min(width, room.width());
    const int before = side == Qt::AlignHCenter ? (room.width() - width) / 2 : 0;
    const int start = Mirrored({room.left() + before, room.top(), width, 1}).left();
    const int baseline = room.top() + (room.height() - metrics.height()) / 2 + metrics.ascent();
    const QPen pen = painter.pen();
    // On a selection, or in a disabled list, what is dimmed could not be read.
    const bool canDim = ground == Ground::kPlain && widget.isEnabled();
    painter.setLayoutDirection(text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
    int left = start;
    for (const TextPiece& piece : pieces) {
        const int remaining = start + width - left;
        painter.setPen(piece.isEscape && canDim ? Dimmed(pen) : pen);
        const int advance = metrics.horizontalAdvance(piece.text);
        if (advance > remaining) {
            painter.drawText(left, baseline, metrics.elidedText(piece.text, Qt::ElideRight, remaining));
            break;
        }
        painter.drawText(left, baseline, piece.text);
        left += advance;
    }
    painter.setPen(pen);
    painter.setLayoutDirection(widget.layoutDirection());
}

void ListPainter::PaintWrapped(QPainter& painter, const QRect& rect, const QString& text,
                               Ground ground) const {
    const int lineHeight = widget.fontMetrics().height();
    QRect line(rect.left(), rect.top(), rect.width(), lineHeight);
    const bool isOrdinary = PiecesOf(text).size() == 1;
    if (!isOrdinary || widget.fontMetrics().horizontalAdvance(text) <= rect.width()) {
        PaintLine(painter, line, text, Qt::AlignHCenter, ground);
        return;
    }
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    QTextLayout layout(text, widget.font());
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine first = layout.createLine();
    first.setLineWidth(rect.width());
    layout.endLayout();
    PaintLine(painter, line, text.left(first.textLength()).trimmed(), Qt::AlignHCenter, ground);
    line.translate(0, lineHeight);
    PaintLine(painter, line, text.mid(first.textLength()), Qt::AlignHCenter, ground);
}

}  // namespace permora::qt
