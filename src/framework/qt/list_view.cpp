// The list view's native half.
#include <algorithm>

#include "framework/list_styles.h"
#include "framework/qt/list_widget.h"
#include "framework/qt/widget.h"

namespace permora {
namespace {

class QtListView final : public qt::WidgetWindow<NativeListView, qt::ListWidget> {
  public:
    QtListView(CWnd& window, std::unique_ptr<qt::ListWidget> made, DWORD initialStyle)
        : WidgetWindow(window, std::move(made)) {
        style = initialStyle;
        qt::ApplyTabStop(Widget(), style);
        Widget().Show(*this);
    }

    void SetText(const std::string& text) override {
        WidgetWindow::SetText(text);
        SetAccessibleName(text);  // the list does not show it
    }
    void Redraw() override { Widget().viewport()->repaint(); }
    void Invalidate() override { Widget().viewport()->update(); }
    void EnsureVisible(int row) override { Widget().EnsureVisible(row); }
    bool IsInView(int row) override {
        return Widget().viewport()->rect().intersects(Widget().CellInViewport(row));
    }
    void StyleChanged(DWORD before) override;

  protected:
    void OnRowsChanged() override { Widget().RowsChanged(); }
    void OnRowTextChanged(int row) override { Widget().RowTextChanged(row); }
    void OnRowStateChanged(int row) override { Widget().RowStateChanged(row); }
    void OnColumnsChanged() override { Widget().ColumnsChanged(); }
    void OnAppearanceChanged() override { Widget().AppearanceChanged(); }
    void OnFocusRowChanged(int before) override { Widget().FocusRowChanged(before); }
};

// After a change of the view, the user's row stays in sight.
void QtListView::StyleChanged(DWORD before) {
    Widget().AppearanceChanged();
    if (((before ^ style) & LVS_TYPEMASK) == 0) return;
    const int row = Rows().cursor.focus >= 0 ? Rows().cursor.focus : Rows().NextSelected(0);
    Widget().EnsureVisible(row);
}

}  // namespace

std::unique_ptr<NativeWindow> MakeNativeListView(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    return std::make_unique<QtListView>(window, qt::NewControl<qt::ListWidget>(parent, spec), spec.style);
}

}  // namespace permora
