// A kernel that gives no leases on files, on demand, as it gives none on those of another user's. For
// programs linked with --wrap=fcntl and --wrap=fcntl64.
#pragma once

#include <atomic>

namespace permora::test {

// While true, asking for a lease fails with EACCES.
extern std::atomic<bool> areLeasesRefused;

}  // namespace permora::test
