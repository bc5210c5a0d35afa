// WindowDriver's sheets and frames on the Qt back end.
#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QStatusBar>
#include <QTabBar>
#include <QTest>

#include "framework/qt/widget.h"
#include "tests/support/window_driver_qt.h"

namespace permora::test {
namespace {

using qt::FromQt;

struct FoundEntry {
    QMenu* menu = nullptr;
    QAction* action = nullptr;
};

// The entry of `command` in `menu`, which is open, or in one of its pop-ups, which are opened on the way.
FoundEntry FindEntry(QMenu& menu, unsigned int command) {
    for (QAction* action : menu.actions())
        if (action->menu() == nullptr && action->data().toUInt() == command) return {&menu, action};
    for (QAction* action : menu.actions()) {
        if (action->menu() == nullptr) continue;
        menu.setActiveAction(action);
        if (const FoundEntry found = FindEntry(*action->menu(), command); found.action != nullptr)
            return found;
    }
    return {};
}

// Opens the menus of the menu bar, one after the other, as far as the one that has `command`, and leaves that
// one open.
FoundEntry OpenMenuOf(HWND handle, unsigned int command) {
    const QWidget* window = Live(handle);
    auto* bar = window != nullptr ? window->findChild<QMenuBar*>() : nullptr;
    const QList<QAction*> titles = bar != nullptr ? bar->actions() : QList<QAction*>();
    for (QAction* title : titles) {
        ClickWidget(*bar, bar->actionGeometry(title).center());
        if (const FoundEntry found = FindEntry(*title->menu(), command); found.action != nullptr)
            return found;
        title->menu()->close();
    }
    ADD_FAILURE() << "no menu has command " << command;
    return {};
}

void CloseMenus() {
    while (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
}

}  // namespace

// ---- Frames ----

void WindowDriver::ChooseMenu(unsigned int command) {
    const FoundEntry entry = OpenMenuOf(window, command);
    if (entry.action == nullptr) return;
    EXPECT_TRUE(entry.action->isEnabled()) << "command " << command;
    QTest::mouseClick(entry.menu, Qt::LeftButton, Qt::NoModifier,
                      entry.menu->actionGeometry(entry.action).center());
    QCoreApplication::processEvents();
}

std::vector<unsigned int> WindowDriver::GreyedCommands() const {
    std::vector<unsigned int> greyed;
    const QWidget* menu = Live(window);
    for (const QAction* action : menu != nullptr ? menu->actions() : QList<QAction*>())
        if (!action->isSeparator() && !action->isEnabled()) greyed.push_back(action->data().toUInt());
    return greyed;
}

MenuEntry WindowDriver::ReadMenu(unsigned int command) {
    const FoundEntry entry = OpenMenuOf(window, command);
    if (entry.action == nullptr) return {};
    const MenuEntry read{FromQt(entry.action->text()), entry.action->isEnabled(), entry.action->isChecked()};
    CloseMenus();
    return read;
}

std::string WindowDriver::StatusText(int pane) const {
    const QWidget* widget = Live(window);
    const auto* bar = widget != nullptr ? widget->findChild<QStatusBar*>() : nullptr;
    if (bar == nullptr) return {};
    const QList<QLabel*> panes = bar->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly);
    if (pane >= 0 && pane < panes.size()) return FromQt(panes[pane]->text());
    ADD_FAILURE() << "the status bar has no pane " << pane;
    return {};
}

// ---- Sheets ----

std::vector<std::string> WindowDriver::Tabs() const {
    std::vector<std::string> tabs;
    const QWidget* widget = Live(window);
    const auto* bar = widget != nullptr ? widget->findChild<QTabBar*>() : nullptr;
    for (int i = 0; bar != nullptr && i < bar->count(); ++i)
        tabs.push_back(FromQt(bar->tabText(i)));
    return tabs;
}

std::string WindowDriver::ActiveTab() const {
    const QWidget* widget = Live(window);
    const auto* bar = widget != nullptr ? widget->findChild<QTabBar*>() : nullptr;
    return bar != nullptr ? FromQt(bar->tabText(bar->currentIndex())) : std::string();
}

void WindowDriver::SwitchToTab(const std::string& caption) {
    QWidget* widget = Live(window);
    auto* bar = widget != nullptr ? widget->findChild<QTabBar*>() : nullptr;
    for (int i = 0; bar != nullptr && i < bar->count(); ++i) {
        if (FromQt(bar->tabText(i)) != caption) continue;
        ClickWidget(*bar, bar->tabRect(i).center());
        return;
    }
    ADD_FAILURE() << "no tab \"" << caption << "\"";
}

}  // namespace permora::test
