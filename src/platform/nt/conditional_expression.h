// The conditions under which callback entries apply: "(@USER.Title == "PM")". Stored form: [MS-DTYP]
// 2.4.4.17, operators behind their operands; text: 2.5.1.1.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/nt/sddl_sid.h"

namespace permora::nt {

// The deepest nesting of operators, parentheses and negations. Deeper conditions are refused, so that no text
// or disk decides how much stack and time they need.
inline constexpr std::size_t kMaxConditionDepth = 500;

// The text of a condition as the system writes it, in parentheses; `stored` begins with the signature and may
// end with padding. Nothing when it is malformed, or when text cannot express a part of it. Numbers of less
// than 64 bits look like the others, so only ConditionFromText shows whether the text means the same bytes.
std::optional<std::string> ConditionToText(std::span<const std::uint8_t> stored, SddlWords words);

// The stored form of the whole of `text`, padded with zeros to a multiple of four; nothing when it breaks the
// grammar. `accounts` as for SidFromSddl.
std::optional<std::vector<std::uint8_t>> ConditionFromText(std::string_view text,
                                                           const SddlAccounts& accounts = {});

}  // namespace permora::nt
