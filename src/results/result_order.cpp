#include "results/result_order.h"

#include <memory>
#include <vector>

namespace permora {

ResultOrder OrderOfPage(const ResultPage& page, std::size_t column, ResultDirection direction) {
    const bool isUp = direction == ResultDirection::kUp;
    if (page.Columns()[column].order == ColumnOrder::kArrival)
        return [isUp](std::intptr_t one, std::intptr_t other) { return isUp ? one < other : other < one; };
    std::vector<ResultKey> keys;
    keys.reserve(page.Count());
    for (std::size_t row = 0; row < page.Count(); ++row)
        keys.push_back(page.KeyOf(row, column));
    return [isUp, keys = std::make_shared<const std::vector<ResultKey>>(std::move(keys))](
               std::intptr_t one, std::intptr_t other) {
        const ResultKey& first = (*keys)[static_cast<std::size_t>(isUp ? one : other)];
        const ResultKey& second = (*keys)[static_cast<std::size_t>(isUp ? other : one)];
        return first < second;
    };
}

}  // namespace permora
