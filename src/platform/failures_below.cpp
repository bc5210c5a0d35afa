#include "platform/failures_below.h"

#include <iterator>

namespace permora {

void FailuresBelow::Add(const std::string& path, DWORD error) {
    ++count;
    if (named.size() == kMostNamed && path > named.rbegin()->first) return;
    named.emplace(path, error);
    if (named.size() > kMostNamed) named.erase(std::prev(named.end()));
}

}  // namespace permora
