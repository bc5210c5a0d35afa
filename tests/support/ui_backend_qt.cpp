// Watches modal windows of the Qt back end, and starts the toolkit without a display for all tests of a
// program.
#include "tests/support/ui_backend.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <memory>
#include <utility>

#include "framework/qt/application.h"
#include "framework/qt/widget.h"
#include "platform/api/messages.h"
#include "tests/support/patience.h"
#include "tests/support/window_driver.h"

namespace permora::test {
namespace {

using qt::FromQt;
using qt::HandleOf;
using qt::LiveWidget;

class Offscreen : public ::testing::Environment {
  public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application = std::make_unique<QtApplication>(argumentCount, arguments);
    }
    void TearDown() override { application.reset(); }

  private:
    int argumentCount = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    std::unique_ptr<QtApplication> application;
};

[[maybe_unused]] const ::testing::Environment* const kOffscreen =
    ::testing::AddGlobalTestEnvironment(new Offscreen);

struct ButtonId {
    QMessageBox::StandardButton button;
    int id;
};
constexpr ButtonId kButtonIds[] = {{QMessageBox::Ok, IDOK},
                                   {QMessageBox::Cancel, IDCANCEL},
                                   {QMessageBox::Yes, IDYES},
                                   {QMessageBox::No, IDNO}};

UINT TypeOf(const QMessageBox& box) {
    const QMessageBox::StandardButtons buttons = box.standardButtons();
    UINT type = 0;
    if (buttons == (QMessageBox::Yes | QMessageBox::No)) type = MB_YESNO;
    if (buttons == (QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel)) type = MB_YESNOCANCEL;
    switch (box.icon()) {
        case QMessageBox::Critical:
            return type | MB_ICONERROR;
        case QMessageBox::Question:
            return type | MB_ICONQUESTION;
        case QMessageBox::Warning:
            return type | MB_ICONWARNING;
        case QMessageBox::Information:
            return type | MB_ICONINFORMATION;
        case QMessageBox::NoIcon:
            break;
    }
    return type;
}

// A menu bar's menus and their submenus belong to an entry; what pops up by itself does not.
bool PopsUpByItself(const QMenu& menu) {
    return menu.menuAction()->associatedObjects().isEmpty();
}

bool IsModal(const QWidget& widget) {
    const auto* menu = qobject_cast<const QMenu*>(&widget);
    return widget.isWindow() && (widget.isModal() || (menu != nullptr && PopsUpByItself(*menu)));
}

ModalWindow InfoOf(QWidget& widget) {
    ModalWindow info;
    info.window = HandleOf(widget);
    info.title = WindowDriver(info.window).Title();
    if (const auto* box = qobject_cast<const QMessageBox*>(&widget)) {
        info.kind = ModalKind::kMessageBox;
        info.text = FromQt(box->text());
        info.type = TypeOf(*box);
    } else if (qobject_cast<const QMenu*>(&widget) != nullptr) {
        info.kind = ModalKind::kMenu;
    } else {
        info.templateId = widget.objectName().section(QLatin1Char(' '), 1).toUInt();
        info.kind = info.templateId != 0 ? ModalKind::kDialog : ModalKind::kSheet;
    }
    return info;
}

class Watcher : public QObject {
  public:
    explicit Watcher(std::function<void(const ModalWindow&)> function) : shown(std::move(function)) {
        qApp->installEventFilter(this);
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::Show || event->spontaneous()) return false;
        if (auto* widget = qobject_cast<QWidget*>(watched); widget != nullptr && IsModal(*widget))
            shown(InfoOf(*widget));
        return false;
    }

  private:
    std::function<void(const ModalWindow&)> shown;
};

std::unique_ptr<Watcher> watcher;

QWidget* OpenWidget(HWND window) {
    QWidget* widget = LiveWidget(window);
    return widget != nullptr && widget->isVisible() ? widget : nullptr;
}

}  // namespace

void WatchModalWindows(std::function<void(const ModalWindow&)> shown) {
    watcher = shown ? std::make_unique<Watcher>(std::move(shown)) : nullptr;
}

bool IsOpen(HWND window) {
    return OpenWidget(window) != nullptr;
}

bool WaitForInput(HWND window) {
    const auto takesInput = [window] {
        QWidget* widget = OpenWidget(window);
        return widget == nullptr || widget->isActiveWindow() || QApplication::activePopupWidget() == widget;
    };
    return ServeEventsUntil(takesInput) && IsOpen(window);
}

bool ServeEventsUntil(const std::function<bool()>& condition) {
    constexpr int kPause = 5;
    const QDeadlineTimer deadline(kPatience);
    while (!condition()) {
        if (deadline.hasExpired()) return false;
        // A real loop: only that one is ever idle, which is when a frame shows its commands' states.
        QEventLoop loop;
        QTimer::singleShot(kPause, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return true;
}

std::vector<HWND> OpenWindows() {
    std::vector<HWND> windows;
    for (QWidget* widget : QApplication::topLevelWidgets())
        if (widget->isVisible()) windows.push_back(HandleOf(*widget));
    return windows;
}

std::vector<HWND> OpenFrames() {
    std::vector<HWND> windows = OpenWindows();
    std::erase_if(windows, [](HWND window) {
        const QWidget* widget = LiveWidget(window);
        return widget->isModal() || widget->windowType() != Qt::Window;
    });
    return windows;
}

void ChooseButton(HWND messageBox, int buttonId) {
    auto* box = qobject_cast<QMessageBox*>(OpenWidget(messageBox));
    const auto found = std::ranges::find(kButtonIds, buttonId, &ButtonId::id);
    QAbstractButton* button =
        box != nullptr && found != std::end(kButtonIds) ? box->button(found->button) : nullptr;
    if (button == nullptr) {
        ADD_FAILURE() << "the message box has no button " << buttonId;
        CloseSafely(messageBox);
        return;
    }
    QTest::mouseClick(button, Qt::LeftButton);
}

void ChooseCommand(HWND menuWindow, unsigned int command) {
    auto* menu = qobject_cast<QMenu*>(OpenWidget(menuWindow));
    if (menu == nullptr) return;
    if (command != 0) {
        for (QAction* action : menu->actions()) {
            if (action->data().toUInt() != command || action->isSeparator()) continue;
            EXPECT_TRUE(action->isEnabled()) << "command " << command << " cannot be chosen";
            QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(action).center());
            return;
        }
        ADD_FAILURE() << "the menu has no command " << command;
    }
    CloseSafely(menuWindow);
}

void CloseSafely(HWND window) {
    // Message boxes answer with their safest button, dialogs and sheets as with Escape.
    if (QWidget* widget = OpenWidget(window)) widget->close();
}

void CloseAllWindows() {
    QApplication::closeAllWindows();
}

}  // namespace permora::test
