#include "framework/qt/widget.h"

#include <QApplication>
#include <QMouseEvent>
#include <QStyle>
#include <QVariant>

#include "framework/styles.h"

namespace permora::qt {
namespace {

constexpr const char* kWindowProperty = "permoraWindow";
constexpr const char* kPlaceProperty = "permoraPlace";

}  // namespace

QString ToQt(const std::string& text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string FromQt(const QString& text) {
    return text.toStdString();
}

Rect FromQt(const QRect& rect) {
    return {rect.x(), rect.y(), rect.x() + rect.width(), rect.y() + rect.height()};
}

QRect ToQt(const Rect& rect) {
    return {rect.left, rect.top, rect.Width(), rect.Height()};
}

HWND HandleOf(QWidget& widget) {
    return reinterpret_cast<HWND>(&widget);
}

QWidget* WidgetOf(const CWnd& window) {
    return reinterpret_cast<QWidget*>(window.GetSafeHwnd());
}

QWidget* LiveWidget(HWND handle) {
    for (QWidget* widget : QApplication::allWidgets())
        if (HandleOf(*widget) == handle) return widget;
    return nullptr;
}

CWnd* WindowOf(const QWidget& widget) {
    return static_cast<CWnd*>(widget.property(kWindowProperty).value<void*>());
}

void SetWindow(QWidget& widget, CWnd& window) {
    widget.setProperty(kWindowProperty, QVariant::fromValue(static_cast<void*>(&window)));
}

EventFilter::EventFilter(QWidget& widget, std::function<bool(QEvent&)> function)
    : filter(std::move(function)) {
    widget.installEventFilter(this);
}

bool EventFilter::eventFilter(QObject* /*watched*/, QEvent* event) {
    return filter(*event);
}

void ApplyTabStop(QWidget& widget, DWORD style) {
    widget.setFocusPolicy((style & WS_TABSTOP) != 0 ? Qt::StrongFocus : Qt::ClickFocus);
}

void SetIdentity(QWidget& widget, const char* kind, unsigned int id) {
    widget.setObjectName(QStringLiteral("%1 %2").arg(QLatin1String(kind)).arg(static_cast<int>(id)));
}

void SetTitle(QWidget& widget, const std::string& text) {
    // The toolkit reads "[*]" as a placeholder.
    widget.setWindowTitle(ToQt(text).replace(QLatin1String("[*]"), QLatin1String("[*][*]")));
}

Rect ScreenRectOf(const QWidget& widget) {
    if (widget.isWindow()) return FromQt(widget.frameGeometry());
    return FromQt(QRect(widget.mapToGlobal(QPoint(0, 0)), widget.size()));
}

void MoveTo(QWidget& widget, const Rect& rect) {
    if (!widget.isWindow()) {
        PlaceChild(widget, ToQt(rect));
        return;
    }
    const QSize frame = widget.frameGeometry().size() - widget.size();
    widget.move(rect.left, rect.top);
    widget.resize(QSize(rect.Width(), rect.Height()) - frame);
}

QRect Mirrored(const QWidget& widget, const QRect& rect) {
    return QStyle::visualRect(widget.layoutDirection(), widget.rect(), rect);
}

void PlaceChild(QWidget& child, const QRect& place) {
    child.setProperty(kPlaceProperty, place);
    child.setGeometry(Mirrored(*child.parentWidget(), place));
}

// A window that has not been shown yet may have another width than its children have been told.
QRect PlaceOf(const QWidget& child) {
    const QVariant place = child.property(kPlaceProperty);
    return child.isRightToLeft() && place.isValid() ? place.toRect() : child.geometry();
}

void PlaceChildrenAgain(const QWidget& parent) {
    if (!parent.isRightToLeft()) return;
    for (QWidget* child : parent.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
        if (const QVariant place = child->property(kPlaceProperty); place.isValid() && !child->isWindow())
            PlaceChild(*child, place.toRect());
}

Point PositionIn(const QWidget& widget, const QEvent& mouseEvent) {
    const QPoint position = static_cast<const QMouseEvent&>(mouseEvent).position().toPoint();
    const QPoint place = QStyle::visualPos(widget.layoutDirection(), widget.rect(), position);
    return {place.x(), place.y()};
}

bool IsLeftPress(const QEvent& event) {
    return static_cast<const QMouseEvent&>(event).button() == Qt::LeftButton;
}

}  // namespace permora::qt
