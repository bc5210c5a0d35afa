// File operations in windows.
#pragma once

#include "platform/file_operation_presenter.h"

namespace permora::qt {

// Runs each operation on a thread of its own and serves the program's windows meanwhile, which take no input
// but the operation's own. Its window appears when the work takes longer than half a second. When the
// program must end, the operation is cancelled, and Present returns after it.
class FileOperationWindows : public FileOperationPresenter {
  public:
    void Present(HWND owner, const std::string& title, FileOperationJob& job) override;
};

}  // namespace permora::qt
