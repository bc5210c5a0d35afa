#include "platform/nt/sddl_words.h"

#include <algorithm>

namespace permora::nt {

const Abbreviation* FindLetters(std::span<const Abbreviation> table, std::string_view letters) {
    const auto row = std::ranges::find(table, letters, &Abbreviation::letters);
    return row == table.end() ? nullptr : &*row;
}

const Abbreviation* FindValue(std::span<const Abbreviation> table, std::uint32_t value) {
    const auto row = std::ranges::find(table, value, &Abbreviation::value);
    return row == table.end() ? nullptr : &*row;
}

bool AppendBits(std::span<const Abbreviation> table, std::uint32_t bits, std::string& text) {
    std::uint32_t nameless = bits;
    for (const Abbreviation& row : table)
        nameless &= ~row.value;
    if (nameless != 0) return false;
    for (const Abbreviation& row : table)
        if ((bits & row.value) != 0) text += row.letters;
    return true;
}

std::optional<std::uint32_t> BitsFromText(std::string_view text,
                                          std::span<const std::span<const Abbreviation>> tables) {
    std::uint32_t bits = 0;
    for (; !text.empty(); text.remove_prefix(2)) {
        if (text.size() < 2) return std::nullopt;
        const Abbreviation* row = nullptr;
        for (const auto table : tables) {
            row = FindLetters(table, text.substr(0, 2));
            if (row != nullptr) break;
        }
        if (row == nullptr) return std::nullopt;
        bits |= row->value;
    }
    return bits;
}

}  // namespace permora::nt
