#include "browser/row_source.h"

#include <utility>

namespace permora {

Outcome RowSource::Hold(std::vector<std::string> names, Place& place) const {
    place = {Kind(), nullptr, std::move(names)};
    return {};
}

}  // namespace permora
