// RepeatedWork: work that a window repeats while it is open.
#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace permora {

// User-interface thread only.
class RepeatedWork {
  public:
    // From now on, `work` runs each time that `pause` has passed since it last returned, until Stop or until
    // this object is destroyed, both of which `work` may do. Replaces what was started before.
    void Start(std::chrono::milliseconds pause, std::function<void()> work);
    void Stop() { repeated.reset(); }

  private:
    struct Repeated {
        std::chrono::milliseconds pause;
        std::function<void()> work;
    };
    static void RunLater(const std::shared_ptr<const Repeated>& repeated);

    std::shared_ptr<const Repeated> repeated;
};

}  // namespace permora
