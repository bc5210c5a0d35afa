#include "browser/browser_history.h"

#include <iterator>

namespace permora {

void BrowserHistory::Record(const std::string& location) {
    locations.resize(++position);
    locations.push_back(location);
}

std::optional<std::string> BrowserHistory::Neighbour(HistoryStep step) const {
    const std::ptrdiff_t place = PlaceOf(step);
    if (place < 0 || place >= std::ssize(locations)) return std::nullopt;
    return locations[static_cast<std::size_t>(place)];
}

std::ptrdiff_t BrowserHistory::PlaceOf(HistoryStep step) const {
    return static_cast<std::ptrdiff_t>(position) + static_cast<std::ptrdiff_t>(step);
}

}  // namespace permora
