// Numbers for people.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace permora {

// "1,234,567".
inline std::string GroupedNumber(std::uint64_t number) {
    constexpr std::size_t kGroup = 3;
    std::string digits = std::to_string(number);
    for (std::size_t place = digits.size(); place > kGroup; place -= kGroup)
        digits.insert(place - kGroup, 1, ',');
    return digits;
}

// "1 object", "1,234 objects".
inline std::string ObjectsText(std::uint64_t count) {
    return GroupedNumber(count) + (count == 1 ? " object" : " objects");
}

}  // namespace permora
