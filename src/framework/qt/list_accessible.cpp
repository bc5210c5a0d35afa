#include "framework/qt/list_accessible.h"

#include <QStringList>

#include "framework/list_selection.h"
#include "framework/qt/part_accessible.h"
#include "framework/qt/shown_text.h"
#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

// One row. Its accessible name holds everything visible: the first column, then each other column after its
// header.
class RowAccessible : public PartAccessible {
  public:
    RowAccessible(ListWidget& shownIn, int shown)
        : PartAccessible(shownIn, QAccessible::ListItem), widget(shownIn), row(shown) {}

    bool isValid() const override { return widget.List()->Rows().Has(row); }
    QString text(QAccessible::Text kind) const override;
    QRect rect() const override;
    QAccessible::State state() const override;

    QStringList actionNames() const override;
    void doAction(const QString& name) override;

  private:
    bool HasCheckBox() const { return widget.List()->HasExtendedStyle(ListStyle::kCheckBoxes); }

    ListWidget& widget;
    int row;
};

QString RowAccessible::text(QAccessible::Text kind) const {
    const CListCtrl& list = *widget.List();
    if (kind != QAccessible::Name) return {};
    QStringList parts{ShownText(ToQt(list.Rows().Text(row, 0)))};
    if (list.GetView() != ListView::kReport) return parts.first();
    for (std::size_t i = 1; i < list.Columns().size(); ++i) {
        const std::string text = list.Rows().Text(row, static_cast<int>(i));
        if (!text.empty()) parts << ShownText(ToQt(list.Columns()[i].header + ": " + text));
    }
    return parts.join(QStringLiteral(", "));
}

QRect RowAccessible::rect() const {
    if (!isValid()) return {};
    const QRect cell = widget.CellInViewport(row);
    return {widget.viewport()->mapToGlobal(cell.topLeft()), cell.size()};
}

QAccessible::State RowAccessible::state() const {
    QAccessible::State state;
    if (!isValid()) {
        state.invalid = true;
        return state;
    }
    const CListCtrl& list = *widget.List();
    state.selectable = true;
    state.multiSelectable = !list.IsSingleSelection();
    state.selected = list.Rows().IsSelected(row);
    state.focusable = true;
    state.focused = widget.hasFocus() && list.Rows().cursor.focus == row;
    state.checkable = HasCheckBox();
    state.checked = HasCheckBox() && list.Rows().IsChecked(row);
    state.disabled = !widget.isEnabled();
    state.offscreen = !widget.viewport()->rect().intersects(widget.CellInViewport(row));
    return state;
}

QStringList RowAccessible::actionNames() const {
    if (!isValid() || !widget.isEnabled()) return {};
    const bool isFixed = widget.List()->HasExtendedStyle(ListStyle::kFixedMarks);
    return HasCheckBox() && !isFixed ? QStringList{pressAction(), toggleAction()}
                                     : QStringList{pressAction()};
}

void RowAccessible::doAction(const QString& name) {
    if (!isValid() || !actionNames().contains(name)) return;
    CListCtrl& list = *widget.List();
    if (name == toggleAction()) {
        ToggleCheck(list, row);
    } else {
        SelectByClick(list, row, SelectMode::kReplace);
        widget.EnsureVisible(row);
    }
}

class ListAccessible : public QAccessibleWidget {
  public:
    explicit ListAccessible(ListWidget& shown) : QAccessibleWidget(&shown, QAccessible::List), list(shown) {}
    ~ListAccessible() override { ForgetRows(); }

    int childCount() const override { return list.List()->Rows().Count(); }
    QString text(QAccessible::Text kind) const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;
    void ForgetRows();

  private:
    ListWidget& list;
    // Made at the first request: most rows of a long list are never requested.
    mutable QHash<int, QAccessible::Id> rows;
};

QString ListAccessible::text(QAccessible::Text kind) const {
    const QString empty = kind == QAccessible::Description ? ToQt(list.List()->EmptyText()) : QString();
    return empty.isEmpty() ? QAccessibleWidget::text(kind) : empty;
}

QAccessibleInterface* ListAccessible::child(int index) const {
    if (!list.List()->Rows().Has(index)) return nullptr;
    const auto found = rows.constFind(index);
    if (found != rows.constEnd()) return QAccessible::accessibleInterface(*found);
    // The toolkit owns registered objects.
    auto* made = new RowAccessible(list, index);
    rows.insert(index, QAccessible::registerAccessibleInterface(made));
    return made;
}

int ListAccessible::indexOfChild(const QAccessibleInterface* child) const {
    for (auto each = rows.constBegin(); each != rows.constEnd(); ++each)
        if (QAccessible::accessibleInterface(each.value()) == child) return each.key();
    return -1;
}

QAccessibleInterface* ListAccessible::childAt(int x, int y) const {
    return child(list.HitRow(list.viewport()->mapFromGlobal(QPoint(x, y))));
}

QAccessibleInterface* ListAccessible::focusChild() const {
    return list.hasFocus() ? child(list.List()->Rows().cursor.focus) : nullptr;
}

void ListAccessible::ForgetRows() {
    for (const QAccessible::Id id : std::as_const(rows))
        QAccessible::deleteAccessibleInterface(id);
    rows.clear();
}

QAccessibleInterface* MakeListAccessible(const QString& /*className*/, QObject* object) {
    auto* widget = dynamic_cast<ListWidget*>(object);
    return widget != nullptr && widget->List() != nullptr ? new ListAccessible(*widget) : nullptr;
}

void TellReaders(ListWidget& widget, QAccessible::Event type, int row) {
    if (!QAccessible::isActive() || !widget.List()->Rows().Has(row)) return;
    QAccessibleEvent event(&widget, type);
    event.setChild(row);
    QAccessible::updateAccessibility(&event);
}

}  // namespace

void InstallListAccessibility() {
    QAccessible::installFactory(MakeListAccessible);  // the toolkit keeps a function once
}

void NotifyRowsChanged(ListWidget& widget) {
    if (!QAccessible::isActive()) return;
    // Items stand for positions in the list. After a change, another row may be there.
    if (auto* made = dynamic_cast<ListAccessible*>(QAccessible::queryAccessibleInterface(&widget)))
        made->ForgetRows();
    QAccessibleEvent event(&widget, QAccessible::ObjectReorder);
    QAccessible::updateAccessibility(&event);
}

void NotifyStateChanged(ListWidget& widget, int row) {
    if (!QAccessible::isActive() || !widget.List()->Rows().Has(row)) return;
    QAccessible::State changed;
    changed.selected = true;
    changed.checked = widget.List()->HasExtendedStyle(ListStyle::kCheckBoxes);
    QAccessibleStateChangeEvent event(&widget, changed);
    event.setChild(row);
    QAccessible::updateAccessibility(&event);
}

void NotifyFocusRow(ListWidget& widget, int row) {
    if (widget.hasFocus()) TellReaders(widget, QAccessible::Focus, row);
}

}  // namespace permora::qt
