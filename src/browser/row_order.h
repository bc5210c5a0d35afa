// The order of rows by one of the list's columns, ascending.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace permora {

// Answers whether the row at one position belongs before the row at another.
using RowOrder = std::function<bool(std::intptr_t, std::intptr_t)>;

// The order of rows whose texts in `column` are `texts`, by position. Names and types: byte by byte, whatever
// their case. Sizes: by their numbers alone, so that 5 MB come before 100 KB and no text counts as 0. Times
// of modification: as ModifiedText writes them, with months of 30 days.
RowOrder OrderByColumn(int column, const std::vector<std::string>& texts);

}  // namespace permora
