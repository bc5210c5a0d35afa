// A property that must hold for every input, so that a fuzz target checks more than "it did not crash".
#pragma once

#include <cstdio>
#include <cstdlib>

namespace permora {

inline void Require(bool holds, const char* property) {
    if (holds) return;
    std::fprintf(stderr, "broken property: %s\n", property);
    std::abort();
}

}  // namespace permora
