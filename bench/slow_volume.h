// A folder as a server far away would serve it: each request takes a while, many are served at a time.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

#include "tests/support/temporary_folder.h"

namespace permora::bench {

// A process of its own passes all requests on to a folder of the local disk, each after a wait.
class SlowVolume {
  public:
    // Mounts the contents of `served`, which is given without a slash at its end.
    SlowVolume(const std::string& served, std::chrono::microseconds wait);
    ~SlowVolume();
    SlowVolume(const SlowVolume&) = delete;
    SlowVolume& operator=(const SlowVolume&) = delete;

    bool IsMounted() const { return isMounted; }
    const std::string& Root() const { return mountPoint.Path(); }

  private:
    test::TemporaryFolder mountPoint;
    pid_t driver = -1;
    bool isMounted = false;
};

}  // namespace permora::bench
