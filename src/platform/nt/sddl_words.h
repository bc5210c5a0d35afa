// The two-letter words of the text forms, and masks as sums of them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace permora::nt {

struct Abbreviation {
    std::string_view letters;
    std::uint32_t value;
};

// The row with these letters or this value; null when there is none.
const Abbreviation* FindLetters(std::span<const Abbreviation> table, std::string_view letters);
const Abbreviation* FindValue(std::span<const Abbreviation> table, std::uint32_t value);

// Appends a name for each bit of `bits`; false, with `text` as before, when one has none.
[[nodiscard]] bool AppendBits(std::span<const Abbreviation> table, std::uint32_t bits, std::string& text);

// The bits named by the two-letter names that `text` consists of, each taken from the first of `tables` that
// has it.
std::optional<std::uint32_t> BitsFromText(std::string_view text,
                                          std::span<const std::span<const Abbreviation>> tables);

}  // namespace permora::nt
