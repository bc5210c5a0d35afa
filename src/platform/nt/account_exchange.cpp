#include "platform/nt/account_exchange.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/nt/byte_io.h"
#include "platform/nt/condition_tokens.h"

namespace permora::nt {
namespace {

// A number, with one byte each for sign and base.
constexpr std::size_t kNumberTokenBytes = 10;
// A list of values within a list of values; the system makes none.
constexpr std::size_t kMaxLists = 4;

bool IsCounted(std::uint8_t code) {
    return code == token::kString || code == token::kOctets || code == token::kComposite ||
           code == token::kSid || code >= token::kLocalAttribute;
}

bool IsNumber(std::uint8_t code) {
    return code >= token::kInt8 && code <= token::kInt64;
}

bool IsOperator(std::uint8_t code) {
    return std::ranges::find(kConditionOperators, code, &ConditionOperator::code) !=
           std::end(kConditionOperators);
}

ExchangeResult Join(ExchangeResult one, ExchangeResult other) {
    return std::max(one, other);
}

}  // namespace

bool AccountExchange::ByBytes::operator()(const Sid& one, const Sid& other) const {
    return std::ranges::lexicographical_compare(one.Bytes(), other.Bytes());
}

bool AccountExchange::Add(const Sid& old, const Sid& other) {
    const auto [place, isNew] = others.try_emplace(old, Other{other});
    return isNew || place->second.sid == other;
}

std::vector<Sid> AccountExchange::Unused() const {
    std::vector<Sid> unused;
    for (const auto& [old, other] : others)
        if (!other.isUsed) unused.push_back(old);
    return unused;
}

ExchangeResult AccountExchange::Exchange(Sid& sid) {
    const auto other = others.find(sid);
    if (other == others.end()) return ExchangeResult::kUnchanged;
    other->second.isUsed = true;
    if (sid == other->second.sid) return ExchangeResult::kUnchanged;
    sid = other->second.sid;
    return ExchangeResult::kChanged;
}

bool AccountExchange::IsIn(Bytes bytes) const {
    return std::ranges::any_of(others, [bytes](const auto& row) {
        const Bytes sid = row.first.Bytes();
        return std::search(bytes.begin(), bytes.end(), sid.begin(), sid.end()) != bytes.end();
    });
}

// Appends the tokens of a condition with other accounts. False when they are malformed.
bool AccountExchange::Rewrite(Bytes tokens, std::size_t lists, std::vector<std::uint8_t>& rewritten) {
    while (!tokens.empty() && tokens.front() != token::kPadding) {
        const std::uint8_t code = tokens.front();
        tokens = tokens.subspan(1);
        rewritten.push_back(code);
        std::optional<Bytes> plain;  // what follows the code and stays
        if (IsCounted(code)) {
            const auto size = ReadU32(tokens, 0);
            plain = size ? Slice(tokens, sizeof(std::uint32_t), *size) : std::nullopt;
            if (!plain) return false;
            tokens = tokens.subspan(sizeof(std::uint32_t) + plain->size());
            std::vector<std::uint8_t> value(plain->begin(), plain->end());
            if (code == token::kComposite) {
                value.clear();
                if (lists == kMaxLists || !Rewrite(*plain, lists + 1, value)) return false;
            } else if (code == token::kSid) {
                auto sid = Sid::FromBytes(*plain);
                if (!sid || sid->ByteSize() != plain->size()) return false;
                Exchange(*sid);
                value.assign(sid->Bytes().begin(), sid->Bytes().end());
            }
            AppendU32(rewritten, static_cast<std::uint32_t>(value.size()));
            AppendBytes(rewritten, value);
        } else if (IsNumber(code)) {
            plain = Slice(tokens, 0, kNumberTokenBytes);
            if (!plain) return false;
            tokens = tokens.subspan(kNumberTokenBytes);
            AppendBytes(rewritten, *plain);
        } else if (!IsOperator(code)) {
            return false;
        }
    }
    return std::ranges::all_of(tokens, [](std::uint8_t byte) { return byte == token::kPadding; });
}

ExchangeResult AccountExchange::Exchange(Ace& ace) {
    const ExchangeResult result = ace.sid ? Exchange(*ace.sid) : ExchangeResult::kUnchanged;
    if (ace.tail.empty() || !IsIn(ace.tail)) return result;
    const Bytes tail = ace.tail;
    const auto signature = Slice(tail, 0, kConditionSignature.size());
    if (!signature || !std::ranges::equal(*signature, kConditionSignature)) return ExchangeResult::kHidden;
    std::vector<std::uint8_t> rewritten(kConditionSignature.begin(), kConditionSignature.end());
    if (!Rewrite(tail.subspan(kConditionSignature.size()), 0, rewritten)) return ExchangeResult::kHidden;
    rewritten.resize(RoundUpToFour(rewritten.size()));
    ace.tail = std::move(rewritten);
    return ExchangeResult::kChanged;
}

ExchangeResult AccountExchange::Exchange(Acl& acl) {
    ExchangeResult result = ExchangeResult::kUnchanged;
    for (Ace& ace : acl.entries)
        result = Join(result, Exchange(ace));
    return result;
}

// The list stays byte for byte what it was when nothing in it is exchanged.
ExchangeResult AccountExchange::ExchangeSystemList(std::vector<std::uint8_t>& bytes) {
    auto list = Acl::FromBytes(bytes);
    if (!list) return IsIn(bytes) ? ExchangeResult::kHidden : ExchangeResult::kUnchanged;
    const ExchangeResult result = Exchange(*list);
    if (result != ExchangeResult::kChanged) return result;
    std::vector<std::uint8_t> exchanged;
    if (!list->AppendTo(exchanged)) return ExchangeResult::kHidden;
    bytes = std::move(exchanged);
    return result;
}

ExchangeResult AccountExchange::Apply(SecurityDescriptor& descriptor) {
    if (IsEmpty()) return ExchangeResult::kUnchanged;
    SecurityDescriptor exchanged = descriptor;
    ExchangeResult result = ExchangeResult::kUnchanged;
    for (std::optional<Sid>* sid : {&exchanged.owner, &exchanged.group})
        if (*sid) result = Join(result, Exchange(**sid));
    if (exchanged.daclState == DaclState::kList) result = Join(result, Exchange(exchanged.dacl));
    if (!exchanged.saclBytes.empty()) result = Join(result, ExchangeSystemList(exchanged.saclBytes));
    if (result == ExchangeResult::kChanged) descriptor = std::move(exchanged);
    return result;
}

}  // namespace permora::nt
