// WindowDriver's list views and trees on the Qt back end.
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QHeaderView>
#include <optional>

#include "framework/qt/list_widget.h"
#include "framework/qt/tree_widget.h"
#include "tests/support/window_driver_qt.h"

namespace permora::test {
namespace {

using qt::ListWidget;

bool HasRow(const ListWidget& list, int row) {
    if (list.List()->Rows().Has(row)) return true;
    ADD_FAILURE() << "no row " << row << " among " << list.List()->Rows().Count();
    return false;
}

QPoint Centre(const QRect& rect) {
    return rect.center();
}

// A place beside all rows: just above the lower right corner of what is seen.
QPoint PointBeside(ListWidget& list) {
    const QPoint point = list.viewport()->rect().bottomRight() - QPoint(2, 2);
    EXPECT_EQ(list.HitRow(point), -1) << "the rows fill the list";
    return point;
}

QPoint PointOf(ListWidget& list, int row) {
    if (row == WindowDriver::kBesideRows) return PointBeside(list);
    list.EnsureVisible(row);
    return Centre(list.HotPartInViewport(row).intersected(list.viewport()->rect()));
}

void ClickOnRow(HWND window, unsigned int id, int row, Qt::MouseButton button = Qt::LeftButton,
                Qt::KeyboardModifiers modifiers = {}, Clicks clicks = Clicks::kOne) {
    auto* list = Control<ListWidget>(window, id);
    if (list == nullptr || (row != WindowDriver::kBesideRows && !HasRow(*list, row))) return;
    ClickWidget(*list->viewport(), PointOf(*list, row), button, modifiers, clicks);
}

std::string RowText(const CListCtrl& list, int row) {
    std::string text = list.Rows().Text(row, 0);
    for (int column = 1; column < static_cast<int>(list.Columns().size()); ++column)
        text += " | " + list.Rows().Text(row, column);
    return text;
}

}  // namespace

std::vector<std::string> WindowDriver::Rows(unsigned int id) const {
    std::vector<std::string> rows;
    const auto* list = Control<ListWidget>(window, id);
    for (int row = 0; list != nullptr && row < list->List()->Rows().Count(); ++row)
        rows.push_back(RowText(*list->List(), row));
    return rows;
}

std::vector<std::string> WindowDriver::Headers(unsigned int id) const {
    std::vector<std::string> headers;
    if (const auto* list = Control<ListWidget>(window, id))
        for (const ListColumn& column : list->List()->Columns())
            headers.push_back(column.header);
    return headers;
}

std::vector<int> WindowDriver::SelectedRows(unsigned int id) const {
    std::vector<int> selected;
    const auto* list = Control<ListWidget>(window, id);
    if (list == nullptr) return selected;
    const ListRows& rows = list->List()->Rows();
    for (int row = rows.NextSelected(0); row >= 0; row = rows.NextSelected(row + 1))
        selected.push_back(row);
    return selected;
}

bool WindowDriver::IsRowChecked(unsigned int id, int row) const {
    const auto* list = Control<ListWidget>(window, id);
    return list != nullptr && HasRow(*list, row) && list->List()->Rows().IsChecked(row);
}

int WindowDriver::FindRow(unsigned int id, const std::string& text) const {
    const auto* list = Control<ListWidget>(window, id);
    for (int row = 0; list != nullptr && row < list->List()->Rows().Count(); ++row)
        if (list->List()->Rows().Text(row, 0) == text) return row;
    ADD_FAILURE() << "no row \"" << text << "\"";
    return -1;
}

void WindowDriver::SelectRow(unsigned int id, int row) {
    ClickOnRow(window, id, row);
}

void WindowDriver::SelectRows(unsigned int id, const std::vector<int>& rows) {
    Qt::KeyboardModifiers modifiers;
    for (const int row : rows) {
        ClickOnRow(window, id, row, Qt::LeftButton, modifiers);
        modifiers = Qt::ControlModifier;
    }
}

void WindowDriver::DoubleClickRow(unsigned int id, int row) {
    ClickOnRow(window, id, row, Qt::LeftButton, {}, Clicks::kTwo);
}

void WindowDriver::RightClickRow(unsigned int id, int row) {
    ClickOnRow(window, id, row, Qt::RightButton);
}

void WindowDriver::ToggleRowCheck(unsigned int id, int row) {
    auto* list = Control<ListWidget>(window, id);
    if (list == nullptr || !HasRow(*list, row)) return;
    list->EnsureVisible(row);
    const QRect box = list->CheckBoxInViewport(row);
    ASSERT_FALSE(box.isEmpty()) << "the list has no check boxes";
    ClickWidget(*list->viewport(), Centre(box));
}

namespace {

// Where to click a header that can be seen; nothing, and a failure, for another.
std::optional<QPoint> MiddleOfHeader(const QHeaderView* header, int column) {
    const bool isSeen = header != nullptr && header->isVisible() && column < header->count();
    EXPECT_TRUE(isSeen) << "no header " << column;
    if (!isSeen) return std::nullopt;
    return QPoint(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                  header->height() / 2);
}

QHeaderView* HeaderOf(HWND window, unsigned int id) {
    const auto* list = Control<ListWidget>(window, id);
    return list != nullptr ? list->findChild<QHeaderView*>() : nullptr;
}

}  // namespace

void WindowDriver::ClickHeader(unsigned int id, int column) {
    QHeaderView* header = HeaderOf(window, id);
    if (const auto point = MiddleOfHeader(header, column)) ClickWidget(*header->viewport(), *point);
}

void WindowDriver::RightClickHeader(unsigned int id, int column) {
    QHeaderView* header = HeaderOf(window, id);
    const auto point = MiddleOfHeader(header, column);
    if (!point) return;
    QWidget& viewport = *header->viewport();
    QContextMenuEvent event(QContextMenuEvent::Mouse, *point, viewport.mapToGlobal(*point));
    QCoreApplication::sendEvent(&viewport, &event);
}

// ---- Trees ----

void WindowDriver::ClickItem(unsigned int id, int item) {
    auto* tree = Control<qt::TreeWidget>(window, id);
    if (tree == nullptr) return;
    const QModelIndex index = tree->Model().IndexOf(item);
    ClickWidget(*tree->viewport(), tree->visualRect(index).center());
    QCoreApplication::processEvents();
}

void WindowDriver::RightClickItem(unsigned int id, int item) {
    auto* tree = Control<qt::TreeWidget>(window, id);
    if (tree == nullptr) return;
    const QPoint point = tree->visualRect(tree->Model().IndexOf(item)).center();
    ClickWidget(*tree->viewport(), point, Qt::RightButton);
}

}  // namespace permora::test
