#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QEventLoop>
#include <QKeyEvent>

#include "framework/native.h"
#include "framework/qt/paint.h"
#include "framework/qt/push_button.h"
#include "framework/qt/widget.h"
#include "framework/styles.h"

namespace permora {
namespace {

using PaintFunction = std::function<void(CDC&)>;

// The controls stand where the template says; the keyboard's rules are the shared half's.
class DialogWidget : public QDialog {
  public:
    DialogWidget(QWidget* parent, Qt::WindowFlags flags, DialogKeys& handler)
        : QDialog(parent, flags), keys(handler) {
        setMouseTracking(true);
    }
    PaintFunction paint;

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
        // Past the toolkit's dialog, which has rules of its own for Enter and Escape.
        QWidget::keyPressEvent(event);  // NOLINT(bugprone-parent-virtual-call)
    }
    void closeEvent(QCloseEvent* event) override {
        event->ignore();
        keys.OnEscapeKeyOrCloseBox();
    }
    void paintEvent(QPaintEvent* event) override {
        QDialog::paintEvent(event);
        qt::PaintWith(*this, paint);
    }

  private:
    DialogKeys& keys;
};

class PaneWidget : public QWidget {
  public:
    explicit PaneWidget(QWidget* parent) : QWidget(parent) { setMouseTracking(true); }
    PaintFunction paint;

  protected:
    void paintEvent(QPaintEvent* event) override {
        QWidget::paintEvent(event);
        qt::PaintWith(*this, paint);
    }
};

class DialogWindow final : public qt::WidgetWindow<NativeDialog> {
  public:
    DialogWindow(CWnd& window, std::unique_ptr<DialogWidget> made) : WidgetWindow(window, std::move(made)) {
        Dialog().paint = [this](CDC& dc) { ReportPaint(dc); };
        QObject::connect(qApp, &QApplication::focusChanged, &Widget(),
                         [this] { qt::ShowDefaultButton(Widget()); });
    }
    void SetText(const std::string& text) override {
        title = text;
        qt::SetTitle(Widget(), text);
    }
    std::string Text() const override { return title; }
    void SetClientSize(Size size) override { Widget().setFixedSize(size.cx, size.cy); }
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

  private:
    DialogWidget& Dialog() const { return static_cast<DialogWidget&>(Widget()); }

    std::string title;
    QEventLoop* loop = nullptr;
    bool hasEnded = false;
};

class PaneWindow final : public qt::WidgetWindow<NativeWindow> {
  public:
    PaneWindow(CWnd& window, std::unique_ptr<PaneWidget> made) : WidgetWindow(window, std::move(made)) {
        static_cast<PaneWidget&>(Widget()).paint = [this](CDC& dc) { ReportPaint(dc); };
    }
    void SetText(const std::string& newText) override { text = newText; }
    std::string Text() const override { return text; }

  private:
    std::string text;
};

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
    auto widget = std::make_unique<PaneWidget>(qt::WidgetOf(parent));
    qt::SetIdentity(*widget, "pane", templateId);
    return std::make_unique<PaneWindow>(window, std::move(widget));
}

}  // namespace permora
