// Waiting for what is sure to come.
#pragma once

#include <chrono>
#include <thread>

namespace permora::test {

// How long a test waits before it fails: far more than a busy machine needs under a sanitizer.
inline constexpr std::chrono::seconds kPatience{60};

// Waits until `condition` holds. False when it does not in time.
template <class Condition>
bool Await(const Condition& condition, std::chrono::seconds limit = kPatience) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

}  // namespace permora::test
