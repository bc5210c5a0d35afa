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
    // Any thread: `work` runs after all that was posted before. It is destroyed without having run when the
    // bridge goes before.
    void Post(std::function<void()> work);
    // Runs what was posted until now.
    void Serve();

  protected:
    void customEvent(QEvent* event) override;

  private:
    // A queue beside the toolkit's, whose events say no more than that there is work: so everything that
    // goes from one thread to another does so under a lock that tools for finding races can see.
    std::mutex mutex;
    std::deque<std::function<void()>> posted;
};

}  // namespace permora::qt
