#include "framework/qt/menus.h"

#include <QActionGroup>
#include <QGuiApplication>
#include <QWindow>

#include "framework/frame_native.h"
#include "framework/qt/image.h"
#include "framework/qt/widget.h"

namespace permora {
namespace qt {
namespace {

void AddCommand(QMenu& menu, QActionGroup*& radios, const MenuItem& item, const MenuHandlers& handlers) {
    QAction* action = menu.addAction(MenuText(item.text));
    action->setData(item.id);
    if (item.icon) action->setIcon(ToQt(item.icon));
    action->setEnabled(item.enabled);
    action->setCheckable(item.checked || item.isRadio);
    action->setChecked(item.checked);
    if (item.isRadio) {
        if (radios == nullptr) radios = new QActionGroup(action);  // goes with the entries
        radios->addAction(action);
    }
    QObject::connect(action, &QAction::hovered, &menu,
                     [handlers, id = item.id] { handlers.highlighted(id); });
    QObject::connect(action, &QAction::triggered, &menu, [handlers, id = item.id] { handlers.chosen(id); });
}

void Fill(QMenu& menu, const CMenu::Items& items, const MenuHandlers& handlers) {
    for (QMenu* popup : menu.findChildren<QMenu*>(QString(), Qt::FindDirectChildrenOnly))
        popup->deleteLater();
    menu.clear();
    QActionGroup* radios = nullptr;
    for (const MenuItem& item : items.entries) {
        if (!item.isRadio) radios = nullptr;
        if (item.popup != nullptr) {
            QMenu* popup = menu.addMenu(MenuText(item.text));
            ShowItems(*popup, item.popup, handlers);
            QObject::connect(popup->menuAction(), &QAction::hovered, &menu,
                             [handlers] { handlers.highlighted(0); });
        } else if (item.IsSeparator()) {
            menu.addSeparator();
        } else {
            AddCommand(menu, radios, item, handlers);
        }
    }
}

}  // namespace

void ShowItems(QMenu& menu, const std::shared_ptr<CMenu::Items>& items, const MenuHandlers& handlers) {
    Fill(menu, *items, handlers);
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&menu, items, handlers] {
        handlers.opening(*items);
        Fill(menu, *items, handlers);
    });
    QObject::connect(&menu, &QMenu::aboutToHide, &menu, [handlers] { handlers.highlighted(0); });
}

QString MenuText(const std::string& text) {
    QString whole = ToQt(MenuLabel(text));
    const qsizetype tab = whole.indexOf(QLatin1Char('\t'));
    // The toolkit draws menus without regard to the letters' direction; the mark keeps the dots at their end.
    if (QGuiApplication::isRightToLeft()) whole.insert(tab < 0 ? whole.size() : tab, QChar(0x200E));
    return whole;
}

}  // namespace qt

unsigned int TrackNativeMenu(const CMenu& menu, Point screen, CWnd& owner,
                             const std::function<void(unsigned int id)>& highlight) {
    qt::MenuHandlers handlers;
    handlers.opening = [](CMenu::Items&) {};
    handlers.highlighted = highlight;
    handlers.chosen = [](unsigned int) {};
    // Not a child of the owner, which may be destroyed while the menu is open.
    QMenu native;
    native.ensurePolished();
    native.setObjectName(QStringLiteral("popup menu"));
    qt::ShowItems(native, menu.Shared(), handlers);
    native.createWinId();
    if (QWidget* widget = qt::WidgetOf(owner))
        native.windowHandle()->setTransientParent(widget->window()->windowHandle());
    const QAction* chosen = native.exec(QPoint(screen.x, screen.y));
    return chosen != nullptr ? chosen->data().toUInt() : 0;
}

}  // namespace permora
