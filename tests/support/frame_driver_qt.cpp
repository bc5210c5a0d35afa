// FrameDriver on the Qt back end.
#include "tests/support/frame_driver.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QTest>
#include <QToolButton>

#include "framework/qt/widget.h"
#include "tests/support/ui_backend.h"

namespace permora::testing {
namespace {

using qt::FromQt;

// Null, and a failure of the test, when the frame is closed or a modal window keeps input from it.
QWidget* Top(HWND window) {
    QWidget* widget = qt::LiveWidget(window);
    if (widget == nullptr || !widget->isVisible()) {
        ADD_FAILURE() << "the frame is not open";
        return nullptr;
    }
    if (QApplication::activeModalWidget() != nullptr) {
        ADD_FAILURE() << "the frame takes no input while a modal window is open";
        return nullptr;
    }
    return widget->window();
}

QAction* FindCommand(const QMenu& menu, unsigned int command) {
    for (QAction* action : menu.actions()) {
        if (!action->isSeparator() && action->data().toUInt() == command) return action;
    }
    return nullptr;
}

// Opens menu after menu until one has the command; null, and a failure of the test, when none has it.
QMenu* OpenMenuWith(HWND window, unsigned int command) {
    const QWidget* top = Top(window);
    auto* bar = top != nullptr ? top->findChild<QMenuBar*>() : nullptr;
    if (bar == nullptr) return nullptr;
    for (QAction* title : bar->actions()) {
        QMenu* menu = title->menu();
        if (menu == nullptr || FindCommand(*menu, command) == nullptr) continue;
        QTest::mouseClick(bar, Qt::LeftButton, Qt::NoModifier, bar->actionGeometry(title).center());
        if (QTest::qWaitFor([menu] { return menu->isVisible(); })) return menu;
    }
    ADD_FAILURE() << "no menu shows command " << command;
    return nullptr;
}

void CloseMenus() {
    while (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
}

QString PlainText(const QString& text) {
    return text.section(QLatin1Char('\t'), 0, 0).remove(QLatin1Char('&'));
}

// Until there is nothing more to do: what was clicked runs when the click is over, and the states of commands
// are shown while the program is idle.
void ServeUntilIdle() {
    constexpr int kRounds = 2;
    ServeEventsUntil([round = 0]() mutable { return round++ == kRounds; }, std::chrono::seconds(1));
}

QToolButton* Button(HWND window, unsigned int command) {
    const QWidget* top = Top(window);
    if (top == nullptr) return nullptr;
    ServeUntilIdle();
    auto* button = top->findChild<QToolButton*>(QStringLiteral("button %1").arg(command));
    if (button == nullptr) ADD_FAILURE() << "the toolbar has no button for command " << command;
    return button;
}

}  // namespace

ShownCommand FrameDriver::LookAtMenu(unsigned int command) const {
    const QMenu* menu = OpenMenuWith(Handle(), command);
    if (menu == nullptr) return {};
    const QAction& action = *FindCommand(*menu, command);
    ShownCommand shown{action.isEnabled(), action.isChecked(), FromQt(PlainText(action.text()))};
    CloseMenus();
    return shown;
}

void FrameDriver::ChooseMenu(unsigned int command) {
    QMenu* menu = OpenMenuWith(Handle(), command);
    if (menu == nullptr) return;
    QAction& action = *FindCommand(*menu, command);
    if (action.isEnabled()) {
        QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(&action).center());
    } else {
        ADD_FAILURE() << "command " << command << " is grey in its menu";
    }
    CloseMenus();
    ServeUntilIdle();
}

ShownCommand FrameDriver::LookAtToolBar(unsigned int command) const {
    const QToolButton* button = Button(Handle(), command);
    if (button == nullptr) return {};
    return {button->isEnabled(), button->isChecked(), FromQt(button->text())};
}

void FrameDriver::ClickToolBar(unsigned int command) {
    QToolButton* button = Button(Handle(), command);
    if (button == nullptr) return;
    if (!button->isEnabled() || !button->isVisible()) {
        ADD_FAILURE() << "the button of command " << command << " cannot be clicked";
        return;
    }
    QTest::mouseClick(button, Qt::LeftButton);
    ServeUntilIdle();
}

std::string FrameDriver::StatusText(int pane) const {
    const QWidget* widget = qt::LiveWidget(Handle());
    const auto* bar = widget != nullptr ? widget->window()->findChild<QStatusBar*>() : nullptr;
    const auto* label =
        bar != nullptr ? bar->findChild<QLabel*>(QStringLiteral("status pane %1").arg(pane)) : nullptr;
    if (label == nullptr) {
        ADD_FAILURE() << "the status bar has no pane " << pane;
        return {};
    }
    return FromQt(label->text());
}

}  // namespace permora::testing
