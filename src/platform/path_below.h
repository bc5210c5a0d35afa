// Where absolute paths lie to each other, as their texts say.
#pragma once

#include <string_view>

namespace permora {

// Whether `path` is `folder` or something below it. Both are absolute, by the same drive, and without links.
constexpr bool IsAtOrBelow(std::string_view path, std::string_view folder) {
    if (!path.starts_with(folder)) return false;
    return path.size() == folder.size() || folder.ends_with('\\') || path[folder.size()] == '\\';
}

}  // namespace permora
