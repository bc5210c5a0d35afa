#include "survey/tree_paths.h"

#include <algorithm>
#include <cstring>

namespace permora {

const char* TreePaths::Keep(std::string_view name) {
    constexpr std::size_t kBlockSize = 0x10000;  // more than any name
    if (blocks.empty() || kBlockSize - blockUsed < name.size()) {
        blocks.push_back(std::make_unique<char[]>(kBlockSize));
        blockUsed = 0;
    }
    char* const place = blocks.back().get() + blockUsed;
    std::memcpy(place, name.data(), name.size());
    blockUsed += name.size();
    return place;
}

std::uint32_t TreePaths::Add(std::size_t top, std::string_view path) {
    if (top != lastTop) levels.clear();
    lastTop = top;
    const auto differs = std::ranges::mismatch(path, last);
    const auto common = static_cast<std::size_t>(differs.in1 - path.begin());
    const auto isAbove = [&](const Level& level) {
        return level.pathLength <= common &&
               (level.pathLength == path.size() || path[level.pathLength] == '\\');
    };
    while (!levels.empty() && !isAbove(levels.back()))
        levels.pop_back();
    std::size_t done = levels.empty() ? 0 : levels.back().pathLength;
    while (done < path.size()) {
        const std::size_t begin = done == 0 ? 0 : done + 1;
        done = std::min(path.find('\\', begin), path.size());
        const std::string_view name = path.substr(begin, done - begin);
        places.push_back({Keep(name), levels.empty() ? kTop : levels.back().place,
                          static_cast<std::uint16_t>(name.size())});
        levels.push_back({static_cast<std::uint32_t>(places.size() - 1), done});
    }
    last = path;
    return levels.empty() ? kTop : levels.back().place;
}

void TreePaths::Path(std::uint32_t place, std::string& path) const {
    std::vector<std::uint32_t> way;
    for (; place != kTop; place = FolderOf(place))
        way.push_back(place);
    path.clear();
    for (const std::uint32_t each : std::vector(way.rbegin(), way.rend())) {
        if (!path.empty()) path += '\\';
        path += Name(each);
    }
}

}  // namespace permora
