// Files of groups and keys, as desktops write them.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace permora::host {

// "[group]" to its "key=value" lines. Of several values for one key the first counts.
using IniGroups = std::map<std::string, std::map<std::string, std::string, std::less<>>, std::less<>>;

// Lines of another form are passed over.
IniGroups ParseIni(std::string_view text);
// Empty for a file that cannot be read.
IniGroups ReadIniFile(const std::string& path);
// Empty when there is no such value.
std::string IniValue(const IniGroups& groups, std::string_view group, std::string_view key);

}  // namespace permora::host
