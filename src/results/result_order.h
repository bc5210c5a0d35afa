// The order of a page's rows by one of its columns.
#pragma once

#include <cstdint>
#include <functional>

#include "results/result_source.h"

namespace permora {

enum class ResultDirection : std::uint8_t { kUp, kDown };

// Whether the row at one position belongs before the row at another. Each row's key is made once, here.
using ResultOrder = std::function<bool(std::intptr_t, std::intptr_t)>;
ResultOrder OrderOfPage(const ResultPage& page, std::size_t column, ResultDirection direction);

}  // namespace permora
