// Tells a window when names of accounts have come that it showed as SIDs, and when the domain goes or comes
// back.
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>

#include "framework/window.h"
#include "framework/worker_thread.h"

namespace permora {

// User-interface thread only.
class AccountNewsWatch {
  public:
    // `onNews` is called on the user-interface thread while `window` exists, at most twice a second. Both are
    // borrowed.
    AccountNewsWatch(CWnd& window, std::function<void()> onNews);
    ~AccountNewsWatch() { Close(); }
    AccountNewsWatch(const AccountNewsWatch&) = delete;
    AccountNewsWatch& operator=(const AccountNewsWatch&) = delete;

    // Begins to watch. Does nothing on a machine without a domain, and where no thread can be made: the
    // window then goes on showing what it shows.
    void Start();
    // Ends the watch without another call.
    void Close();

  private:
    void Work();

    CWnd& window;
    const std::function<void()> onNews;
    std::mutex guard;
    std::condition_variable closing;
    bool isClosing = false;
    WorkerThread worker;
};

}  // namespace permora
