// The locations that the browser has shown.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace permora {

enum class HistoryStep {
    kBack = -1,
    kForward = 1,
};

// A location is the full path of a folder, or empty for the drives. The history begins with the drives; it is
// not limited, and keeps repeated locations.
class BrowserHistory {
  public:
    // `location` becomes the current one; those after the current one are forgotten.
    void Record(const std::string& location);
    // The location one step away; none at the ends.
    std::optional<std::string> Neighbour(HistoryStep step) const;
    // Makes that one current. There must be one.
    void Move(HistoryStep step) { position = static_cast<std::size_t>(PlaceOf(step)); }

    const std::vector<std::string>& Locations() const { return locations; }
    std::size_t Position() const { return position; }  // of the current one

  private:
    std::ptrdiff_t PlaceOf(HistoryStep step) const;

    std::vector<std::string> locations{std::string()};
    std::size_t position = 0;
};

}  // namespace permora
