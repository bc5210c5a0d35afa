// A property that must hold for every input: what a fuzz target proves beyond "it did not crash".
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
