// Requests to a server whose connection breaks off.
#pragma once

#include <cerrno>

namespace permora::host {

// Makes a system call that returns less than 0 on failure, and makes it again where the connection to the
// server broke off under it (EAGAIN): the kernel then connects anew, or says that the host is down. Not for
// calls that fail so because others hold a lock, and only for those that may happen twice.
template <class Call>
auto RequestAgain(Call call) {
    constexpr int kMostTimes = 3;
    auto result = call();
    for (int times = 1; result < 0 && errno == EAGAIN && times < kMostTimes; ++times)
        result = call();
    return result;
}

}  // namespace permora::host
