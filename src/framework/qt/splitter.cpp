// The splitter's native half.
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>

#include "framework/frame_native.h"
#include "framework/qt/widget.h"

namespace permora {
namespace {

class SplitterWidget : public QWidget {
  public:
    explicit SplitterWidget(QWidget* parent) : QWidget(parent) { setCursor(Qt::SplitHCursor); }
    std::function<void(int left)> onMoved;
    std::function<void()> onDropped;

  protected:
    void mousePressEvent(QMouseEvent* event) override {
        event->setAccepted(event->button() == Qt::LeftButton);
        grip = event->position().toPoint().x();
    }
    // Comes only while a button is held.
    void mouseMoveEvent(QMouseEvent* event) override {
        if ((event->buttons() & Qt::LeftButton) == 0) return;
        const QPoint moved = mapToParent(event->position().toPoint()) - QPoint(grip, 0);
        onMoved(qt::Mirrored(*parentWidget(), QRect(moved, size())).left());
    }
    void mouseReleaseEvent(QMouseEvent* event) override {
        if (event->button() == Qt::LeftButton) onDropped();
    }
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        QStyleOption option;
        option.initFrom(this);
        option.state |= QStyle::State_Horizontal;
        style()->drawControl(QStyle::CE_Splitter, &option, &painter, this);
    }

  private:
    int grip = 0;  // where the bar was taken
};

}  // namespace

std::unique_ptr<NativeWindow> MakeNativeSplitter(CWnd& window, CWnd& parent,
                                                 std::function<void(int left)> moved,
                                                 std::function<void()> dropped) {
    auto widget = std::make_unique<SplitterWidget>(qt::WidgetOf(parent));
    widget->onMoved = std::move(moved);
    widget->onDropped = std::move(dropped);
    return std::make_unique<qt::WidgetWindow<NativeWindow, SplitterWidget>>(window, std::move(widget));
}

}  // namespace permora
