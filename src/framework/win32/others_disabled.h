// Who takes no input while a modal window is shown.
#pragma once

#include <vector>

#include "platform/api/base.h"

namespace permora::win32 {

// While it exists, the thread's other windows take no input, except those that stand beside. One of these
// waits for a question of its own, though.
class OthersDisabled {
  public:
    explicit OthersDisabled(HWND window);
    ~OthersDisabled();
    OthersDisabled(const OthersDisabled&) = delete;
    OthersDisabled& operator=(const OthersDisabled&) = delete;

  private:
    static BOOL CALLBACK Take(HWND window, LPARAM self);

    HWND shown;
    std::vector<HWND> disabled;
};

}  // namespace permora::win32
