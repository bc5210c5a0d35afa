// One value of the registry and its line in a file.
//
// Form: the registry editor's export, as in Microsoft's "How to add, modify, or delete registry subkeys and
// values by using a .reg file", with UTF-8 in the place of UTF-16.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/api/registry.h"

namespace permora::host {

struct RegistryValue {
    std::string name;  // empty: the key's default value
    DWORD type = REG_SZ;
    // As the services hand it over: texts (REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ) in UTF-8 with their NULs.
    std::vector<std::uint8_t> data;
};

// The beginning of a line that holds a value.
struct ValueLine {
    std::string name;
    std::string_view content;  // what follows "=", a part of the line
};
// Nothing for a line that holds no value.
std::optional<ValueLine> SplitValueLine(std::string_view line);

// Whether the value whose lines (joined, without line ends) are `content` goes on in the next line.
bool IsContinued(std::string_view content);

// Reads the content of a value into `value`; continued lines are joined as they are, with their backslashes.
// False, changing nothing, for what is damaged.
bool ParseValueContent(std::string_view content, RegistryValue& value);

// The lines of a value, separated by `lineEnd`, without the last one's. The name must have no control
// characters.
std::string FormatValue(const RegistryValue& value, std::string_view lineEnd);

}  // namespace permora::host
