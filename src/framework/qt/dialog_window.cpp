#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QEventLoop>
#include <QKeyEvent>
#include <QScreen>
#include <QStyle>
#include <QWindow>
#include <algorithm>

#include "framework/native.h"
#include "framework/qt/paint.h"
#include "framework/qt/push_button.h"
#include "framework/qt/widget.h"
#include "framework/styles.h"

namespace permora {
namespace {

constexpr int kFrameWidth = 4;  // of most desktops' windows

// The template places the controls; the shared half has the rules for the keyboard.
class DialogWidget : public QDialog {
  public:
    DialogWidget(QWidget* parent, Qt::WindowFlags flags, DialogKeys& handler)
        : QDialog(parent, flags), keys(handler) {}

    void reject() override { keys.OnEscapeKeyOrCloseBox(); }

  protected:
    void keyPressEvent(QKeyEvent* event) override {
        const bool isControl = event->modifiers().testFlag(Qt::ControlModifier);
        switch (event->key()) {
            case Qt::Key_Return:
            case Qt::Key_Enter:
                keys.OnEnterKey();
                return;
            case Qt::Key_Escape:
                keys.OnEscapeKeyOrCloseBox();
                return;
            case Qt::Key_F1:
                if (event->modifiers() != Qt::NoModifier) break;
                keys.OnHelpKey();
                return;
            case Qt::Key_PageDown:
            case Qt::Key_PageUp:
                if (isControl && keys.OnNextPageKey(event->key() == Qt::Key_PageDown ? 1 : -1)) return;
                break;
            case Qt::Key_Tab:
            case Qt::Key_Backtab:
                if (isControl && keys.OnNextPageKey(event->key() == Qt::Key_Tab ? 1 : -1)) return;
                break;
            default:
                break;
        }
        // Bypasses the toolkit's dialog, which has rules of its own for Enter and Escape.
        QWidget::keyPressEvent(event);  // NOLINT(bugprone-parent-virtual-call)
    }
    // The end of the program asks all windows, and must not be held up by one that holds nothing up.
    void closeEvent(QCloseEvent* event) override {
        event->setAccepted(!isModal());
        keys.OnEscapeKeyOrCloseBox();
    }

  private:
    DialogKeys& keys;
};

// A window in which the program paints and watches the mouse.
template <class Kind>
class PaintedWindow : public qt::WidgetWindow<Kind> {
  public:
    PaintedWindow(CWnd& window, std::unique_ptr<QWidget> made)
        : qt::WidgetWindow<Kind>(window, std::move(made)) {
        this->Widget().setMouseTracking(true);
    }

  protected:
    bool OnEvent(QEvent& event) override {
        if (event.type() == QEvent::Paint)
            qt::PaintWith(this->Widget(), [this](CDC& dc) { this->ReportPaint(dc); });
        return qt::WidgetWindow<Kind>::OnEvent(event);
    }
};

class DialogWindow final : public PaintedWindow<NativeDialog> {
  public:
    DialogWindow(CWnd& window, std::unique_ptr<DialogWidget> made) : PaintedWindow(window, std::move(made)) {
        QObject::connect(qApp, &QApplication::focusChanged, &Widget(),
                         [this] { qt::ShowDefaultButton(Widget()); });
    }
    void SetText(const std::string& text) override {
        PaintedWindow::SetText(text);
        qt::SetTitle(Widget(), text);
    }
    void SetClientSize(Size size, Sizing sizing) override;
    void Enlarge(Size client) override;
    void SetTabOrder(std::span<CWnd* const> controls) override {
        for (std::size_t i = 1; i < controls.size(); ++i)
            QWidget::setTabOrder(qt::WidgetOf(*controls[i - 1]), qt::WidgetOf(*controls[i]));
    }
    void RunModal() override {
        hasEnded = false;
        Widget().setWindowModality(Qt::ApplicationModal);
        qt::ShowDefaultButton(Widget());
        Widget().show();
        if (!hasEnded) {
            QEventLoop nested;
            loop = &nested;
            nested.exec(QEventLoop::DialogExec);
            loop = nullptr;
        }
        Widget().hide();
        // Another modal window may stand between this one and its owner.
        QWidget* below = QApplication::activeModalWidget();
        if (below == nullptr) below = Widget().parentWidget();
        if (below != nullptr) below->activateWindow();
    }
    void EndModal() override {
        hasEnded = true;
        if (loop != nullptr) loop->quit();
    }
    void ShowBeside() override;

  protected:
    bool OnEvent(QEvent& event) override {
        if (event.type() == QEvent::WindowBlocked && isBeside) FollowModalWindow();
        return PaintedWindow::OnEvent(event);
    }

  private:
    QSize ScreenRoom() const;
    void PlaceBeside(const QWidget& shown);
    void FollowModalWindow();

    QEventLoop* loop = nullptr;
    bool hasEnded = false;
    bool isBeside = false;  // not modal, and not blocked by what is
};

void DialogWindow::ShowBeside() {
    if (!isBeside) {
        isBeside = true;
        // An ordinary window: one that belongs to another would always stand before it.
        Widget().setWindowFlags(Qt::Window);
        const QWidget* active = QApplication::activeWindow();
        if (active == nullptr) active = Widget().parentWidget();
        if (active != nullptr) PlaceBeside(*active);
    }
    Widget().setWindowState(Widget().windowState() & ~Qt::WindowMinimized);
    Widget().show();
    FollowModalWindow();
    Widget().raise();
    Widget().activateWindow();
}

// Where it covers as little of `shown` as the screen allows.
void DialogWindow::PlaceBeside(const QWidget& shown) {
    const QRect other = shown.frameGeometry();
    const QRect screen = shown.screen()->availableGeometry();
    const QSize size = Widget().size() + QSize(2 * kFrameWidth, 0);
    const bool isRoomier = other.left() - screen.left() > screen.right() - other.right();
    const int left = isRoomier ? other.left() - size.width() : other.right() + 1;
    const int title = Widget().style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, &Widget());
    const int mostLeft = std::max(screen.left(), screen.right() + 1 - size.width());
    const int mostTop = std::max(screen.top(), screen.bottom() + 1 - size.height() - title - kFrameWidth);
    Widget().move(std::clamp(left, screen.left(), mostLeft), std::clamp(other.top(), screen.top(), mostTop));
}

// The toolkit blocks all windows but those that belong to the modal one. So this window belongs to whichever
// is modal, for as long as that is shown.
void DialogWindow::FollowModalWindow() {
    QWindow* own = Widget().windowHandle();
    if (own == nullptr) return;
    QWindow* modal = QGuiApplication::modalWindow();
    // A question of its own waits for it, as for any window.
    if (modal != nullptr && own->isAncestorOf(modal, QWindow::IncludeTransients)) return;
    const QWidget* owner = Widget().parentWidget();
    QWindow* followed = modal != nullptr ? modal : owner != nullptr ? owner->windowHandle() : nullptr;
    if (own->transientParent() == followed) return;
    own->setTransientParent(followed);
    if (modal != nullptr)
        QObject::connect(
            modal, &QWindow::visibleChanged, &Widget(), [this] { FollowModalWindow(); },
            Qt::QueuedConnection);
}

// The room for a window's contents.
QSize DialogWindow::ScreenRoom() const {
    const int title = Widget().style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, &Widget());
    return Widget().screen()->availableSize() - QSize(2 * kFrameWidth, title + kFrameWidth);
}

void DialogWindow::Enlarge(Size client) {
    Widget().resize(QSize(client.cx, client.cy).boundedTo(ScreenRoom()).expandedTo(Widget().minimumSize()));
}

void DialogWindow::SetClientSize(Size size, Sizing sizing) {
    if (sizing == Sizing::kFixed) {
        Widget().setFixedSize(size.cx, size.cy);
        return;
    }
    const QSize least = QSize(size.cx, size.cy).boundedTo(ScreenRoom());
    const bool hasSize = Widget().testAttribute(Qt::WA_Resized);
    Widget().setMinimumSize(least);
    Widget().setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    Widget().resize(hasSize ? Widget().size().expandedTo(least) : least);
}

}  // namespace

std::unique_ptr<NativeDialog> MakeNativeDialog(CWnd& window, CWnd* owner, DWORD style,
                                               unsigned int templateId, DialogKeys& keys) {
    Qt::WindowFlags flags = Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint;
    if ((style & WS_SYSMENU) != 0) flags |= Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;
    QWidget* ownerWidget = owner != nullptr ? qt::WidgetOf(*owner) : nullptr;
    auto widget =
        std::make_unique<DialogWidget>(ownerWidget != nullptr ? ownerWidget->window() : nullptr, flags, keys);
    qt::SetIdentity(*widget, "dialog", templateId);
    return std::make_unique<DialogWindow>(window, std::move(widget));
}

std::unique_ptr<NativeWindow> MakeNativePane(CWnd& window, CWnd& parent, unsigned int templateId) {
    auto widget = std::make_unique<QWidget>(qt::WidgetOf(parent));
    qt::SetIdentity(*widget, "pane", templateId);
    return std::make_unique<PaintedWindow<NativeWindow>>(window, std::move(widget));
}

}  // namespace permora
