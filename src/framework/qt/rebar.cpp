// The rebar: bars side by side in one row, each with a gripper.
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QStyle>
#include <QStyleOption>
#include <algorithm>

#include "framework/frame_native.h"
#include "framework/qt/widget.h"

namespace permora {
namespace {

constexpr int kGripperWidth = 8;
constexpr int kBandMargin = 2;  // above, below and between the bands

class ReBarWidget : public QWidget {
  public:
    using QWidget::QWidget;

    void AddBand(QWidget& bar, int leastWidth) {
        bands.append({&bar, bar.size(), kGripperWidth + leastWidth + kBandMargin});
        bar.setParent(this);
        bar.setCursor(Qt::ArrowCursor);  // not that of the grippers
        bar.show();
        LayOut();
    }
    void LayOut();
    QSize sizeHint() const override {
        int height = 0;
        for (const Band& band : bands)
            if (IsShown(band)) height = std::max(height, SizeOf(band).height());
        return {RoomAfter(-1), height + 2 * kBandMargin + kLineHeight};
    }

  protected:
    bool event(QEvent* event) override {
        if (event->type() == QEvent::LayoutRequest) {
            LayOut();
            updateGeometry();
        }
        return QWidget::event(event);
    }
    void resizeEvent(QResizeEvent* /*event*/) override { LayOut(); }
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override { dragged = GripperAt(qt::PositionIn(*this, *event)); }
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* /*event*/) override { dragged = -1; }

  private:
    static constexpr int kLineHeight = 2;
    struct Band {
        QPointer<QWidget> bar;
        QSize size;         // with which it came
        int leastWidth;     // with the gripper
        int userWidth = 0;  // to which the user dragged it, with the gripper; 0: not
        int left = 0;
    };

    static bool IsShown(const Band& band) { return band.bar != nullptr && !band.bar->isHidden(); }
    // A bar without a size of its own keeps its initial height.
    static QSize SizeOf(const Band& band) {
        return band.bar->sizeHint().isValid() ? band.bar->sizeHint() : band.size;
    }
    static int WidthOf(const Band& band) {
        return band.userWidth != 0 ? band.userWidth : kGripperWidth + SizeOf(band).width() + 2 * kBandMargin;
    }
    QRect GripperOf(const Band& band) const {
        return {band.left + kBandMargin, kBandMargin, kGripperWidth - kBandMargin,
                height() - 2 * kBandMargin - kLineHeight};
    }
    // The shown band whose left edge can be moved there; -1: none. The first one's cannot.
    qsizetype GripperAt(Point point) const;
    qsizetype ShownBefore(qsizetype index) const;
    // The width that the visible bands after that one need.
    int RoomAfter(qsizetype index) const {
        int room = 0;
        for (qsizetype i = index + 1; i < bands.size(); ++i)
            room += IsShown(bands[i]) ? bands[i].leastWidth : 0;
        return room;
    }
    int RoomFor(qsizetype index) const {
        const Band& band = bands[index];
        return std::max(width() - band.left - RoomAfter(index), band.leastWidth);
    }

    QList<Band> bands;
    qsizetype dragged = -1;
};

qsizetype ReBarWidget::ShownBefore(qsizetype index) const {
    do {
        --index;
    } while (index >= 0 && !IsShown(bands[index]));
    return index;
}

void ReBarWidget::LayOut() {
    const qsizetype last = ShownBefore(bands.size());
    int left = 0;
    for (qsizetype i = 0; i <= last; ++i) {
        Band& band = bands[i];
        if (!IsShown(band)) continue;
        band.left = left;
        // In a narrow window, a part of every bar stays visible. The last one extends to the edge.
        const int bandWidth = i == last ? RoomFor(i) : std::min(WidthOf(band), RoomFor(i));
        const int barWidth = bandWidth - kGripperWidth - (i == last ? 0 : kBandMargin);
        const int barHeight = SizeOf(band).height();
        const int top = kBandMargin + (height() - 2 * kBandMargin - kLineHeight - barHeight) / 2;
        qt::PlaceChild(*band.bar, {left + kGripperWidth, top, barWidth, barHeight});
        left += bandWidth;
    }
    update();
}

void ReBarWidget::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    for (const Band& band : bands) {
        if (!IsShown(band)) continue;
        QStyleOption option;
        option.initFrom(this);
        option.rect = qt::Mirrored(*this, GripperOf(band));
        option.state |= QStyle::State_Horizontal;
        style()->drawPrimitive(QStyle::PE_IndicatorToolBarHandle, &option, &painter, this);
    }
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawLine(0, height() - 2, width(), height() - 2);
    painter.setPen(palette().color(QPalette::Midlight));
    painter.drawLine(0, height() - 1, width(), height() - 1);
}

qsizetype ReBarWidget::GripperAt(Point point) const {
    for (qsizetype i = 0; i < bands.size(); ++i)
        if (IsShown(bands[i]) && ShownBefore(i) >= 0 && GripperOf(bands[i]).contains(point.x, point.y))
            return i;
    return -1;
}

void ReBarWidget::mouseMoveEvent(QMouseEvent* event) {
    const Point point = qt::PositionIn(*this, *event);
    // A menu that opened meanwhile may have taken the release.
    if (!event->buttons().testFlag(Qt::LeftButton)) dragged = -1;
    if (dragged < 0) {
        setCursor(GripperAt(point) >= 0 ? Qt::SplitHCursor : Qt::ArrowCursor);
        return;
    }
    const qsizetype index = ShownBefore(dragged);
    if (index < 0) return;  // the bar before it has been hidden
    Band& before = bands[index];
    before.userWidth = std::clamp(point.x - before.left, before.leastWidth, RoomFor(index));
    LayOut();
}

class ReBarWindow final : public qt::WidgetWindow<NativeReBar, ReBarWidget> {
  public:
    using WidgetWindow::WidgetWindow;
    void Move(const Rect& rect) override {
        WidgetWindow::Move(rect);
        LayOut();  // also while nothing is shown yet
    }
    void AddBand(CWnd& bar, int leastWidth) override { Widget().AddBand(*qt::WidgetOf(bar), leastWidth); }
    void LayOut() override { Widget().LayOut(); }
};

}  // namespace

std::unique_ptr<NativeReBar> MakeNativeReBar(CWnd& window, CWnd& parent) {
    auto widget = std::make_unique<ReBarWidget>(qt::WidgetOf(parent));
    widget->setVisible(false);
    widget->setMouseTracking(true);
    widget->setObjectName(QStringLiteral("rebar"));
    return std::make_unique<ReBarWindow>(window, std::move(widget));
}

}  // namespace permora
