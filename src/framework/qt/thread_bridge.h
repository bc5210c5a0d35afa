// Hands work to the thread that serves the windows.
#pragma once

#include <QObject>
#include <deque>
#include <functional>
#include <mutex>

namespace permora::qt {

// Made and destroyed on the thread that is to run the work.
class ThreadBridge : public QObject {
  public:
    // Any thread: `work` runs after everything that was posted before. It is destroyed without running if the
    // bridge is destroyed first.
    void Post(std::function<void()> work);
    // Runs the work that was posted until now.
    void Serve();

  protected:
    void customEvent(QEvent* event) override;

  private:
    // The toolkit's events only signal that there is work. The work itself passes between threads under this
    // lock, which tools for finding races can see.
    std::mutex mutex;
    std::deque<std::function<void()>> posted;
};

}  // namespace permora::qt
