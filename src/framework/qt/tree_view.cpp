// The tree view's native half.
#include <utility>

#include "framework/qt/tree_widget.h"
#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

class TreeViewWindow final : public WidgetWindow<NativeTreeView, TreeWidget> {
  public:
    TreeViewWindow(CTreeCtrl& shown, std::unique_ptr<TreeWidget> made, DWORD initialStyle)
        : WidgetWindow(shown, std::move(made)) {
        ApplyTabStop(Widget(), initialStyle);
        Widget().Show(shown, [this](Notification& notification) { return ReportNotification(notification); });
    }

    void SetText(const std::string& text) override {
        WidgetWindow::SetText(text);
        SetAccessibleName(text);  // the tree does not show it
    }
    void Redraw() override { Widget().viewport()->repaint(); }
    void Invalidate() override { Widget().viewport()->update(); }

    void BeginInsert(TreeItem parent, int place, int count) override {
        Widget().isSilent = true;
        Widget().Model().BeginInsert(parent, place, count);
    }
    void EndInsert() override {
        Widget().Model().EndInsert();
        Widget().isSilent = false;
    }
    void BeginDelete(TreeItem parent, int place, int count) override {
        Widget().isSilent = true;
        Widget().Model().BeginDelete(parent, place, count);
    }
    void EndDelete() override {
        Widget().Model().EndDelete();
        Widget().isSilent = false;
    }
    void ItemChanged(TreeItem item) override { Widget().Model().TellOfChange(item); }

    TreeItem Selected() const override {
        const QModelIndex current = Widget().currentIndex();
        return current.isValid() ? TreeModel::ItemAt(current) : kNoTreeItem;
    }
    void Select(TreeItem item) override {
        Silently([&] { Widget().setCurrentIndex(Widget().Model().IndexOf(item)); });
    }
    void Expand(TreeItem item, bool isOpen) override {
        Silently([&] { Widget().setExpanded(Widget().Model().IndexOf(item), isOpen); });
    }
    bool IsExpanded(TreeItem item) const override {
        return Widget().isExpanded(Widget().Model().IndexOf(item));
    }

  private:
    template <class Change>
    void Silently(const Change& change) {
        Widget().isSilent = true;
        change();
        Widget().isSilent = false;
    }
};

}  // namespace

std::unique_ptr<NativeWindow> MakeTreeView(CTreeCtrl& tree, CWnd& parent, const ControlSpec& spec) {
    return std::make_unique<TreeViewWindow>(tree, NewControl<TreeWidget>(parent, spec), spec.style);
}

}  // namespace permora::qt
