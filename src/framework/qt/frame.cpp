// The frame window's native half: menu on top, the client area below it.
#include <QAbstractEventDispatcher>
#include <QAccessibleWidget>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QMenuBar>
#include <QScreen>
#include <QShortcut>
#include <QVBoxLayout>
#include <QWindow>
#include <optional>

#include "framework/frame_native.h"
#include "framework/program_icon.h"
#include "framework/qt/image.h"
#include "framework/qt/late_escape.h"
#include "framework/qt/list_keys.h"
#include "framework/qt/menus.h"
#include "framework/qt/widget.h"
#include "framework/screen_placement.h"
#include "framework/styles.h"

namespace permora {
namespace {

class FrameWidget : public QWidget {
  public:
    std::function<void()> onClose;
    std::function<void()> onStateChanged;

    FrameWidget() : bar(new QMenuBar(this)), column(new QVBoxLayout(this)) {
        // In the window on every desktop, since its keys work there.
        bar->setNativeMenuBar(false);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(0);
    }
    QMenuBar& Menu() { return *bar; }
    void ShowMenu() { column->setMenuBar(bar); }
    void SetClient(QWidget& client) { column->addWidget(&client, 1); }

  protected:
    void closeEvent(QCloseEvent* event) override {
        // The end of the session must not be refused.
        event->setAccepted(qGuiApp->isSavingSession());
        if (onClose) onClose();
    }

    void changeEvent(QEvent* event) override {
        QWidget::changeEvent(event);
        if (event->type() == QEvent::WindowStateChange && onStateChanged) onStateChanged();
    }

  private:
    QMenuBar* bar;
    QVBoxLayout* column;
};

// Assistive technology would skip a plain widget.
QAccessibleInterface* MakeFrameAccessible(const QString& /*className*/, QObject* object) {
    auto* frame = dynamic_cast<FrameWidget*>(object);
    return frame != nullptr ? new QAccessibleWidget(frame, QAccessible::Window) : nullptr;
}

// The first place of a window: in the middle of the screen, with room for its bars.
QRect FirstPlace() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) return {0, 0, 640, 480};
    const QRect room = screen->availableGeometry();
    QRect place({0, 0}, room.size() * 3 / 4);
    place.moveCenter(room.center());
    return place;
}

QKeySequence SequenceOf(const AcceleratorTemplate& accelerator) {
    Qt::KeyboardModifiers modifiers;
    modifiers.setFlag(Qt::ShiftModifier, (accelerator.flags & AcceleratorTemplate::kShift) != 0);
    modifiers.setFlag(Qt::ControlModifier, (accelerator.flags & AcceleratorTemplate::kControl) != 0);
    modifiers.setFlag(Qt::AltModifier, (accelerator.flags & AcceleratorTemplate::kAlt) != 0);
    const bool isVirtual = (accelerator.flags & AcceleratorTemplate::kVirtualKey) != 0;
    const int key = isVirtual ? qt::KeyOf(accelerator.key) : static_cast<int>(accelerator.key);
    return {QKeyCombination(modifiers, static_cast<Qt::Key>(key))};
}

// The contract's window is the client area; the top-level window around it is a second widget.
class FrameWindow final : public qt::WidgetWindow<NativeFrame> {
  public:
    FrameWindow(CWnd& window, std::unique_ptr<QWidget> client, std::unique_ptr<FrameWidget> made,
                FrameEvents& listener)
        : WidgetWindow(window, std::move(client)), top(std::move(made)), events(listener) {
        QAccessible::installFactory(MakeFrameAccessible);  // the toolkit keeps a function once
        qt::WatchForLateEscape(*top);
        top->onClose = [this] { PostClose(); };
        top->onStateChanged = [this] {
            if (!top->isMaximized()) rectBeforeMaximised.reset();
        };
        QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                         top.get(), [this] {
                             if (!top->isVisible()) return;
                             FitIntoScreen();
                             events.OnIdle();
                         });
        auto* menuKey = new QShortcut(QKeySequence(Qt::Key_F10), top.get());
        QObject::connect(menuKey, &QShortcut::activated, top.get(), [this] {
            if (!top->Menu().actions().isEmpty()) top->Menu().setActiveAction(top->Menu().actions().first());
        });
    }
    ~FrameWindow() override { Widget().setParent(nullptr); }  // it has an owner of its own
    FrameWindow(const FrameWindow&) = delete;
    FrameWindow& operator=(const FrameWindow&) = delete;

    void SetText(const std::string& text) override {
        WidgetWindow::SetText(text);
        qt::SetTitle(*top, text);
    }
    void SetEnabled(bool enabled) override { top->setEnabled(enabled); }
    void SetVisible(bool visible) override { top->setVisible(visible); }
    void Redraw() override { top->repaint(); }
    Rect ScreenRect() const override { return qt::FromQt(QRect(top->pos(), top->size())); }
    void Move(const Rect& rect) override {
        top->move(rect.left, rect.top);
        top->resize(rect.Width(), rect.Height());
    }
    void SetAccessibleName(const std::string& name) override { top->setAccessibleName(qt::ToQt(name)); }

    void SetMenu(const CMenu& menu) override;
    void SetAccelerators(std::span<const AcceleratorTemplate> accelerators) override;
    void SetIcon(const CIcon& icon) override { top->setWindowIcon(qt::ToQt(icon)); }
    WindowPlacement Placement() const override;
    void Place(const WindowPlacement& placement) override;
    void Activate() override {
        top->setWindowState(top->windowState() & ~Qt::WindowMinimized);
        top->raise();
        top->activateWindow();
    }
    void PostClose() override {
        QMetaObject::invokeMethod(
            top.get(), [this] { events.OnCloseRequest(); }, Qt::QueuedConnection);
    }

  protected:
    // A bar has another size: its font or style has changed, or became known only when it was shown.
    bool OnEvent(QEvent& event) override {
        if (event.type() == QEvent::LayoutRequest && Window().HasWindow())
            ReportSize({Widget().width(), Widget().height()});
        return WidgetWindow::OnEvent(event);
    }

  private:
    void FitIntoScreen();
    void PostChosen(unsigned int id) {
        QMetaObject::invokeMethod(
            top.get(), [this, id] { events.OnChosen(id); }, Qt::QueuedConnection);
    }

    void PostEscape(unsigned int id) {
        QMetaObject::invokeMethod(
            top.get(), [this, id] { events.OnEscape(id); }, Qt::QueuedConnection);
    }

    std::unique_ptr<FrameWidget> top;
    FrameEvents& events;
    // The normal place of a window that was shown maximised. The toolkit remembers it without the window's
    // frame, which it did not know yet.
    std::optional<Rect> rectBeforeMaximised;
    // The place of the window until its frame is known, which must be on the screen as well.
    std::optional<Rect> unfitted;
};

void FrameWindow::SetMenu(const CMenu& menu) {
    qt::MenuHandlers handlers;
    handlers.opening = [this](CMenu::Items& items) { events.OnMenuOpening(items); };
    handlers.highlighted = [this](unsigned int id) { events.OnHighlight(id); };
    handlers.chosen = [this](unsigned int id) { PostChosen(id); };
    for (const MenuItem& item : menu.Shared()->entries)
        if (item.popup != nullptr)
            qt::ShowItems(*top->Menu().addMenu(qt::MenuText(item.text)), item.popup, handlers);
    top->ShowMenu();
}

void FrameWindow::SetAccelerators(std::span<const AcceleratorTemplate> accelerators) {
    for (const AcceleratorTemplate& each : accelerators) {
        auto* key = new QShortcut(SequenceOf(each), top.get());
        key->setAutoRepeat(false);  // a key held too long must not delete twice
        const bool isEscape = key->key() == QKeySequence(Qt::Key_Escape);
        QObject::connect(key, &QShortcut::activated, top.get(), [this, isEscape, id = each.command] {
            if (!isEscape)
                PostChosen(id);
            else if (!qt::IsLateEscape(*top))
                PostEscape(id);
        });
    }
}

WindowPlacement FrameWindow::Placement() const {
    WindowPlacement placement{ScreenRect(), top->isMaximized() ? ShowState::kMaximised : ShowState::kNormal};
    if (rectBeforeMaximised) {
        placement.normalRect = *rectBeforeMaximised;
    } else if (top->isMaximized() || top->isMinimized()) {
        const QPoint border = top->geometry().topLeft() - top->pos();
        placement.normalRect = qt::FromQt(top->normalGeometry().translated(-border));
    }
    return placement;
}

void FrameWindow::Place(const WindowPlacement& placement) {
    top->setWindowState(top->windowState() & ~(Qt::WindowMinimized | Qt::WindowMaximized));
    Move(placement.normalRect);
    if (placement.showState == ShowState::kMaximised) {
        top->setWindowState(top->windowState() | Qt::WindowMaximized);
        rectBeforeMaximised = placement.normalRect;
    }
    unfitted = placement.normalRect;
    top->show();
    FitIntoScreen();
}

void FrameWindow::FitIntoScreen() {
    if (!unfitted || top->isMaximized() || top->isMinimized()) return;
    const QMargins frame = top->windowHandle()->frameMargins();
    if (frame.isNull()) return;  // not known yet, or there is none
    const Size extra{frame.left() + frame.right(), frame.top() + frame.bottom()};
    const Rect inner = *unfitted;
    const Rect outer{inner.left, inner.top, inner.right + extra.cx, inner.bottom + extra.cy};
    const Rect fitted = PutOnScreen(outer, ScreenAreas());
    unfitted.reset();
    if (fitted != outer) Move({fitted.left, fitted.top, fitted.right - extra.cx, fitted.bottom - extra.cy});
}

}  // namespace

std::unique_ptr<NativeFrame> MakeNativeFrame(CWnd& window, unsigned int id, FrameEvents& events) {
    auto top = std::make_unique<FrameWidget>();
    qt::SetIdentity(*top, "frame", id);
    top->setGeometry(FirstPlace());
    auto client = std::make_unique<QWidget>(top.get());
    top->SetClient(*client);
    return std::make_unique<FrameWindow>(window, std::move(client), std::move(top), events);
}

void SetProgramIcon(const CIcon& icon) {
    QGuiApplication::setWindowIcon(qt::ToQt(icon));
}

std::vector<Rect> ScreenAreas() {
    std::vector<Rect> areas;
    for (const QScreen* screen : QGuiApplication::screens())
        areas.push_back(qt::FromQt(screen->availableGeometry()));
    return areas;
}

}  // namespace permora
