// Toolbar and status bar of this back end.
#include <QAction>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <algorithm>
#include <memory>
#include <vector>

#include "framework/frame_native.h"
#include "framework/qt/elided_label.h"
#include "framework/qt/image.h"
#include "framework/qt/late_escape.h"
#include "framework/qt/widget.h"

namespace permora {
namespace {

// One stop of the Tab key, within which the arrow keys move. A click does not move the focus.
class ToolBarWindow final : public qt::WidgetWindow<NativeToolBar, QToolBar> {
  public:
    ToolBarWindow(CWnd& window, std::unique_ptr<QToolBar> made, FrameEvents& listener)
        : WidgetWindow(window, std::move(made)), events(listener) {}

    void SetButtons(std::span<const ToolButton> made) override;
    void SetImages(const CImageList& images) override;
    void TurnImagesWithLayout(std::span<const unsigned int> ids) override;
    void SetTips(bool enabled) override { showsTips = enabled; }
    void ShowEnabled(unsigned int id, bool enabled) override {
        QAction* action = ActionOf(id);
        if (action == nullptr || action->isEnabled() == enabled) return;
        action->setEnabled(enabled);
        KeepTabStop();
    }
    void ShowPressed(unsigned int id, bool pressed) override {
        QAction* action = ActionOf(id);
        if (action == nullptr) return;
        action->setCheckable(pressed);
        action->setChecked(pressed);
    }

  private:
    QAction* ActionOf(unsigned int id) const;
    void AddButton(const ToolButton& button);
    void OnTriggered(QAction& action);
    bool OnButtonEvent(QToolButton& button, QEvent& event);
    bool OnButtonKey(QToolButton& button, int key);
    // The Tab key stops at an enabled button.
    void KeepTabStop();
    void FocusButton(qsizetype from, qsizetype step);

    FrameEvents& events;
    QList<QToolButton*> buttons;  // without separators
    // Removed before the buttons, which still get events while they are destroyed.
    std::vector<std::unique_ptr<qt::EventFilter>> watches;
    bool showsTips = true;
};

QAction* ToolBarWindow::ActionOf(unsigned int id) const {
    const auto found = std::ranges::find_if(
        buttons, [id](const QToolButton* button) { return button->defaultAction()->data().toUInt() == id; });
    return found != buttons.end() ? (*found)->defaultAction() : nullptr;
}

void ToolBarWindow::SetButtons(std::span<const ToolButton> made) {
    watches.clear();
    Widget().clear();
    buttons.clear();
    for (const ToolButton& each : made)
        if (each.id == 0)
            Widget().addSeparator();
        else
            AddButton(each);
    KeepTabStop();
}

void ToolBarWindow::KeepTabStop() {
    const auto isStop = [](const QToolButton* button) {
        return button->isEnabled() && button->focusPolicy() != Qt::NoFocus;
    };
    if (std::ranges::any_of(buttons, isStop)) return;
    bool hasStop = false;
    for (QToolButton* button : buttons) {
        button->setFocusPolicy(!hasStop && button->isEnabled() ? Qt::TabFocus : Qt::NoFocus);
        hasStop = hasStop || button->isEnabled();
    }
}

void ToolBarWindow::AddButton(const ToolButton& made) {
    QAction* action = Widget().addAction(qt::ToQt(made.prompt.tip));
    action->setData(made.id);
    auto* button = static_cast<QToolButton*>(Widget().widgetForAction(action));
    button->setFocusPolicy(Qt::NoFocus);
    button->setAccessibleDescription(qt::ToQt(made.prompt.status));
    qt::SetIdentity(*button, "button", made.id);
    buttons.append(button);
    QObject::connect(action, &QAction::hovered, button, [this, id = made.id] { events.OnHighlight(id); });
    QObject::connect(action, &QAction::triggered, button, [this, action] { OnTriggered(*action); });
    watches.push_back(std::make_unique<qt::EventFilter>(
        *button, [this, button](QEvent& event) { return OnButtonEvent(*button, event); }));
}

void ToolBarWindow::SetImages(const CImageList& images) {
    const auto& shared = images.Shared();
    if (shared == nullptr) return;
    Widget().setIconSize(QSize(shared->size.cx, shared->size.cy));
    for (qsizetype i = 0; i < buttons.size() && i < static_cast<qsizetype>(shared->icons.size()); ++i)
        buttons[i]->defaultAction()->setIcon(qt::ToQt(shared->icons[static_cast<std::size_t>(i)]));
}

void ToolBarWindow::TurnImagesWithLayout(std::span<const unsigned int> ids) {
    if (!Widget().isRightToLeft()) return;
    for (const unsigned int id : ids)
        if (QAction* action = ActionOf(id)) action->setIcon(qt::Turned(action->icon()));
}

void ToolBarWindow::OnTriggered(QAction& action) {
    // The toolkit releases a pressed button by itself, but the command decides that.
    if (action.isCheckable()) action.setChecked(true);
    QMetaObject::invokeMethod(
        &Widget(), [this, id = action.data().toUInt()] { events.OnChosen(id); }, Qt::QueuedConnection);
}

bool ToolBarWindow::OnButtonEvent(QToolButton& button, QEvent& event) {
    switch (event.type()) {
        case QEvent::ToolTip:
            return !showsTips;
        case QEvent::Leave:
        case QEvent::FocusOut:
            events.OnHighlight(0);
            return false;
        case QEvent::FocusIn:
            events.OnHighlight(button.defaultAction()->data().toUInt());
            return false;
        case QEvent::KeyPress:
            return OnButtonKey(button, static_cast<QKeyEvent&>(event).key());
        default:
            return false;
    }
}

bool ToolBarWindow::OnButtonKey(QToolButton& button, int key) {
    const qsizetype toTheRight = button.isRightToLeft() ? -1 : 1;
    switch (key) {
        case Qt::Key_Left:
            FocusButton(buttons.indexOf(&button), -toTheRight);
            return true;
        case Qt::Key_Right:
            FocusButton(buttons.indexOf(&button), toTheRight);
            return true;
        case Qt::Key_Up:
            FocusButton(buttons.indexOf(&button), -1);
            return true;
        case Qt::Key_Down:
            FocusButton(buttons.indexOf(&button), 1);
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            button.click();
            return true;
        default:
            return false;
    }
}

void ToolBarWindow::FocusButton(qsizetype from, qsizetype step) {
    for (qsizetype i = from + step; i >= 0 && i < buttons.size(); i += step) {
        if (!buttons[i]->isEnabled() || !buttons[i]->isVisible()) continue;
        buttons[from]->setFocusPolicy(Qt::NoFocus);
        buttons[i]->setFocusPolicy(Qt::TabFocus);
        buttons[i]->setFocus(Qt::TabFocusReason);
        return;
    }
}

class StatusBarWindow final : public qt::WidgetWindow<NativeStatusBar, QStatusBar> {
  public:
    using WidgetWindow::WidgetWindow;

    void SetText(const std::string& text) override { SetPane(0, text); }
    std::string Text() const override { return panes.isEmpty() ? "" : qt::FromQt(panes.first()->text()); }

    void SetPanes(std::span<const int> widths) override {
        for (QLabel* pane : panes)
            delete pane;
        panes.clear();
        for (const int width : widths) {
            QLabel* pane = width == kStretch ? new qt::ElidedLabel(0, &Widget()) : new QLabel(&Widget());
            pane->setTextFormat(Qt::PlainText);
            Widget().addWidget(pane, width == kStretch ? 1 : 0);
            panes.append(pane);
            if (width == kStretch) {
                pane->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
            } else {
                pane->setFrameStyle(static_cast<int>(QFrame::StyledPanel) | static_cast<int>(QFrame::Sunken));
                SetPaneWidth(static_cast<int>(panes.size()) - 1, width);
            }
        }
    }
    void SetPaneWidth(int pane, int width) override { panes[pane]->setFixedWidth(width); }
    void SetPane(int pane, const std::string& text) override {
        if (auto* stretching = dynamic_cast<qt::ElidedLabel*>(panes[pane]))
            stretching->Show(qt::ToQt(text));
        else
            panes[pane]->setText(qt::ToQt(text));
    }

  private:
    QList<QLabel*> panes;
};

}  // namespace

std::unique_ptr<NativeToolBar> MakeNativeToolBar(CWnd& window, CWnd& parent, FrameEvents& events) {
    auto bar = std::make_unique<QToolBar>(qt::WidgetOf(parent));
    bar->setVisible(false);
    bar->setObjectName(QStringLiteral("toolbar"));
    bar->setMovable(false);
    return std::make_unique<ToolBarWindow>(window, std::move(bar), events);
}

std::unique_ptr<NativeStatusBar> MakeNativeStatusBar(CWnd& window, CWnd& parent) {
    auto bar = std::make_unique<QStatusBar>(qt::WidgetOf(parent));
    bar->setVisible(false);
    bar->setObjectName(QStringLiteral("status bar"));
    return std::make_unique<StatusBarWindow>(window, std::move(bar));
}

void WatchKeys(CWnd& pane, std::function<void()> onEnter, std::function<void()> onEscape) {
    QWidget& widget = *qt::WidgetOf(pane);
    auto* filter = new qt::EventFilter(
        widget, [&widget, enter = std::move(onEnter), escape = std::move(onEscape)](QEvent& event) {
            const bool isKey = event.type() == QEvent::KeyPress;
            if (!isKey && event.type() != QEvent::ShortcutOverride) return false;
            const auto& press = static_cast<QKeyEvent&>(event);
            if (press.isAutoRepeat()) return false;
            const bool isEnter = press.key() == Qt::Key_Return || press.key() == Qt::Key_Enter;
            if (press.key() != Qt::Key_Escape && !(isKey && isEnter)) return false;
            event.accept();
            if (!isKey) return true;
            if (isEnter)
                enter();
            else if (!qt::IsLateEscape(widget))
                escape();
            return true;
        });
    filter->setParent(&widget);
}

}  // namespace permora
