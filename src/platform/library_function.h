// Functions that are looked up by name, since not every system has them.
#pragma once

#include "platform/api/libraries.h"

namespace permora {

// The library's function of that name; null, with the last error set, when it has none.
template <typename Function>
Function FindFunction(HMODULE library, LPCSTR name) {
    // By way of void(), the type that the compiler lets every function type be cast to and from.
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(library, name)));
}

}  // namespace permora
