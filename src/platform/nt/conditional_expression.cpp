#include "platform/nt/conditional_expression.h"

#include <algorithm>
#include <utility>

#include "platform/nt/byte_io.h"
#include "platform/nt/claim_text.h"
#include "platform/nt/condition_tokens.h"

namespace permora::nt {
namespace {

using Bytes = std::span<const std::uint8_t>;

// A part of a condition that waits for its operator.
struct Operand {
    enum class Kind { kLocalAttribute, kAttribute, kValue, kResult };
    Kind kind = Kind::kResult;
    std::string text;
    bool isEnclosed = false;  // in parentheses
    std::size_t depth = 0;    // operators within each other

    bool IsCondition() const { return kind != Kind::kValue; }
    std::string Enclosed() && { return isEnclosed ? std::move(text) : '(' + std::move(text) + ')'; }
};

class ConditionWriter {
  public:
    ConditionWriter(Bytes tokens, SddlWords manner) : rest(tokens), words(manner) {}

    std::optional<std::string> Write();

  private:
    bool WriteToken();
    bool WriteAttribute(std::uint8_t code);
    bool WriteOperator(const ConditionOperator& row);
    bool WriteUnary(const ConditionOperator& row, Operand operand);
    bool WriteBinary(const ConditionOperator& row, Operand left, Operand right);
    bool AppendValue(std::uint8_t code, Bytes& bytes, std::string& text) const;
    bool AppendElements(Bytes elements, std::string& text) const;
    bool AppendSid(Bytes sid, std::string& text) const;
    std::optional<Operand> Pop();
    bool PushResult(std::string text, bool isEnclosed, std::size_t depthBelow);

    Bytes rest;
    SddlWords words;
    std::vector<Operand> operands;
};

std::optional<std::uint8_t> TakeByte(Bytes& bytes) {
    if (bytes.empty()) return std::nullopt;
    const std::uint8_t byte = bytes.front();
    bytes = bytes.subspan(1);
    return byte;
}

// The bytes after their number.
std::optional<Bytes> TakeCounted(Bytes& bytes) {
    const auto size = ReadU32(bytes, 0);
    if (!size) return std::nullopt;
    const auto counted = Slice(bytes, 4, *size);
    if (counted) bytes = bytes.subspan(4 + counted->size());
    return counted;
}

bool AppendStoredNumber(Bytes& bytes, std::string& text) {
    constexpr std::size_t kNumberBytes = 8;
    const auto low = ReadU32(bytes, 0);
    const auto high = ReadU32(bytes, 4);
    const auto manner = Slice(bytes, kNumberBytes, 2);
    if (!low || !high || !manner) return false;
    const std::uint8_t sign = (*manner)[0];
    const std::uint8_t base = (*manner)[1];
    if (sign < 1 || sign > 3 || base < 1 || base > 3) return false;
    bytes = bytes.subspan(kNumberBytes + 2);
    return AppendNumber({.bits = std::uint64_t{*high} << 32U | *low,
                         .sign = static_cast<NumberSign>(sign),
                         .base = static_cast<NumberBase>(base)},
                        text);
}

std::optional<std::string> ConditionWriter::Write() {
    while (!rest.empty() && rest.front() != token::kPadding)
        if (!WriteToken()) return std::nullopt;
    const bool isPadding = std::ranges::all_of(rest, [](std::uint8_t byte) { return byte == 0; });
    if (!isPadding || operands.size() != 1 || !operands.front().IsCondition()) return std::nullopt;
    return std::move(operands.front()).Enclosed();
}

bool ConditionWriter::WriteToken() {
    const std::uint8_t code = TakeByte(rest).value_or(token::kPadding);
    if (code >= token::kLocalAttribute) return WriteAttribute(code);
    const auto* const row = std::ranges::find(kConditionOperators, code, &ConditionOperator::code);
    if (row != std::end(kConditionOperators)) return WriteOperator(*row);

    Operand value;
    value.kind = Operand::Kind::kValue;
    if (code != token::kComposite) {
        if (!AppendValue(code, rest, value.text)) return false;
    } else {
        const auto elements = TakeCounted(rest);
        if (!elements || !AppendElements(*elements, value.text)) return false;
    }
    operands.push_back(std::move(value));
    return true;
}

bool ConditionWriter::WriteAttribute(std::uint8_t code) {
    const auto name = TakeCounted(rest);
    if (!name) return false;
    Operand attribute;
    attribute.kind = Operand::Kind::kLocalAttribute;
    NameForm form = NameForm::kSimple;
    if (code != token::kLocalAttribute) {
        const auto* const prefix = std::ranges::find(kAttributePrefixes, code, &AttributePrefix::code);
        if (prefix == std::end(kAttributePrefixes)) return false;
        attribute.kind = Operand::Kind::kAttribute;
        attribute.text = prefix->word;
        form = NameForm::kExtended;
    }
    if (!AppendName(*name, form, attribute.text)) return false;
    operands.push_back(std::move(attribute));
    return true;
}

bool ConditionWriter::WriteOperator(const ConditionOperator& row) {
    auto last = Pop();
    if (!last) return false;
    if (row.kind != OperatorKind::kRelation && row.kind != OperatorKind::kLogical)
        return WriteUnary(row, std::move(*last));
    auto left = Pop();
    return left && WriteBinary(row, std::move(*left), std::move(*last));
}

bool ConditionWriter::WriteUnary(const ConditionOperator& row, Operand operand) {
    const std::size_t depth = operand.depth;
    const std::string word(row.word);
    switch (row.kind) {
        case OperatorKind::kMembership:
            if (operand.kind != Operand::Kind::kValue) return false;
            return PushResult('(' + word + ' ' + operand.text + ')', true, depth);
        case OperatorKind::kExistence:
            if (operand.kind == Operand::Kind::kValue || operand.kind == Operand::Kind::kResult) return false;
            return PushResult(word + ' ' + operand.text, false, depth);
        default:
            if (!operand.IsCondition()) return false;
            return PushResult(word + std::move(operand).Enclosed(), false, depth);
    }
}

bool ConditionWriter::WriteBinary(const ConditionOperator& row, Operand left, Operand right) {
    if (!left.IsCondition()) return false;
    const bool isLogical = row.kind == OperatorKind::kLogical;
    // In this place a local attribute would look like a value.
    const bool canStandRight = right.kind == Operand::Kind::kAttribute || right.kind == Operand::Kind::kValue;
    if (isLogical ? !right.IsCondition() : !canStandRight) return false;
    const std::size_t depth = std::max(left.depth, right.depth);
    const bool enclosesLeft = isLogical || left.kind == Operand::Kind::kResult;
    std::string text = '(' + (enclosesLeft ? std::move(left).Enclosed() : std::move(left.text)) + ' ';
    text += row.word;
    text += ' ';
    text += isLogical ? std::move(right).Enclosed() : std::move(right.text);
    text += ')';
    return PushResult(std::move(text), true, depth);
}

// A value that is not a list. Removes its bytes from `bytes`.
bool ConditionWriter::AppendValue(std::uint8_t code, Bytes& bytes, std::string& text) const {
    if (code >= token::kInt8 && code <= token::kInt64) return AppendStoredNumber(bytes, text);
    const auto counted = TakeCounted(bytes);
    if (!counted) return false;
    switch (code) {
        case token::kString:
            return AppendQuoted(*counted, text);
        case token::kOctets:
            AppendOctets(*counted, text);
            return true;
        case token::kSid:
            return AppendSid(*counted, text);
        default:
            return false;
    }
}

bool ConditionWriter::AppendElements(Bytes elements, std::string& text) const {
    text += '{';
    while (const auto code = TakeByte(elements)) {
        if (text.back() != '{') text += ", ";
        if (!AppendValue(*code, elements, text)) return false;
    }
    text += '}';
    return true;
}

bool ConditionWriter::AppendSid(Bytes bytes, std::string& text) const {
    const auto sid = Sid::FromBytes(bytes);
    if (!sid || sid->ByteSize() != bytes.size()) return false;
    text += "SID(";
    AppendSidAsSddl(*sid, words, text);
    text += ')';
    return true;
}

std::optional<Operand> ConditionWriter::Pop() {
    if (operands.empty()) return std::nullopt;
    Operand last = std::move(operands.back());
    operands.pop_back();
    return last;
}

bool ConditionWriter::PushResult(std::string text, bool isEnclosed, std::size_t depthBelow) {
    if (depthBelow == kMaxConditionDepth) return false;
    operands.push_back({Operand::Kind::kResult, std::move(text), isEnclosed, depthBelow + 1});
    return true;
}

}  // namespace

std::optional<std::string> ConditionToText(std::span<const std::uint8_t> stored, SddlWords words) {
    const auto signature = Slice(stored, 0, kConditionSignature.size());
    if (!signature || !std::ranges::equal(*signature, kConditionSignature)) return std::nullopt;
    return ConditionWriter(stored.subspan(kConditionSignature.size()), words).Write();
}

}  // namespace permora::nt
