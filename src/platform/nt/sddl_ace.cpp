#include "platform/nt/sddl_ace.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <span>
#include <system_error>

#include "platform/nt/ace_bits.h"
#include "platform/nt/byte_io.h"
#include "platform/nt/sddl.h"
#include "platform/nt/well_known_sids.h"

namespace permora::nt {
namespace {

struct Abbreviation {
    std::string_view letters;
    std::uint32_t value;
};

constexpr std::uint32_t kMandatoryLabelType = 0x11;

// clang-format off
// The types whose entries consist of nothing but what the six fields say. Conditional types (XA, XD, XU, ZA),
// resource attributes (RA) and access filters (FL) carry data behind the SID and are not among them.
constexpr Abbreviation kTypes[] = {
    {"A",  0x00}, {"D",  0x01}, {"AU", 0x02}, {"AL", 0x03},
    {"OA", 0x05}, {"OD", 0x06}, {"OU", 0x07}, {"OL", 0x08},
    {"ML", kMandatoryLabelType}, {"SP", 0x13}, {"TL", 0x14},
};

constexpr Abbreviation kFlags[] = {
    {"OI", kObjectInherit}, {"CI", kContainerInherit}, {"NP", kNoPropagateInherit}, {"IO", kInheritOnly},
    {"ID", kInherited}, {"CR", 0x20}, {"SA", 0x40}, {"FA", 0x80},
};

// Names for whole masks, written only where the mask is exactly that.
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

// In a mandatory label the low bits say what an account of a lower level may not do.
constexpr Abbreviation kLabelRights[] = {
    {"NW", 0x00000001}, {"NR", 0x00000002}, {"NX", 0x00000004},
};
// clang-format on

const Abbreviation* FindLetters(std::span<const Abbreviation> table, std::string_view letters) {
    const auto row = std::ranges::find(table, letters, &Abbreviation::letters);
    return row == table.end() ? nullptr : &*row;
}

const Abbreviation* FindValue(std::span<const Abbreviation> table, std::uint32_t value) {
    const auto row = std::ranges::find(table, value, &Abbreviation::value);
    return row == table.end() ? nullptr : &*row;
}

// Appends a name for each bit of `bits`; false, with `text` as before, when one has none.
bool AppendBits(std::span<const Abbreviation> table, std::uint32_t bits, std::string& text) {
    std::uint32_t nameless = bits;
    for (const Abbreviation& row : table)
        nameless &= ~row.value;
    if (nameless != 0) return false;
    for (const Abbreviation& row : table) {
        if ((bits & row.value) != 0) text += row.letters;
    }
    return true;
}

// The bits named by the two-letter names that `text` consists of, each taken from the first of `tables` that
// has it.
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

// A number as C writes it: hexadecimal after 0x, octal after another 0, else decimal.
std::optional<std::uint32_t> NumberFromText(std::string_view text) {
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

void AppendNumber(std::uint32_t mask, std::string& text) {
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), mask, 16).ptr;
    text += "0x";
    text.append(digits.data(), end);
}

void AppendRights(const Ace& ace, SddlWords words, std::string& text) {
    if (words == SddlWords::kNumbers) {
        AppendNumber(ace.mask, text);
        return;
    }
    if (ace.type == kMandatoryLabelType) {
        if (AppendBits(kLabelRights, ace.mask, text)) return;
    } else {
        if (const Abbreviation* whole = FindValue(kFileRights, ace.mask)) {
            text += whole->letters;
            return;
        }
        if (AppendBits(kSingleRights, ace.mask, text)) return;
    }
    AppendNumber(ace.mask, text);
}

std::optional<std::uint32_t> RightsFromText(std::string_view text, std::uint8_t type) {
    if (!text.empty() && text.front() >= '0' && text.front() <= '9') return NumberFromText(text);
    static constexpr std::span<const Abbreviation> kLabelTables[] = {kLabelRights};
    static constexpr std::span<const Abbreviation> kTables[] = {kFileRights, kSingleRights, kKeyRights};
    if (type == kMandatoryLabelType) return BitsFromText(text, kLabelTables);
    return BitsFromText(text, kTables);
}

// Which stored byte each pair of hexadecimal digits shows: the first three groups of a GUID are little-endian
// numbers, the rest bytes.
constexpr std::array<std::size_t, kGuidBytes> kGuidByteOrder = {3, 2, 1,  0,  5,  4,  7,  6,
                                                                8, 9, 10, 11, 12, 13, 14, 15};

constexpr std::size_t kGuidTextSize = 36;

bool IsDashBefore(std::size_t pair) {
    return pair == 4 || pair == 6 || pair == 8 || pair == 10;
}

void AppendGuid(std::span<const std::uint8_t> guid, std::string& text) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    for (std::size_t pair = 0; pair < kGuidBytes; ++pair) {
        if (IsDashBefore(pair)) text += '-';
        const unsigned byte = guid[kGuidByteOrder[pair]];
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0xFU];
    }
}

std::optional<std::array<std::uint8_t, kGuidBytes>> GuidFromText(std::string_view text) {
    if (text.size() != kGuidTextSize) return std::nullopt;
    std::array<std::uint8_t, kGuidBytes> guid{};
    for (std::size_t pair = 0; pair < kGuidBytes; ++pair) {
        if (IsDashBefore(pair)) {
            if (text.front() != '-') return std::nullopt;
            text.remove_prefix(1);
        }
        const auto [next, error] =
            std::from_chars(text.data(), text.data() + 2, guid[kGuidByteOrder[pair]], 16);
        if (error != std::errc() || next != text.data() + 2) return std::nullopt;
        text.remove_prefix(2);
    }
    return guid;
}

// Appends the fields "object type;inherited object type". False when the object part says more than two
// GUIDs.
bool AppendObjectFields(const Ace& ace, std::string& text) {
    std::span<const std::uint8_t> rest = ace.objectPart;
    std::uint32_t flags = 0;
    if (ShapeOfAceType(ace.type) == AceShape::kObject) {
        flags = ReadU32(rest, 0).value_or(~0U);
        if ((flags & ~(kObjectTypePresent | kInheritedObjectTypePresent)) != 0) return false;
        rest = rest.subspan(kObjectFlagsBytes);
    }
    for (const std::uint32_t flag : {kObjectTypePresent, kInheritedObjectTypePresent}) {
        if ((flags & flag) != 0) {
            if (rest.size() < kGuidBytes) return false;
            AppendGuid(rest.first(kGuidBytes), text);
            rest = rest.subspan(kGuidBytes);
        }
        text += ';';
    }
    return rest.empty();
}

bool ReadObjectFields(std::string_view objectType, std::string_view inheritedObjectType, Ace& ace) {
    if (ShapeOfAceType(ace.type) != AceShape::kObject)
        return objectType.empty() && inheritedObjectType.empty();
    AppendU32(ace.objectPart, (objectType.empty() ? 0 : kObjectTypePresent) |
                                  (inheritedObjectType.empty() ? 0 : kInheritedObjectTypePresent));
    for (const std::string_view text : {objectType, inheritedObjectType}) {
        if (text.empty()) continue;
        const auto guid = GuidFromText(text);
        if (!guid) return false;
        AppendBytes(ace.objectPart, *guid);
    }
    return true;
}

// The fields of an entry; nothing when there are not exactly six.
std::optional<std::array<std::string_view, 6>> SplitFields(std::string_view text) {
    std::array<std::string_view, 6> fields;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const std::size_t end = text.find(';');
        const bool isLast = i + 1 == fields.size();
        if ((end == std::string_view::npos) != isLast) return std::nullopt;
        fields[i] = text.substr(0, end);
        if (!isLast) text.remove_prefix(end + 1);
    }
    return fields;
}

}  // namespace

void AppendSidAsSddl(const Sid& sid, SddlWords words, std::string& text) {
    const WellKnownSid* known = FindWellKnownSid(sid);
    if (words == SddlWords::kAbbreviations && known != nullptr && !known->sddlAlias.empty())
        text += known->sddlAlias;
    else
        text += sid.ToText();
}

bool AppendAceAsSddl(const Ace& ace, SddlWords words, std::string& text) {
    const Abbreviation* type = FindValue(kTypes, ace.type);
    if (type == nullptr || !ace.tail.empty()) return false;
    std::string fields(type->letters);
    fields += ';';
    if (!AppendBits(kFlags, ace.flags, fields)) return false;
    fields += ';';
    AppendRights(ace, words, fields);
    fields += ';';
    if (!AppendObjectFields(ace, fields)) return false;
    AppendSidAsSddl(ace.sid, words, fields);
    text += fields;
    return true;
}

std::optional<Ace> AceFromSddl(std::string_view text, const Sid* machine) {
    const auto fields = SplitFields(text);
    if (!fields) return std::nullopt;
    const auto& [typeText, flagsText, rightsText, objectType, inheritedObjectType, sidText] = *fields;

    const Abbreviation* type = FindLetters(kTypes, typeText);
    if (type == nullptr) return std::nullopt;
    Ace ace;
    ace.type = static_cast<std::uint8_t>(type->value);
    static constexpr std::span<const Abbreviation> kFlagTables[] = {kFlags};
    const auto flags = BitsFromText(flagsText, kFlagTables);
    const auto mask = RightsFromText(rightsText, ace.type);
    const auto sid = SidFromSddl(sidText, machine);
    if (!flags || !mask || !sid || !ReadObjectFields(objectType, inheritedObjectType, ace))
        return std::nullopt;
    ace.flags = static_cast<std::uint8_t>(*flags);
    ace.mask = *mask;
    ace.sid = *sid;
    return ace;
}

}  // namespace permora::nt
