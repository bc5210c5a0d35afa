#include "platform/nt/sddl_rights.h"

#include <array>
#include <charconv>
#include <span>
#include <system_error>

#include "platform/nt/ace_bits.h"
#include "platform/nt/sddl_words.h"

namespace permora::nt {
namespace {

// clang-format off
// Names for whole masks, written only for exactly this mask.
constexpr Abbreviation kFileRights[] = {
    {"FA", kFileAllAccess}, {"FR", kFileGenericRead}, {"FW", kFileGenericWrite}, {"FX", kFileGenericExecute},
};

// Names for single bits, in the order in which they are written. Those of the low bits are the directory
// service's; file rights that have no whole name borrow them.
constexpr Abbreviation kSingleRights[] = {
    {"CC", 0x00000001}, {"DC", 0x00000002}, {"LC", 0x00000004}, {"SW", 0x00000008}, {"RP", 0x00000010},
    {"WP", 0x00000020}, {"DT", 0x00000040}, {"LO", 0x00000080}, {"CR", 0x00000100},
    {"SD", 0x00010000}, {"RC", 0x00020000}, {"WD", 0x00040000}, {"WO", 0x00080000},
    {"GA", kGenericAll}, {"GX", kGenericExecute}, {"GW", kGenericWrite}, {"GR", kGenericRead},
};

// Names for registry masks: understood, never written, since no file's rights mean a registry key.
constexpr Abbreviation kKeyRights[] = {
    {"KA", 0x000F003F}, {"KR", 0x00020019}, {"KW", 0x00020006}, {"KX", 0x00020019},
};

// In a mandatory label, the low bits are the denied rights of accounts of a lower level.
constexpr Abbreviation kLabelRights[] = {
    {"NW", 0x00000001}, {"NR", 0x00000002}, {"NX", 0x00000004},
};
// clang-format on

// A number as C writes it: hexadecimal after 0x, octal after another 0, else decimal.
std::optional<std::uint32_t> MaskFromNumber(std::string_view text) {
    int base = 10;
    if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    } else if (text.starts_with('0')) {
        base = 8;
    }
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, number, base);
    if (error != std::errc() || next != end) return std::nullopt;
    return number;
}

void AppendMaskNumber(std::uint32_t mask, std::string& text) {
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), mask, 16).ptr;
    text += "0x";
    text.append(digits.data(), end);
}

}  // namespace

void AppendRights(std::uint32_t mask, std::uint8_t aceType, SddlWords words, std::string& text) {
    if (words == SddlWords::kNumbers) {
        AppendMaskNumber(mask, text);
        return;
    }
    if (aceType == kMandatoryLabelType) {
        if (AppendBits(kLabelRights, mask, text)) return;
    } else {
        if (const Abbreviation* whole = FindValue(kFileRights, mask)) {
            text += whole->letters;
            return;
        }
        if (AppendBits(kSingleRights, mask, text)) return;
    }
    AppendMaskNumber(mask, text);
}

std::optional<std::uint32_t> RightsFromText(std::string_view text, std::uint8_t aceType) {
    if (!text.empty() && text.front() >= '0' && text.front() <= '9') return MaskFromNumber(text);
    static constexpr std::span<const Abbreviation> kLabelTables[] = {kLabelRights};
    static constexpr std::span<const Abbreviation> kTables[] = {kFileRights, kSingleRights, kKeyRights};
    if (aceType == kMandatoryLabelType) return BitsFromText(text, kLabelTables);
    return BitsFromText(text, kTables);
}

}  // namespace permora::nt
