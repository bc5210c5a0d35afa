#include "survey/survey_rows.h"

#include <algorithm>
#include <cstring>

namespace permora {

const char* SurveyRows::Keep(std::string_view name) {
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

std::uint32_t SurveyRows::PlaceOf(std::string_view path) {
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
        places.push_back({Keep(name), levels.empty() ? kNoFolder : levels.back().place,
                          static_cast<std::uint16_t>(name.size())});
        levels.push_back({static_cast<std::uint32_t>(places.size() - 1), done});
    }
    last = path;
    return levels.empty() ? kNoFolder : levels.back().place;
}

void SurveyRows::Add(const SurveyRow& row) {
    const auto top = static_cast<std::uint32_t>(row.top);
    if (top != lastTop) levels.clear();
    lastTop = top;
    rows.push_back({row.security, PlaceOf(row.path), top, row.remarks, row.error, row.kind});
}

SurveyRow SurveyRows::Row(std::size_t index, std::string& path) const {
    const KeptRow& row = rows[index];
    std::vector<std::uint32_t> way;
    for (std::uint32_t place = row.place; place != kNoFolder; place = places[place].folder)
        way.push_back(place);
    path.clear();
    for (const std::uint32_t place : std::vector(way.rbegin(), way.rend())) {
        if (!path.empty()) path += '\\';
        path.append(places[place].name, places[place].length);
    }
    return {path, row.top, row.kind, row.remarks, row.security, row.error};
}

}  // namespace permora
