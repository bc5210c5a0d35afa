#include <algorithm>
#include <limits>

#include "platform/tree_reading.h"

namespace permora {

bool FolderNames::Add(std::string_view name, TreeObjectKind kind) {
    if (name.size() > std::numeric_limits<std::uint16_t>::max() ||
        text.size() + name.size() > std::numeric_limits<std::uint32_t>::max())
        return false;
    places.push_back(
        {static_cast<std::uint32_t>(text.size()), static_cast<std::uint16_t>(name.size()), kind});
    text += name;
    return true;
}

void FolderNames::Sort() {
    std::sort(places.begin(), places.end(),
              [this](Place one, Place other) { return NameAt(one) < NameAt(other); });
}

}  // namespace permora
