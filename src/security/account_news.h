// Tells a window when names of accounts have come that it showed as SIDs, and when the domain goes or comes
// back.
#pragma once

#include <cstdint>
#include <functional>

#include "framework/repeated_work.h"

namespace permora {

// User-interface thread only.
class AccountNewsWatch {
  public:
    // `show` is to show the names anew. It is called until Stop, twice a second at most. To be called before
    // the window first shows names, so that none is missed.
    void Start(std::function<void()> show);
    void Stop() { timer.Stop(); }

  private:
    RepeatedWork timer;
    std::uint64_t seen = 0;
};

}  // namespace permora
