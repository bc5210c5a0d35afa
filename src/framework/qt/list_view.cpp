// The list view's native half.
#include "framework/list_styles.h"
#include "framework/qt/list_widget.h"
#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

class ListViewWindow final : public WidgetWindow<NativeListView, ListWidget> {
  public:
    ListViewWindow(CListCtrl& shown, std::unique_ptr<ListWidget> made, DWORD initialStyle)
        : WidgetWindow(shown, std::move(made)), list(shown) {
        ApplyTabStop(Widget(), initialStyle);
        Widget().Show(list);
    }

    ListDisplay& Display() const override { return Widget(); }
    void SetText(const std::string& text) override {
        WidgetWindow::SetText(text);
        SetAccessibleName(text);  // the list does not show it
    }
    void Redraw() override { Widget().viewport()->repaint(); }
    void Invalidate() override { Widget().viewport()->update(); }
    void StyleChanged(DWORD before) override;

  private:
    CListCtrl& list;
};

// After a change of the view, the user's row stays in sight.
void ListViewWindow::StyleChanged(DWORD before) {
    Widget().AppearanceChanged();
    if (((before ^ style) & LVS_TYPEMASK) == 0) return;
    const int focus = list.GetFocusedRow();
    Widget().EnsureVisible(focus >= 0 ? focus : list.NextSelected(0));
}

}  // namespace

std::unique_ptr<NativeWindow> MakeListView(CListCtrl& list, CWnd& parent, const ControlSpec& spec) {
    return std::make_unique<ListViewWindow>(list, NewControl<ListWidget>(parent, spec), spec.style);
}

}  // namespace permora::qt
