// Times of threads, for tests of what must not keep a window from taking input.
#pragma once

#include <chrono>
#include <ctime>

namespace permora::test {

// How long this thread has worked, however busy the machine is with other things.
inline std::chrono::nanoseconds WorkOfThisThread() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace permora::test
