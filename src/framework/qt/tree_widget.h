// The widget of a tree view, and the model by which the toolkit reads its items.
#pragma once

#include <QAbstractItemModel>
#include <QTreeView>
#include <functional>
#include <memory>

#include "framework/tree_native.h"

namespace permora::qt {

class TreeModel : public QAbstractItemModel {
  public:
    TreeModel(const CTreeCtrl& shown, QTreeView& shownIn) : tree(shown), view(shownIn) {}

    QModelIndex IndexOf(TreeItem item) const;
    static TreeItem ItemAt(const QModelIndex& index);  // kTreeRoot: none

    void BeginInsert(TreeItem parent, int place, int count);
    void EndInsert() { endInsertRows(); }
    void BeginDelete(TreeItem parent, int place, int count);
    void EndDelete() { endRemoveRows(); }
    void TellOfChange(TreeItem item);

    QModelIndex index(int row, int column, const QModelIndex& parent) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent) const override;
    int columnCount(const QModelIndex& /*parent*/) const override { return 1; }
    bool hasChildren(const QModelIndex& parent) const override;
    QVariant data(const QModelIndex& index, int role) const override;

  private:
    QVariant Picture(int image) const;

    const CTreeCtrl& tree;
    const QTreeView& view;
};

// Reports what the user does.
class TreeWidget : public QTreeView {
  public:
    explicit TreeWidget(QWidget* parent);

    // Shows `shown`, whose native half owns this widget.
    void Show(const CTreeCtrl& shown, std::function<bool(Notification& notification)> reported);
    TreeModel& Model() const { return *items; }
    // While it is true, changes are the program's and are not reported.
    bool isSilent = false;

  protected:
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                         const QEvent* event) const override;
    void initViewItemOption(QStyleOptionViewItem* option) const override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

  private:
    bool Report(Notify code, TreeItem item, Point point = {});
    void PostReport(Notify code, const QModelIndex& index);
    void ReportMenuKey();

    TreeModel* items = nullptr;  // a child object
    std::function<bool(Notification& notification)> report;
};

std::unique_ptr<NativeWindow> MakeTreeView(CTreeCtrl& tree, CWnd& parent, const ControlSpec& spec);

}  // namespace permora::qt
