// The order of a list that is sorted by clicks on its headers.
#pragma once

#include <optional>

#include "framework/list_ctrl.h"

namespace permora {

struct ListOrder {
    int column;
    SortOrder direction;
};

// After a click on the header of `column`: upwards, and downwards when it was sorted upwards before.
inline ListOrder OrderAfterClick(const std::optional<ListOrder>& before, int column) {
    const bool wasUp = before && before->column == column && before->direction == SortOrder::kUp;
    return {column, wasUp ? SortOrder::kDown : SortOrder::kUp};
}

}  // namespace permora
