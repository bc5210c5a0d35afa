#include "framework/qt/list_header.h"

#include <QContextMenuEvent>

#include "framework/list_styles.h"
#include "framework/qt/widget.h"

namespace permora::qt {

int ListHeader::Model::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(list.Columns().size());
}

QVariant ListHeader::Model::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount({})) return {};
    if (role == Qt::DisplayRole) return ToQt(list.Columns()[static_cast<std::size_t>(section)].header);
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(Qt::Alignment(Qt::AlignLeft | Qt::AlignVCenter));
    return {};
}

void ListHeader::Model::Reset() {
    beginResetModel();
    endResetModel();
}

ListHeader::ListHeader(CListCtrl& shown, QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent), list(shown), model(shown) {
    setModel(&model);
    setFocusPolicy(Qt::NoFocus);
    setHighlightSections(false);
    setMinimumSectionSize(0);
    setTextElideMode(Qt::ElideRight);
    setAccessibleName(QStringLiteral("Columns"));
    connect(this, &QHeaderView::sectionResized, this, [this](int section, int /*before*/, int width) {
        if (!isRefreshing) list.SetColumnWidth(section, width);
    });
    connect(this, &QHeaderView::sectionHandleDoubleClicked, this,
            [this](int /*section*/) { list.FitColumnsAgain(); });
    connect(this, &QHeaderView::sectionClicked, this,
            [this](int section) { list.ReportColumnClick(section); });
    Refresh();
}

ListHeader::~ListHeader() {
    setModel(nullptr);  // the model goes before the header's own half
}

void ListHeader::contextMenuEvent(QContextMenuEvent* event) {
    const QPoint point = mapToParent(event->pos());
    list.ReportHeaderMenu({point.x(), point.y()});
}

void ListHeader::Refresh() {
    isRefreshing = true;
    if (count() != model.columnCount({})) model.Reset();
    for (int column = 0; column < count(); ++column)
        resizeSection(column, list.Columns()[static_cast<std::size_t>(column)].width);
    setSortIndicatorShown(list.SortedColumn() >= 0);
    if (list.SortedColumn() >= 0)
        setSortIndicator(list.SortedColumn(),
                         list.Sorting() == SortOrder::kUp ? Qt::AscendingOrder : Qt::DescendingOrder);
    setSectionsClickable((list.GetStyle() & LVS_NOSORTHEADER) == 0);
    viewport()->update();
    isRefreshing = false;
}

}  // namespace permora::qt
