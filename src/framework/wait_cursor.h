// CWaitCursor: work on the user-interface thread that may take long.
#pragma once

#include <chrono>

namespace permora {

// While it lives the pointer says that the program is busy.
class CWaitCursor {
  public:
    CWaitCursor();
    ~CWaitCursor();
    CWaitCursor(const CWaitCursor&) = delete;
    CWaitCursor& operator=(const CWaitCursor&) = delete;

    // To be called every now and then in the work, as often as one likes: ten times a second it lets the
    // program's windows be painted and the desktop see that it lives. What the user does in them waits for
    // the end of the work.
    void KeepAlive();

  private:
    std::chrono::steady_clock::time_point served = std::chrono::steady_clock::now();
};

}  // namespace permora
