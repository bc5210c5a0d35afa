// The attribute of a resource attribute entry: ("Secrecy",TU,0x0,3). Stored form: [MS-DTYP] 2.4.10.1
// CLAIM_SECURITY_ATTRIBUTE_RELATIVE_V1; text: 2.5.1.1.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/nt/sddl_sid.h"

namespace permora::nt {

// The text of an attribute as the system writes it, in parentheses. `stored` may end with padding. Nothing
// when it is malformed, text has no words for a part of it, or its parts do not follow each other as the
// system lays them out (the offsets of the values, the name, the values in order): other layouts would not
// come back.
std::optional<std::string> ResourceAttributeToText(std::span<const std::uint8_t> stored, SddlWords words);

// The stored form of the whole of `text`, padded with zeros to a multiple of four; nothing when it breaks the
// grammar. `accounts` as for SidFromSddl.
std::optional<std::vector<std::uint8_t>> ResourceAttributeFromText(std::string_view text,
                                                                   const SddlAccounts& accounts = {});

}  // namespace permora::nt
