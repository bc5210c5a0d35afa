// The common half of this back end's windows: a widget, its events, and its part of NativeWindow.
#pragma once

#include <QEvent>
#include <QObject>
#include <QString>
#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "framework/native.h"

namespace permora::qt {

QString ToQt(const std::string& text);
std::string FromQt(const QString& text);
Rect FromQt(const QRect& rect);
QRect ToQt(const Rect& rect);

// The widget behind a window; null while it has none.
QWidget* WidgetOf(const CWnd& window);
HWND HandleOf(QWidget& widget);
// The widget of a handle that may be stale; null then.
QWidget* LiveWidget(HWND handle);

// The window of a widget; null when it has none.
CWnd* WindowOf(const QWidget& widget);
void SetWindow(QWidget& widget, CWnd& window);

// Shows `widget`'s events to a function before the widget gets them; the widget does not get an event for
// which the function returns true.
class EventFilter : public QObject {
  public:
    EventFilter(QWidget& widget, std::function<bool(QEvent&)> filter);
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    std::function<bool(QEvent&)> filter;
};

// Makes Tab reach the widget only if the template has WS_TABSTOP.
void ApplyTabStop(QWidget& widget, DWORD style);
// Names the widget after its control or template, for tests and automation.
void SetIdentity(QWidget& widget, const char* kind, unsigned int id);
void SetTitle(QWidget& widget, const std::string& text);
Rect ScreenRectOf(const QWidget& widget);
void MoveTo(QWidget& widget, const Rect& rect);

// Where the layout goes from right to left, the coordinates of a window's client area begin at its right
// edge, so that all that stands in it is mirrored. A child keeps its place when its parent's width changes.
void PlaceChild(QWidget& child, const QRect& place);
QRect PlaceOf(const QWidget& child);
// After `parent` has got another size.
void PlaceChildrenAgain(const QWidget& parent);
// From such coordinates to the toolkit's, and back.
QRect Mirrored(const QWidget& widget, const QRect& rect);
Point PositionIn(const QWidget& widget, const QEvent& mouseEvent);
bool IsLeftPress(const QEvent& event);

// Makes the widget of a control, hidden until the shared half shows it.
template <class Own, class... Arguments>
std::unique_ptr<Own> NewControl(CWnd& parent, const ControlSpec& spec, Arguments&&... arguments) {
    auto widget = std::make_unique<Own>(WidgetOf(parent), std::forward<Arguments>(arguments)...);
    widget->setVisible(false);
    PlaceChild(*widget, ToQt(spec.rect));
    SetIdentity(*widget, "control", spec.id);
    return widget;
}

// `Kind` is NativeWindow or one of its kinds, `Own` the class of the widget.
template <class Kind, class Own = QWidget>
class WidgetWindow : public Kind {
  public:
    WidgetWindow(CWnd& window, std::unique_ptr<Own> made)
        : Kind(window),
          widget(std::move(made)),
          filter(*widget, [this](QEvent& event) { return OnEvent(event); }) {
        SetWindow(*widget, window);
    }

    HWND Handle() const override { return HandleOf(*widget); }
    void SetText(const std::string& newText) override { keptText = newText; }
    std::string Text() const override { return keptText; }
    void SetEnabled(bool enabled) override { widget->setEnabled(enabled); }
    void SetVisible(bool visible) override { widget->setVisible(visible); }
    void Redraw() override { widget->repaint(); }
    void Invalidate() override { widget->update(); }
    void SetFocus() override { widget->setFocus(Qt::OtherFocusReason); }
    bool HasFocus() const override { return widget->hasFocus(); }
    Rect ScreenRect() const override { return ScreenRectOf(*widget); }
    Rect ClientRect() const override { return {0, 0, widget->width(), widget->height()}; }
    Rect RectInParent() const override { return FromQt(PlaceOf(*widget)); }
    void Move(const Rect& rect) override { MoveTo(*widget, rect); }
    Size PreferredSize() const override {
        const QSize hint = widget->sizeHint();
        return {hint.width(), hint.height()};
    }
    void SetAccessibleName(const std::string& name) override { widget->setAccessibleName(ToQt(name)); }
    void SetToolTip(const std::string& text) override { widget->setToolTip(ToQt(text)); }

  protected:
    Own& Widget() const { return *widget; }
    // Comes before the widget's own functions; true keeps the event from them.
    virtual bool OnEvent(QEvent& event) {
        // Nothing is reported before the window of the contract owns this object.
        if (!Kind::Window().HasWindow()) return false;
        switch (event.type()) {
            case QEvent::Resize:
                PlaceChildrenAgain(*widget);
                Kind::ReportSize({widget->width(), widget->height()});
                return false;
            case QEvent::FocusIn:
                Kind::ReportFocus();
                return false;
            case QEvent::MouseMove:
                return Kind::ReportMouseMove(PositionIn(*widget, event)) == Handled::kYes;
            case QEvent::MouseButtonPress:
                return IsLeftPress(event) &&
                       Kind::ReportLeftButtonDown(PositionIn(*widget, event)) == Handled::kYes;
            default:
                return false;
        }
    }

  private:
    std::unique_ptr<Own> widget;
    EventFilter filter;
    std::string keptText;
};

}  // namespace permora::qt
