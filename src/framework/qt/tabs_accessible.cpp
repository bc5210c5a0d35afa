#include "framework/qt/tabs_accessible.h"

#include <QAccessibleWidget>
#include <QHash>
#include <QTabBar>
#include <QTabWidget>

#include "framework/qt/part_accessible.h"

namespace permora::qt {
namespace {

class TabAccessible : public PartAccessible {
  public:
    TabAccessible(QTabBar& partOf, int shown)
        : PartAccessible(partOf, QAccessible::PageTab), bar(partOf), tab(shown) {}

    bool isValid() const override { return tab < bar.count(); }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? bar.tabText(tab) : QString();
    }
    QRect rect() const override {
        const QRect inBar = bar.tabRect(tab);
        return {bar.mapToGlobal(inBar.topLeft()), inBar.size()};
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.invalid = !isValid();
        state.disabled = !bar.isTabEnabled(tab);
        state.selectable = true;
        state.selected = bar.currentIndex() == tab;
        state.focusable = true;
        state.focused = state.selected && bar.hasFocus();
        return state;
    }
    QStringList actionNames() const override {
        return isValid() ? QStringList{pressAction()} : QStringList{};
    }
    void doAction(const QString& name) override {
        if (actionNames().contains(name)) bar.setCurrentIndex(tab);
    }

  private:
    QTabBar& bar;
    int tab;
};

class TabsAccessible : public QAccessibleWidget {
  public:
    explicit TabsAccessible(QTabBar& shown)
        : QAccessibleWidget(&shown, QAccessible::PageTabList), bar(shown) {}
    ~TabsAccessible() override {
        for (const QAccessible::Id id : std::as_const(tabs))
            QAccessible::deleteAccessibleInterface(id);
    }

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? bar.tabText(bar.currentIndex()) : QAccessibleWidget::text(kind);
    }
    int childCount() const override { return bar.count(); }
    QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= bar.count()) return nullptr;
        // The toolkit owns registered objects.
        if (!tabs.contains(index))
            tabs[index] = QAccessible::registerAccessibleInterface(new TabAccessible(bar, index));
        return QAccessible::accessibleInterface(tabs[index]);
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        for (auto each = tabs.constBegin(); each != tabs.constEnd(); ++each)
            if (QAccessible::accessibleInterface(each.value()) == child) return each.key();
        return -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        return child(bar.tabAt(bar.mapFromGlobal(QPoint(x, y))));
    }
    QAccessibleInterface* focusChild() const override {
        return bar.hasFocus() ? child(bar.currentIndex()) : nullptr;
    }

  private:
    QTabBar& bar;
    mutable QHash<int, QAccessible::Id> tabs;  // made at the first request
};

// What holds the tabs and the pages passes the keyboard on to the tabs.
class TabWidgetAccessible : public QAccessibleWidget {
  public:
    explicit TabWidgetAccessible(QTabWidget& shown) : QAccessibleWidget(&shown, QAccessible::Client) {}
    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.focusable = false;
        state.focused = false;
        return state;
    }
};

QAccessibleInterface* MakeTabsAccessible(const QString& /*className*/, QObject* object) {
    if (auto* bar = qobject_cast<QTabBar*>(object)) return new TabsAccessible(*bar);
    auto* holder = qobject_cast<QTabWidget*>(object);
    return holder != nullptr ? new TabWidgetAccessible(*holder) : nullptr;
}

}  // namespace

void InstallTabsAccessibility() {
    QAccessible::installFactory(MakeTabsAccessible);  // the toolkit keeps a function once
}

}  // namespace permora::qt
