// Message boxes in windows.
#pragma once

#include "platform/message_presenter.h"

namespace permora::qt {

// Shows MessageBoxA's boxes on the user-interface thread; a worker waits for the answer.
class WindowPresenter : public MessagePresenter {
  public:
    int Present(HWND owner, const char* text, const char* caption, UINT type) override;
};

}  // namespace permora::qt
