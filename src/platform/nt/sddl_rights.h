// Access masks inside the text forms of descriptors. Words: [MS-DTYP] 2.5.1.1.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/nt/sddl_sid.h"

namespace permora::nt {

// The same bits have other words in a mandatory label; `aceType` is the type of the mask's entry.
void AppendRights(std::uint32_t mask, std::uint8_t aceType, SddlWords words, std::string& text);

// The mask that the whole of `text` means: words, or one number as in C.
std::optional<std::uint32_t> RightsFromText(std::string_view text, std::uint8_t aceType);

}  // namespace permora::nt
