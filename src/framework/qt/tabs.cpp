#include "framework/qt/tabs.h"

#include <QSignalBlocker>
#include <QStyle>
#include <QTabBar>
#include <QTabWidget>

#include "framework/qt/widget.h"

namespace permora::qt {
namespace {

// The pages stand in front of the empty ones of the toolkit's tab widget, which draws tabs and frame.
class TabsWindow final : public WidgetWindow<NativeTabs> {
  public:
    TabsWindow(CWnd& window, std::unique_ptr<QTabWidget> made) : WidgetWindow(window, std::move(made)) {
        QObject::connect(&Tabs(), &QTabWidget::currentChanged, &Tabs(),
                         [this] { ReportNotification(Notify::kSelectionChanged); });
    }
    void SetText(const std::string& /*text*/) override {}
    std::string Text() const override { return FromQt(Tabs().tabText(Tabs().currentIndex())); }
    void InsertTab(int index, const std::string& text) override {
        const QSignalBlocker noNotification(Tabs());
        Tabs().insertTab(index, new QWidget, ToQt(text));
    }
    void RemoveTab(int index) override {
        const QSignalBlocker noNotification(Tabs());
        const std::unique_ptr<QWidget> page(Tabs().widget(index));
        Tabs().removeTab(index);
    }
    int Selection() const override { return Tabs().currentIndex(); }
    void Select(int index) override {
        const QSignalBlocker noNotification(Tabs());
        Tabs().setCurrentIndex(index);
    }
    Size SizeAround(Size page) const override {
        const QSize bar = Tabs().tabBar()->sizeHint();
        const int frame = 2 * FrameWidth();
        return {std::max(page.cx, bar.width()) + frame, page.cy + bar.height() + frame};
    }
    Rect PageArea() const override {
        const QRect geometry = Tabs().geometry();
        const int top = Tabs().tabBar()->sizeHint().height() + FrameWidth();
        return FromQt(geometry.adjusted(FrameWidth(), top, -FrameWidth(), -FrameWidth()));
    }

  private:
    QTabWidget& Tabs() const { return static_cast<QTabWidget&>(Widget()); }
    int FrameWidth() const {
        return Tabs().style()->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, &Tabs()) + 1;
    }
};

}  // namespace

std::unique_ptr<NativeTabs> MakeTabs(CWnd& window, CWnd& parent, const ControlSpec& spec) {
    auto tabs = std::make_unique<QTabWidget>(WidgetOf(parent));
    tabs->setVisible(false);
    tabs->setGeometry(ToQt(spec.rect));
    SetIdentity(*tabs, "control", spec.id);
    return std::make_unique<TabsWindow>(window, std::move(tabs));
}

}  // namespace permora::qt
