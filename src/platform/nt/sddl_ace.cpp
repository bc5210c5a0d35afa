#include "platform/nt/sddl_ace.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/nt/ace_bits.h"
#include "platform/nt/conditional_expression.h"
#include "platform/nt/resource_attribute.h"
#include "platform/nt/sddl_rights.h"
#include "platform/nt/sddl_words.h"

namespace permora::nt {
namespace {

// The bytes after the SID, as the seventh field of the text.
enum class AceData {
    kNone,
    kCondition,
    kConditionOrNone,
    kAttribute,
};

struct AceWord {
    std::string_view letters;
    std::uint8_t type;
    AceData data = AceData::kNone;
};

// clang-format off
constexpr AceWord kAceWords[] = {
    {"A",  0x00}, {"D",  0x01}, {"AU", 0x02}, {"AL", 0x03},
    {"OA", 0x05}, {"OD", 0x06}, {"OU", 0x07}, {"OL", 0x08},
    {"XA", 0x09, AceData::kCondition}, {"XD", 0x0A, AceData::kCondition},
    {"ZA", 0x0B, AceData::kCondition}, {"XU", 0x0D, AceData::kCondition},
    {"ML", kMandatoryLabelType}, {"RA", 0x12, AceData::kAttribute}, {"SP", 0x13}, {"TL", 0x14},
    {"FL", 0x15, AceData::kConditionOrNone},
};

constexpr Abbreviation kFlags[] = {
    {"OI", kObjectInherit}, {"CI", kContainerInherit}, {"NP", kNoPropagateInherit}, {"IO", kInheritOnly},
    {"ID", kInherited}, {"CR", 0x20}, {"SA", 0x40}, {"FA", 0x80},
};
// clang-format on

std::optional<std::string> DataToText(AceData kind, std::span<const std::uint8_t> data, SddlWords words) {
    if (kind == AceData::kNone) return std::nullopt;
    return kind == AceData::kAttribute ? ResourceAttributeToText(data, words) : ConditionToText(data, words);
}

std::optional<std::vector<std::uint8_t>> DataFromText(AceData kind, std::string_view text,
                                                      const SddlAccounts& accounts) {
    if (kind == AceData::kNone) return std::nullopt;
    return kind == AceData::kAttribute ? ResourceAttributeFromText(text, accounts)
                                       : ConditionFromText(text, accounts);
}

bool MayBeWithoutData(AceData kind) {
    return kind == AceData::kNone || kind == AceData::kConditionOrNone;
}

// Appends the seventh field, if there is one. False when it would not be read as the same bytes.
bool AppendData(AceData kind, std::span<const std::uint8_t> data, SddlWords words, std::string& text) {
    if (data.empty()) return MayBeWithoutData(kind);
    const auto field = DataToText(kind, data, words);
    if (!field) return false;
    const auto readAgain = DataFromText(kind, *field, {});
    if (!readAgain || !std::ranges::equal(*readAgain, data)) return false;
    text += ';';
    text += *field;
    return true;
}

// Appends the fields "object type;inherited object type;". False when the flags say more than these.
bool AppendObjectFields(const Ace& ace, std::string& text) {
    const ObjectTypes types = ace.object.value_or(ObjectTypes());
    for (const std::optional<Guid>& guid : {types.objectType, types.inheritedObjectType}) {
        if (guid) AppendGuid(*guid, text);
        text += ';';
    }
    return types.otherFlags == 0;
}

bool ReadGuidField(std::string_view text, std::optional<Guid>& guid) {
    if (!text.empty()) guid = GuidFromText(text);
    return text.empty() || guid;
}

bool ReadObjectFields(std::string_view objectType, std::string_view inheritedObjectType, Ace& ace) {
    if (ShapeOfAceType(ace.type) != AceShape::kObject)
        return objectType.empty() && inheritedObjectType.empty();
    ObjectTypes& types = ace.object.emplace();
    return ReadGuidField(objectType, types.objectType) &&
           ReadGuidField(inheritedObjectType, types.inheritedObjectType);
}

// The fields of an entry. The last one includes everything after a sixth semicolon. Nothing when there are
// fewer than six.
struct AceFields {
    std::array<std::string_view, 6> fields;
    std::optional<std::string_view> data;
};
std::optional<AceFields> SplitFields(std::string_view text) {
    AceFields split;
    for (std::size_t i = 0; i < split.fields.size(); ++i) {
        const std::size_t end = text.find(';');
        const bool isLast = i + 1 == split.fields.size();
        if (end == text.npos && !isLast) return std::nullopt;
        split.fields.at(i) = text.substr(0, end);
        if (end == text.npos) return split;
        text.remove_prefix(end + 1);
    }
    split.data = text;
    return split;
}

}  // namespace

bool AppendAceAsSddl(const Ace& ace, SddlWords words, std::string& text) {
    const auto* const word = std::ranges::find(kAceWords, ace.type, &AceWord::type);
    if (word == std::end(kAceWords) || !ace.sid) return false;
    std::string fields(word->letters);
    fields += ';';
    if (!AppendBits(kFlags, ace.flags, fields)) return false;
    fields += ';';
    AppendRights(ace.mask, ace.type, words, fields);
    fields += ';';
    if (!AppendObjectFields(ace, fields)) return false;
    AppendSidAsSddl(*ace.sid, words, fields);
    if (!AppendData(word->data, ace.tail, words, fields)) return false;
    text += fields;
    return true;
}

std::optional<Ace> AceFromSddl(std::string_view text, const SddlAccounts& accounts) {
    const auto split = SplitFields(text);
    if (!split) return std::nullopt;
    const auto& [typeText, flagsText, rightsText, objectType, inheritedObjectType, sidText] = split->fields;

    const auto* const word = std::ranges::find(kAceWords, typeText, &AceWord::letters);
    if (word == std::end(kAceWords)) return std::nullopt;
    Ace ace;
    ace.type = word->type;
    static constexpr std::span<const Abbreviation> kFlagTables[] = {kFlags};
    const auto flags = BitsFromText(flagsText, kFlagTables);
    const auto mask = RightsFromText(rightsText, ace.type);
    const auto sid = SidFromSddl(sidText, accounts);
    if (!flags || !mask || !sid || !ReadObjectFields(objectType, inheritedObjectType, ace))
        return std::nullopt;
    ace.flags = static_cast<std::uint8_t>(*flags);
    ace.mask = *mask;
    ace.sid = sid;
    if (!split->data) return MayBeWithoutData(word->data) ? std::optional(std::move(ace)) : std::nullopt;
    auto data = DataFromText(word->data, *split->data, accounts);
    if (!data) return std::nullopt;
    ace.tail = std::move(*data);
    return ace;
}

}  // namespace permora::nt
