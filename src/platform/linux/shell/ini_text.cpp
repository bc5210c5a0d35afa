#include "platform/linux/shell/ini_text.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "platform/ascii.h"

namespace permora::host {

IniGroups ParseIni(std::string_view text) {
    IniGroups groups;
    std::string group;
    while (!text.empty()) {
        const std::string_view line = WithoutOuterBlanks(TakeLine(text));
        const std::size_t equals = line.find('=');
        if (line.starts_with('[') && line.ends_with(']')) {
            group = line.substr(1, line.size() - 2);
        } else if (!line.starts_with('#') && equals != line.npos) {
            groups[group].emplace(WithoutOuterBlanks(line.substr(0, equals)),
                                  WithoutOuterBlanks(line.substr(equals + 1)));
        }
    }
    return groups;
}

IniGroups ReadIniFile(const std::string& path) {
    std::ifstream file(path);
    if (!file) return {};
    return ParseIni(std::string{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()});
}

std::string IniValue(const IniGroups& groups, std::string_view group, std::string_view key) {
    const auto found = groups.find(group);
    if (found == groups.end()) return {};
    const auto value = found->second.find(key);
    return value == found->second.end() ? "" : value->second;
}

}  // namespace permora::host
