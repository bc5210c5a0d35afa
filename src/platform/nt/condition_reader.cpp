// Conditions from text, by descent through the grammar.
#include <algorithm>

#include "platform/ascii.h"
#include "platform/nt/byte_io.h"
#include "platform/nt/claim_text.h"
#include "platform/nt/condition_tokens.h"
#include "platform/nt/conditional_expression.h"

namespace permora::nt {
namespace {

// The deepest nesting of parentheses: our own texts have one pair for each operator, and one around an
// attribute.
constexpr std::size_t kMaxNesting = kMaxConditionDepth + 1;

class ConditionReader {
  public:
    ConditionReader(std::string_view condition, const SddlAccounts& meanings)
        : text(condition), accounts(meanings) {}

    bool ReadWhole() {
        SkipBlanks(text);
        if (!ReadEnclosed()) return false;
        SkipBlanks(text);
        return text.empty();
    }
    std::vector<std::uint8_t>& Stored() { return stored; }

  private:
    bool ReadEnclosed();
    bool ReadAlternatives();
    bool ReadConjunction();
    bool ReadTerm();
    bool ReadUnary(const ConditionOperator& row);
    bool ReadRelations();
    bool ReadAttribute(bool mayBeLocal);
    bool ReadOperand(bool mayBeAttribute);
    bool ReadValue();
    bool ReadList();
    bool ReadSid();
    const ConditionOperator* FindWord(OperatorKind kind) const;
    const ConditionOperator* TakeOperator(OperatorKind kind);
    bool TakeIgnoringCase(std::string_view word);
    void Append(std::uint8_t code) { stored.push_back(code); }
    void AppendCounted(std::uint8_t code, std::span<const std::uint8_t> bytes);

    std::string_view text;
    const SddlAccounts& accounts;
    std::vector<std::uint8_t> stored;
    std::size_t nesting = 0;
};

bool IsWordCharacter(char character) {
    const char letter = LowerLetter(character);
    return (letter >= 'a' && letter <= 'z') || character == '_';
}

bool ConditionReader::TakeIgnoringCase(std::string_view word) {
    if (!EqualsIgnoringCase(text.substr(0, word.size()), word)) return false;
    text.remove_prefix(word.size());
    return true;
}

void ConditionReader::AppendCounted(std::uint8_t code, std::span<const std::uint8_t> bytes) {
    Append(code);
    AppendU32(stored, static_cast<std::uint32_t>(bytes.size()));
    AppendBytes(stored, bytes);
}

// The operator of this kind at the front of the text, which is not part of a longer word.
const ConditionOperator* ConditionReader::FindWord(OperatorKind kind) const {
    // Every character of a local attribute's name belongs to the word.
    const std::string_view word = text.substr(0, text.find_first_of(" \t\n\v\f\r(){}<>=!&|\",#"));
    for (const ConditionOperator& row : kConditionOperators) {
        if (row.kind != kind) continue;
        const bool isHere = IsWordCharacter(row.word.front()) ? EqualsIgnoringCase(word, row.word)
                                                              : text.starts_with(row.word);
        if (isHere) return &row;
    }
    return nullptr;
}

const ConditionOperator* ConditionReader::TakeOperator(OperatorKind kind) {
    SkipBlanks(text);
    const ConditionOperator* row = FindWord(kind);
    if (row != nullptr) text.remove_prefix(row->word.size());
    return row;
}

bool ConditionReader::ReadEnclosed() {
    if (nesting == kMaxNesting || !TakeCharacter('(', text)) return false;
    ++nesting;
    if (!ReadAlternatives()) return false;
    --nesting;
    return TakeCharacter(')', text);
}

// Conditions with && or || between them, && first.
bool ConditionReader::ReadAlternatives() {
    if (!ReadConjunction()) return false;
    while (text.starts_with("||")) {
        text.remove_prefix(2);
        if (!ReadConjunction()) return false;
        Append(token::kOr);
    }
    return true;
}

bool ConditionReader::ReadConjunction() {
    if (!ReadTerm()) return false;
    while (text.starts_with("&&")) {
        text.remove_prefix(2);
        if (!ReadTerm()) return false;
        Append(token::kAnd);
    }
    return true;
}

bool ConditionReader::ReadTerm() {
    SkipBlanks(text);
    if (TakeCharacter('!', text)) {
        SkipBlanks(text);
        if (!ReadEnclosed()) return false;
        Append(token::kNot);
        SkipBlanks(text);
        return true;
    }
    if (text.starts_with('(')) return ReadEnclosed() && ReadRelations();
    for (const OperatorKind kind : {OperatorKind::kMembership, OperatorKind::kExistence})
        if (const ConditionOperator* row = TakeOperator(kind)) return ReadUnary(*row);
    return ReadAttribute(true) && ReadRelations();
}

bool ConditionReader::ReadUnary(const ConditionOperator& row) {
    SkipBlanks(text);
    const bool isRead = row.kind == OperatorKind::kExistence ? ReadAttribute(true) : ReadOperand(false);
    Append(row.code);
    SkipBlanks(text);
    return isRead;
}

// The second operand of a comparison, if there is one.
bool ConditionReader::ReadRelations() {
    while (const ConditionOperator* row = TakeOperator(OperatorKind::kRelation)) {
        if (!ReadOperand(true)) return false;
        Append(row->code);
    }
    return true;
}

bool ConditionReader::ReadAttribute(bool mayBeLocal) {
    std::uint8_t code = token::kLocalAttribute;
    for (const AttributePrefix& prefix : kAttributePrefixes) {
        if (!TakeIgnoringCase(prefix.word)) continue;
        code = prefix.code;
        break;
    }
    const bool isLocal = code == token::kLocalAttribute;
    std::vector<std::uint8_t> name;
    if ((isLocal && !mayBeLocal) || !TakeName(isLocal ? NameForm::kSimple : NameForm::kExtended, text, name))
        return false;
    AppendCounted(code, name);
    return true;
}

bool ConditionReader::ReadOperand(bool mayBeAttribute) {
    SkipBlanks(text);
    if (TakeCharacter('(', text)) {
        if (nesting == kMaxNesting) return false;
        ++nesting;
        if (!ReadOperand(mayBeAttribute)) return false;
        --nesting;
        SkipBlanks(text);
        return TakeCharacter(')', text);
    }
    if (text.starts_with('{')) return ReadList();
    if (text.starts_with('@')) return mayBeAttribute && ReadAttribute(false);
    return ReadValue();
}

bool ConditionReader::ReadValue() {
    if (text.empty()) return false;
    std::vector<std::uint8_t> bytes;
    switch (text.front()) {
        case '"':
            if (!TakeQuoted(text, bytes)) return false;
            AppendCounted(token::kString, bytes);
            return true;
        case '#':
            if (!TakeOctets(text, bytes)) return false;
            AppendCounted(token::kOctets, bytes);
            return true;
        case 'S':
        case 's':
            return ReadSid();
        default:
            break;
    }
    SignedNumber number;
    if (!TakeNumber(text, number)) return false;
    Append(token::kInt64);
    AppendU32(stored, static_cast<std::uint32_t>(number.bits));
    AppendU32(stored, static_cast<std::uint32_t>(number.bits >> 32U));
    Append(static_cast<std::uint8_t>(number.sign));
    Append(static_cast<std::uint8_t>(number.base));
    return true;
}

// Values in braces; lists within lists are not part of the grammar.
bool ConditionReader::ReadList() {
    TakeCharacter('{', text);
    std::vector<std::uint8_t> outer;
    outer.swap(stored);
    SkipBlanks(text);
    bool isComplete = TakeCharacter('}', text);
    while (!isComplete) {
        SkipBlanks(text);
        if (!ReadValue()) return false;
        SkipBlanks(text);
        isComplete = TakeCharacter('}', text);
        if (!isComplete && !TakeCharacter(',', text)) return false;
    }
    outer.swap(stored);
    AppendCounted(token::kComposite, outer);
    return true;
}

bool ConditionReader::ReadSid() {
    if (!TakeIgnoringCase("SID(")) return false;
    const std::size_t end = text.find(')');
    if (end == text.npos) return false;
    const auto sid = SidFromSddl(text.substr(0, end), accounts);
    if (!sid) return false;
    text.remove_prefix(end + 1);
    AppendCounted(token::kSid, sid->Bytes());
    return true;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> ConditionFromText(std::string_view text,
                                                           const SddlAccounts& accounts) {
    ConditionReader reader(text, accounts);
    reader.Stored().assign(kConditionSignature.begin(), kConditionSignature.end());
    if (!reader.ReadWhole()) return std::nullopt;
    std::vector<std::uint8_t> stored = std::move(reader.Stored());
    stored.resize(RoundUpToFour(stored.size()));
    // Operators of the same rank are nested. Only writing finds out how deep.
    if (!ConditionToText(stored, SddlWords::kNumbers)) return std::nullopt;
    return stored;
}

}  // namespace permora::nt
