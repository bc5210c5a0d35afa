// A hash that differs for most different texts. It protects from nobody who chooses them.
#pragma once

#include <cstdint>
#include <type_traits>

namespace permora {

// FNV-1a with 64 bits over the units of `text`: http://www.isthe.com/chongo/tech/comp/fnv/. `hash` is that of
// what stood before it.
template <typename Text>
constexpr std::uint64_t HashFnv(const Text& text, std::uint64_t hash = 0xcbf29ce484222325) {
    for (const auto unit : text)
        hash = (hash ^ static_cast<std::make_unsigned_t<decltype(unit)>>(unit)) * 0x100000001b3;
    return hash;
}

}  // namespace permora
