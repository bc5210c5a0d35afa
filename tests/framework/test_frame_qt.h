// The small frame as this toolkit shows it, and the ways in which a person works with it.
#pragma once

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <QToolButton>

#include "framework/qt/widget.h"
#include "tests/framework/test_frame.h"

namespace permora {

class QtTestFrame : public TestFrame {
  public:
    QWidget* Top() const { return reinterpret_cast<QWidget*>(GetSafeHwnd())->window(); }
    QToolButton* Button(unsigned int id) const {
        return Top()->findChild<QToolButton*>(QStringLiteral("button %1").arg(id));
    }
    void PressKey(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QWidget* focus = QApplication::focusWidget();
        QTest::keyClick(focus != nullptr ? focus : Top(), key, modifiers);
        QCoreApplication::processEvents();
    }
    // Opens the menu with that title, as it is on the screen.
    QMenu* OpenMenu(const char* title) {
        auto* bar = Top()->findChild<QMenuBar*>();
        for (QAction* action : bar->actions()) {
            if (action->text() == QLatin1String(title)) {
                bar->setActiveAction(action);
                return action->menu();
            }
        }
        return nullptr;
    }
};

}  // namespace permora
