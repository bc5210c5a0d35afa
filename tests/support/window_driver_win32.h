// Shared by the parts of the driver on the Win32 back end. Input is posted to the windows as the system posts
// it, so that programs that run at the same time do not take the keyboard from each other.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <vector>

#include "platform/api/base.h"
#include "tests/support/window_driver.h"

namespace permora::test {

// Serves the messages that wait.
void ServeWaiting();
// The deepest window that the mouse meets at a place of the screen; null outside of `top`.
HWND WindowUnderMouse(HWND top, POINT screen);
// False, and a failure of the test, when `window` has gone or a modal window keeps input from it.
bool TakesInput(HWND window);

// Null, and a failure of the test, when there is none. The one that can be seen, where there are several.
HWND ControlOf(HWND window, unsigned int id);

std::vector<HWND> Descendants(HWND window);

// The system's menu in a window that shows one; null for other windows.
HMENU MenuOf(HWND window);

struct ToolButtonPlace {
    HWND bar = nullptr;
    RECT rect{};  // in the bar's client area
};
// The button of a command in a toolbar of `window`; nothing where there is none.
std::optional<ToolButtonPlace> FindToolButton(HWND window, unsigned int command);

enum class MouseButton { kLeft, kRight };
enum class Clicks { kOne, kTwo };
// Clicks at a place of `target`'s client area. What covers the target gets the click, so that is a failure.
// `keys` are MK_CONTROL and MK_SHIFT.
void ClickWindow(HWND target, POINT client, MouseButton button = MouseButton::kLeft, WPARAM keys = 0,
                 Clicks clicks = Clicks::kOne);

}  // namespace permora::test
