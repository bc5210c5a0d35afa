// Shared by the parts of WindowDriver on the Qt back end.
#pragma once

#include <gtest/gtest.h>

#include <QKeyCombination>
#include <QPoint>
#include <QWidget>

#include "tests/support/window_driver.h"

namespace permora::test {

// Null, and a failure of the test, when the window has gone.
QWidget* Live(HWND window);

// The control, or toolbar button, of that id; the visible one where there are several. Null: none.
QWidget* FindControl(const QWidget& window, unsigned int id);

// Null, and a failure of the test, when there is none of that kind.
template <class Kind = QWidget>
Kind* Control(HWND handle, unsigned int id) {
    const QWidget* window = Live(handle);
    if (window == nullptr) return nullptr;
    auto* control = dynamic_cast<Kind*>(FindControl(*window, id));
    if (control == nullptr)
        ADD_FAILURE() << "no such control: " << id << " in " << WindowDriver(handle).Describe();
    return control;
}

enum class Clicks { kOne, kTwo };

// Clicks at `point` of `target`, through the window's own event queue: what covers the target gets the click,
// so that is a failure. Commands that the click chooses have run when it returns.
void ClickWidget(QWidget& target, const QPoint& point, Qt::MouseButton button = Qt::LeftButton,
                 Qt::KeyboardModifiers modifiers = {}, Clicks clicks = Clicks::kOne);

}  // namespace permora::test
