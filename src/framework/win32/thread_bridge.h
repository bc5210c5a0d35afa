// Work for the user-interface thread, through a window that nobody sees: the system's own loops (a message
// box, a window that is moved) serve it too.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <mutex>

#include "framework/win32/message_target.h"

namespace permora::win32 {

class ThreadBridge : public MessageTarget {
  public:
    ThreadBridge();

    // Any thread. The pieces run one by one, between other messages.
    void Post(std::function<void()> work);
    // User-interface thread.
    void PostLater(int milliseconds, std::function<void()> work);
    void Serve();

  protected:
    LRESULT OnMessage(const Message& message) override;

  private:
    bool RunNext();  // false when nothing is left
    void AskForTurn();
    void RunTimer(UINT_PTR id);

    const HWND window;  // for other threads
    std::mutex mutex;
    std::deque<std::function<void()>> posted;
    bool isAwaited = false;  // a message for the next piece is on its way
    std::map<UINT_PTR, std::function<void()>> timers;
    UINT_PTR lastTimer = 0;
};

}  // namespace permora::win32
