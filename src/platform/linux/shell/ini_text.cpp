#include "platform/linux/shell/ini_text.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace permora::host {
namespace {

std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r";
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

}  // namespace

IniGroups ParseIni(std::string_view text) {
    IniGroups groups;
    std::string group;
    while (!text.empty()) {
        const std::string_view whole = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(whole.size() + 1, text.size()));
        const std::string_view line = Trimmed(whole);
        const std::size_t equals = line.find('=');
        if (line.starts_with('[') && line.ends_with(']')) {
            group = line.substr(1, line.size() - 2);
        } else if (!line.starts_with('#') && equals != line.npos) {
            groups[group].emplace(Trimmed(line.substr(0, equals)), Trimmed(line.substr(equals + 1)));
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
