// The list view's native half.
#include <algorithm>

#include "framework/list_styles.h"
#include "framework/qt/list_widget.h"
#include "framework/qt/widget.h"

namespace permora {
namespace {

class QtListView : public qt::WidgetWindow<NativeListView> {
  public:
    QtListView(CWnd& window, std::unique_ptr<qt::ListWidget> made, DWORD initialStyle)
        : WidgetWindow(window, std::move(made)) {
        style = initialStyle;
        List().Show(*this);
    }

    void SetText(const std::string& text) override {
        title = text;
        SetAccessibleName(text);
    }
    std::string Text() const override { return title; }
    void Redraw() override { List().viewport()->repaint(); }
    void Invalidate() override { List().viewport()->update(); }
    void EnsureVisible(int row) override { List().EnsureVisible(row); }
    bool IsInView(int row) override {
        return List().viewport()->rect().intersects(List().CellInViewport(row));
    }
    void StyleChanged(DWORD before) override;

  protected:
    void OnRowsChanged() override { List().RowsChanged(); }
    void OnRowTextChanged(int row) override { List().RowTextChanged(row); }
    void OnRowStateChanged(int row) override { List().RowStateChanged(row); }
    void OnColumnsChanged() override { List().ColumnsChanged(); }
    void OnAppearanceChanged() override { List().AppearanceChanged(); }
    void OnFocusRowChanged(int before) override { List().FocusRowChanged(before); }

  private:
    qt::ListWidget& List() const { return static_cast<qt::ListWidget&>(Widget()); }

    std::string title;  // for who does not see the list
};

// In another view the row that the user was at stays in sight.
void QtListView::StyleChanged(DWORD before) {
    List().AppearanceChanged();
    if (((before ^ style) & LVS_TYPEMASK) == 0) return;
    const int row = Rows().cursor.focus >= 0 ? Rows().cursor.focus : Rows().NextSelected(0);
    List().EnsureVisible(row);
}

}  // namespace

std::unique_ptr<NativeWindow> MakeNativeListView(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    auto widget = std::make_unique<qt::ListWidget>(qt::WidgetOf(parent));
    widget->setVisible(false);
    qt::ApplyTabStop(*widget, spec.style);
    qt::SetIdentity(*widget, "control", spec.id);
    widget->setGeometry(qt::ToQt(spec.rect));
    return std::make_unique<QtListView>(window, std::move(widget), spec.style);
}

}  // namespace permora
