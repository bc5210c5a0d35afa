// The domain that this machine belongs to, as its calls have gone.
#pragma once

#include <cstdint>
#include <mutex>

#include "platform/accounts.h"

namespace permora {

// Any thread.
class Domain {
  public:
    DomainState State();
    std::uint64_t News();

    // How a call that needed the domain ended. Hands back the error: kDomainOffline in place of the codes by
    // which the system says so.
    DWORD HasAnswered(DWORD error);

  private:
    void FindOut();  // with the lock held

    std::mutex mutex;
    bool isKnown = false;
    DomainState state;
    std::uint64_t news = 0;
};

// Lives as long as the process.
Domain& TheDomain();

}  // namespace permora
