#include "results/result_source.h"

#include "platform/ascii.h"

namespace permora {

ResultKey ResultPage::KeyOf(std::size_t row, std::size_t column) const {
    return {0, InLowerCase(Text(row, column))};
}

}  // namespace permora
