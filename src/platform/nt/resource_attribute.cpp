#include "platform/nt/resource_attribute.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "platform/nt/byte_io.h"
#include "platform/nt/claim_text.h"

namespace permora::nt {
namespace {

enum class ClaimType : std::uint16_t {
    kInteger = 1,
    kUnsigned = 2,
    kString = 3,
    kSid = 5,
    kBoolean = 6,
    kOctets = 16,
};

struct ClaimWord {
    ClaimType type;
    std::string_view word;
};
constexpr ClaimWord kClaimWords[] = {
    {ClaimType::kInteger, "TI"}, {ClaimType::kUnsigned, "TU"}, {ClaimType::kString, "TS"},
    {ClaimType::kSid, "TD"},     {ClaimType::kOctets, "TX"},   {ClaimType::kBoolean, "TB"},
};

constexpr std::size_t kClaimHeaderBytes = 16;
constexpr std::size_t kOffsetBytes = 4;

// The flags of the grammar: sixteen bits of the attribute's maker, eight bits that are 0, and six flags of
// the system.
constexpr std::uint32_t kFlagsOfGrammar = 0xFFFF003F;

// A value of 64 bits as text, by the rules of its type.
bool AppendWhole(ClaimType type, std::uint64_t bits, std::string& text) {
    if (type == ClaimType::kBoolean && bits > 1) return false;
    if (type == ClaimType::kUnsigned) {
        text += std::to_string(bits);
        return true;
    }
    const bool isNegative = (bits >> 63U) != 0;
    return AppendNumber({bits, isNegative ? NumberSign::kMinus : NumberSign::kNone, NumberBase::kDecimal},
                        text);
}

// A number of a type's range.
bool TakeWhole(ClaimType type, std::string_view& text, std::uint64_t& bits) {
    const bool isPlainDecimal = !text.empty() && text.front() >= '1' && text.front() <= '9';
    if (type == ClaimType::kUnsigned && isPlainDecimal) {
        // Conditions know decimal numbers of 63 bits only.
        const auto [next, error] = std::from_chars(text.data(), text.data() + text.size(), bits);
        if (error != std::errc()) return false;
        text.remove_prefix(static_cast<std::size_t>(next - text.data()));
        return true;
    }
    SignedNumber number;
    if (!TakeNumber(text, number)) return false;
    bits = number.bits;
    switch (type) {
        case ClaimType::kUnsigned:
            return number.sign != NumberSign::kMinus || bits == 0;
        case ClaimType::kBoolean:
            return bits <= 1;
        default:
            return number.sign == NumberSign::kMinus || bits >> 63U == 0;
    }
}

// Reads an attribute part by part; each must begin where the one before it ended.
class AttributeWriter {
  public:
    AttributeWriter(std::span<const std::uint8_t> bytes, SddlWords manner) : stored(bytes), words(manner) {}

    std::optional<std::string> Write();

  private:
    bool WriteName();
    bool WriteValue(std::size_t index);
    bool WriteCounted();
    bool TakeText(std::span<const std::uint8_t>& units);

    std::span<const std::uint8_t> stored;
    SddlWords words;
    ClaimType type = ClaimType::kInteger;
    std::size_t next = 0;  // where the part after the last one begins
    std::string text;
};

std::optional<std::string> AttributeWriter::Write() {
    const auto header = Slice(stored, 0, kClaimHeaderBytes);
    if (!header) return std::nullopt;
    const auto* const row = std::ranges::find(
        kClaimWords, static_cast<ClaimType>(ReadU16(stored, 4).value_or(0)), &ClaimWord::type);
    const std::uint32_t flags = ReadU32(stored, 8).value_or(0);
    const std::size_t count = ReadU32(stored, 12).value_or(0);
    const bool isReserved = ReadU16(stored, 6) == std::uint16_t{0};
    if (row == std::end(kClaimWords) || !isReserved || (flags & ~kFlagsOfGrammar) != 0 ||
        count > (stored.size() - kClaimHeaderBytes) / kOffsetBytes)
        return std::nullopt;
    type = row->type;
    next = kClaimHeaderBytes + kOffsetBytes * count;

    text = "(\"";
    if (ReadU32(stored, 0) != next || !WriteName()) return std::nullopt;
    text += "\",";
    text += row->word;
    text += ',';
    if (!AppendNumber({flags, NumberSign::kNone, NumberBase::kHexadecimal}, text)) return std::nullopt;
    for (std::size_t index = 0; index < count; ++index) {
        text += ',';
        if (!WriteValue(index)) return std::nullopt;
    }
    text += ')';
    const bool isPadding =
        std::ranges::all_of(stored.subspan(next), [](std::uint8_t byte) { return byte == 0; });
    return isPadding ? std::optional(std::move(text)) : std::nullopt;
}

// The units of a text before its NUL, which is skipped.
bool AttributeWriter::TakeText(std::span<const std::uint8_t>& units) {
    const std::size_t begin = next;
    while (const auto unit = ReadU16(stored, next)) {
        next += 2;
        if (*unit != 0) continue;
        units = stored.subspan(begin, next - 2 - begin);
        return true;
    }
    return false;
}

bool AttributeWriter::WriteName() {
    std::span<const std::uint8_t> units;
    return TakeText(units) && AppendName(units, NameForm::kExtended, text);
}

bool AttributeWriter::WriteValue(std::size_t index) {
    if (ReadU32(stored, kClaimHeaderBytes + kOffsetBytes * index) != next) return false;
    if (type == ClaimType::kString) {
        std::span<const std::uint8_t> units;
        return TakeText(units) && AppendQuoted(units, text);
    }
    if (type == ClaimType::kSid || type == ClaimType::kOctets) return WriteCounted();
    const auto low = ReadU32(stored, next);
    const auto high = ReadU32(stored, next + 4);
    if (!low || !high) return false;
    next += 8;
    return AppendWhole(type, std::uint64_t{*high} << 32U | *low, text);
}

bool AttributeWriter::WriteCounted() {
    const auto size = ReadU32(stored, next);
    const auto bytes = size ? Slice(stored, next + 4, *size) : std::nullopt;
    if (!bytes) return false;
    next += 4 + bytes->size();
    if (type == ClaimType::kOctets) {
        AppendOctets(*bytes, text);
        return true;
    }
    const auto sid = Sid::FromBytes(*bytes);
    if (!sid || sid->ByteSize() != bytes->size()) return false;
    AppendSidAsSddl(*sid, words, text);
    return true;
}

class AttributeReader {
  public:
    AttributeReader(std::string_view attribute, const SddlAccounts& meanings)
        : text(attribute), accounts(meanings) {}

    std::optional<std::vector<std::uint8_t>> Read();

  private:
    bool ReadType();
    bool ReadFlags();
    bool ReadValue();
    bool ReadString(std::vector<std::uint8_t>& value);
    bool ReadOctets(std::vector<std::uint8_t>& value);
    bool ReadSid(std::vector<std::uint8_t>& value);
    bool TakeSeparator(char separator);
    std::vector<std::uint8_t> Stored() const;

    std::string_view text;
    const SddlAccounts& accounts;
    ClaimType type = ClaimType::kInteger;
    std::uint32_t flags = 0;
    std::vector<std::uint8_t> name;
    std::vector<std::vector<std::uint8_t>> values;
};

bool AttributeReader::TakeSeparator(char separator) {
    SkipBlanks(text);
    if (!TakeCharacter(separator, text)) return false;
    SkipBlanks(text);
    return true;
}

std::optional<std::vector<std::uint8_t>> AttributeReader::Read() {
    if (!TakeSeparator('(') || !TakeCharacter('"', text) || !TakeName(NameForm::kExtended, text, name) ||
        !TakeCharacter('"', text) || !TakeSeparator(',') || !ReadType() || !TakeSeparator(',') ||
        !ReadFlags())
        return std::nullopt;
    AppendU16(name, 0);
    while (!TakeSeparator(')'))
        if (!TakeSeparator(',') || !ReadValue()) return std::nullopt;
    if (!text.empty()) return std::nullopt;
    return Stored();
}

bool AttributeReader::ReadType() {
    const auto* const row = std::ranges::find(kClaimWords, text.substr(0, 2), &ClaimWord::word);
    if (row == std::end(kClaimWords)) return false;
    type = row->type;
    text.remove_prefix(2);
    return true;
}

bool AttributeReader::ReadFlags() {
    SignedNumber number;
    if (!TakeNumber(text, number) || number.sign != NumberSign::kNone ||
        (number.bits & ~std::uint64_t{kFlagsOfGrammar}) != 0)
        return false;
    flags = static_cast<std::uint32_t>(number.bits);
    return true;
}

bool AttributeReader::ReadValue() {
    std::vector<std::uint8_t>& value = values.emplace_back();
    if (type == ClaimType::kString) return ReadString(value);
    if (type == ClaimType::kOctets) return ReadOctets(value);
    if (type == ClaimType::kSid) return ReadSid(value);
    std::uint64_t bits = 0;
    if (!TakeWhole(type, text, bits)) return false;
    AppendU32(value, static_cast<std::uint32_t>(bits));
    AppendU32(value, static_cast<std::uint32_t>(bits >> 32U));
    return true;
}

bool AttributeReader::ReadString(std::vector<std::uint8_t>& value) {
    if (!TakeQuoted(text, value)) return false;
    AppendU16(value, 0);
    return true;
}

// The system also accepts pairs of digits without the "#".
bool AttributeReader::ReadOctets(std::vector<std::uint8_t>& value) {
    std::vector<std::uint8_t> octets;
    if (text.starts_with('#')) {
        if (!TakeOctets(text, octets)) return false;
    } else {
        const std::size_t size = std::min(text.find_first_not_of("0123456789abcdefABCDEF"), text.size());
        const std::string digits = '#' + std::string(text.substr(0, size));
        std::string_view rest = digits;
        if (size == 0 || size % 2 != 0 || !TakeOctets(rest, octets)) return false;
        text.remove_prefix(size);
    }
    AppendU32(value, static_cast<std::uint32_t>(octets.size()));
    AppendBytes(value, octets);
    return true;
}

bool AttributeReader::ReadSid(std::vector<std::uint8_t>& value) {
    const std::size_t size = std::min(text.find_first_of(",) \t\n\v\f\r"), text.size());
    const auto sid = SidFromSddl(text.substr(0, size), accounts);
    if (!sid) return false;
    text.remove_prefix(size);
    AppendU32(value, static_cast<std::uint32_t>(sid->ByteSize()));
    AppendBytes(value, sid->Bytes());
    return true;
}

std::vector<std::uint8_t> AttributeReader::Stored() const {
    std::size_t next = kClaimHeaderBytes + kOffsetBytes * values.size();
    std::vector<std::uint8_t> stored;
    AppendU32(stored, static_cast<std::uint32_t>(next));
    AppendU16(stored, static_cast<std::uint16_t>(type));
    AppendU16(stored, 0);
    AppendU32(stored, flags);
    AppendU32(stored, static_cast<std::uint32_t>(values.size()));
    next += name.size();
    for (const auto& value : values) {
        AppendU32(stored, static_cast<std::uint32_t>(next));
        next += value.size();
    }
    AppendBytes(stored, name);
    for (const auto& value : values)
        AppendBytes(stored, value);
    stored.resize(RoundUpToFour(stored.size()));
    return stored;
}

}  // namespace

std::optional<std::string> ResourceAttributeToText(std::span<const std::uint8_t> stored, SddlWords words) {
    return AttributeWriter(stored, words).Write();
}

std::optional<std::vector<std::uint8_t>> ResourceAttributeFromText(std::string_view text,
                                                                   const SddlAccounts& accounts) {
    return AttributeReader(text, accounts).Read();
}

}  // namespace permora::nt
