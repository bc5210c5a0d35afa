#include "framework/qt/tabs.h"

#include <QSignalBlocker>
#include <QStyle>
#include <QTabBar>
#include <QTabWidget>

#include "framework/qt/tabs_accessible.h"
#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

// The pages are in front of the empty pages of the toolkit's tab widget, which draws tabs and frame.
class TabsWindow final : public WidgetWindow<NativeTabs, QTabWidget> {
  public:
    TabsWindow(CWnd& window, std::unique_ptr<QTabWidget> made) : WidgetWindow(window, std::move(made)) {
        InstallTabsAccessibility();
        QObject::connect(&Widget(), &QTabWidget::currentChanged, &Widget(),
                         [this] { ReportNotification(Notify::kSelectionChanged); });
    }
    std::string Text() const override { return FromQt(Widget().tabText(Widget().currentIndex())); }
    void InsertTab(int index, const std::string& text) override {
        const QSignalBlocker noNotification(Widget());
        Widget().insertTab(index, new QWidget, ToQt(text));
    }
    void RemoveTab(int index) override {
        const QSignalBlocker noNotification(Widget());
        const std::unique_ptr<QWidget> page(Widget().widget(index));
        Widget().removeTab(index);
    }
    int Selection() const override { return Widget().currentIndex(); }
    void Select(int index) override {
        const QSignalBlocker noNotification(Widget());
        Widget().setCurrentIndex(index);
    }
    Size SizeAround(Size page) const override {
        const QSize bar = Widget().tabBar()->sizeHint();
        const int frame = 2 * FrameWidth();
        return {std::max(page.cx, bar.width()) + frame, page.cy + bar.height() + frame};
    }
    Rect PageArea() const override {
        const QRect geometry = PlaceOf(Widget());
        const int top = Widget().tabBar()->sizeHint().height() + FrameWidth();
        return FromQt(geometry.adjusted(FrameWidth(), top, -FrameWidth(), -FrameWidth()));
    }

  private:
    int FrameWidth() const {
        return Widget().style()->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, &Widget()) + 1;
    }
};

}  // namespace

std::unique_ptr<NativeTabs> MakeTabs(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    return std::make_unique<TabsWindow>(window, NewControl<QTabWidget>(parent, spec));
}

}  // namespace permora::qt
