#include "framework/qt/tree_widget.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QStyledItemDelegate>

#include "framework/qt/image.h"
#include "framework/qt/list_keys.h"
#include "framework/qt/shown_text.h"
#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

// Keeps the direction of texts where rows go from right to left.
class TreeDelegate : public QStyledItemDelegate {
  public:
    using QStyledItemDelegate::QStyledItemDelegate;

  protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(option, index);
        constexpr QChar kLeftToRight(0x200E);
        if (option->direction == Qt::RightToLeft && !option->text.isRightToLeft())
            option->text = kLeftToRight + option->text + kLeftToRight;
    }
};

}  // namespace

// ---- Model ----

QModelIndex TreeModel::IndexOf(TreeItem item) const {
    if (item == kTreeRoot || !tree.Items().Has(item)) return {};
    return createIndex(tree.Items().Place(item), 0, static_cast<quintptr>(item));
}

TreeItem TreeModel::ItemAt(const QModelIndex& index) {
    return index.isValid() ? static_cast<TreeItem>(index.internalId()) : kTreeRoot;
}

void TreeModel::BeginInsert(TreeItem parent, int place, int count) {
    beginInsertRows(IndexOf(parent), place, place + count - 1);
}

void TreeModel::BeginDelete(TreeItem parent, int place, int count) {
    beginRemoveRows(IndexOf(parent), place, place + count - 1);
}

void TreeModel::TellOfChange(TreeItem item) {
    emit dataChanged(IndexOf(item), IndexOf(item));
}

QModelIndex TreeModel::index(int row, int column, const QModelIndex& parent) const {
    const TreeItem item = tree.Items().Child(ItemAt(parent), row);
    if (item == kNoTreeItem || column != 0) return {};
    return createIndex(row, column, static_cast<quintptr>(item));
}

QModelIndex TreeModel::parent(const QModelIndex& child) const {
    return child.isValid() ? IndexOf(tree.Items().Parent(ItemAt(child))) : QModelIndex();
}

int TreeModel::rowCount(const QModelIndex& parent) const {
    return tree.Items().Count(ItemAt(parent));
}

bool TreeModel::hasChildren(const QModelIndex& parent) const {
    const TreeItem item = ItemAt(parent);
    return tree.Items().Count(item) > 0 || tree.Items().Look(item).hasExpander;
}

QVariant TreeModel::data(const QModelIndex& index, int role) const {
    const TreeItem item = ItemAt(index);
    if (role == Qt::DisplayRole) return ShownText(ToQt(tree.Items().Text(item)));
    if (role == Qt::DecorationRole) return Picture(tree.Items().Look(item).image);
    if (role == Qt::ForegroundRole && tree.Items().Look(item).isDimmed)
        return view.palette().brush(QPalette::Disabled, QPalette::Text);
    return {};
}

QVariant TreeModel::Picture(int image) const {
    const CImageList::Images* images = tree.Images();
    const bool isThere = images != nullptr && image >= 0 && image < static_cast<int>(images->icons.size());
    return isThere ? QVariant(ToQt(images->icons[static_cast<std::size_t>(image)])) : QVariant();
}

// ---- Widget ----

TreeWidget::TreeWidget(QWidget* parent) : QTreeView(parent) {
    setHeaderHidden(true);
    setItemDelegate(new TreeDelegate(this));
    setUniformRowHeights(true);  // long trees are laid out quickly
    setEditTriggers(NoEditTriggers);
    setHorizontalScrollMode(ScrollPerPixel);
    // Texts are whole; the tree is scrolled sideways where it is too narrow.
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    header()->setStretchLastSection(false);
}

void TreeWidget::Show(const CTreeCtrl& shown, std::function<bool(Notification& notification)> reported) {
    report = std::move(reported);
    items = new TreeModel(shown, *this);
    items->setParent(this);
    setModel(items);
    QObject::connect(this, &QTreeView::expanded, this,
                     [this](const QModelIndex& index) { PostReport(Notify::kItemChanged, index); });
    QObject::connect(this, &QTreeView::collapsed, this,
                     [this](const QModelIndex& index) { PostReport(Notify::kItemChanged, index); });
    QObject::connect(this, &QTreeView::clicked, this,
                     [this](const QModelIndex& index) { PostReport(Notify::kClick, index); });
}

bool TreeWidget::Report(Notify code, TreeItem item, Point point) {
    Notification notification{.code = code, .row = item, .point = point};
    return report(notification);
}

// The view must not change while it is at work on the event that is reported.
void TreeWidget::PostReport(Notify code, const QModelIndex& index) {
    if (isSilent) return;
    QMetaObject::invokeMethod(
        this, [this, code, item = TreeModel::ItemAt(index)] { Report(code, item); }, Qt::QueuedConnection);
}

void TreeWidget::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTreeView::currentChanged(current, previous);
    if (current.isValid()) PostReport(Notify::kSelectionChanged, current);
}

// The selected item and the one with the focus are the same.
QItemSelectionModel::SelectionFlags TreeWidget::selectionCommand(const QModelIndex& index,
                                                                 const QEvent* /*event*/) const {
    return index.isValid() ? QItemSelectionModel::ClearAndSelect : QItemSelectionModel::NoUpdate;
}

// While the keyboard is elsewhere, the selection is grey, as in lists.
void TreeWidget::initViewItemOption(QStyleOptionViewItem* option) const {
    QTreeView::initViewItemOption(option);
    const QColor inactive = palette().color(QPalette::Inactive, QPalette::Highlight);
    if (hasFocus() || inactive != palette().color(QPalette::Active, QPalette::Highlight)) return;
    constexpr float kTint = 0.25F;
    QColor grey = palette().color(QPalette::Text);
    option->palette.setColor(QPalette::HighlightedText, grey);
    grey.setAlphaF(kTint);
    option->palette.setColor(QPalette::Highlight, grey);
}

void TreeWidget::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_F10 && event->modifiers() == Qt::ShiftModifier) {
        ReportMenuKey();
        return;
    }
    Notification pressed{.code = Notify::kKeyDown, .key = VirtualKeyOf(event->key())};
    if (pressed.key != 0 && report(pressed)) return;
    // The toolkit would open all that is below as well.
    if (event->key() == Qt::Key_Asterisk)
        expand(currentIndex());
    else
        QTreeView::keyPressEvent(event);
}

// The other button asks for a menu, and selects nothing.
void TreeWidget::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) QTreeView::mousePressEvent(event);
}

void TreeWidget::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() == QContextMenuEvent::Keyboard) {
        ReportMenuKey();
        return;
    }
    const QModelIndex index = indexAt(viewport()->mapFromGlobal(event->globalPos()));
    const QPoint point = mapFromGlobal(event->globalPos());
    if (index.isValid()) Report(Notify::kRightClick, TreeModel::ItemAt(index), {point.x(), point.y()});
}

void TreeWidget::ReportMenuKey() {
    const QRect seen = visualRect(currentIndex()).intersected(viewport()->rect());
    const QPoint point = viewport()->mapTo(this, seen.center());
    if (currentIndex().isValid())
        Report(Notify::kRightClick, TreeModel::ItemAt(currentIndex()), {point.x(), point.y()});
}

}  // namespace permora::qt
