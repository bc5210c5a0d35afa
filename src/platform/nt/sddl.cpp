#include "platform/nt/sddl.h"

#include <algorithm>

#include "platform/nt/sddl_ace.h"

namespace permora::nt {
namespace {

// The part of a list before its entries.
struct ListFlag {
    std::string_view letters;
    std::uint16_t daclBit;
    std::uint16_t saclBit;
};
constexpr ListFlag kListFlags[] = {
    {"P", kDaclProtected, kSaclProtected},
    {"AR", kDaclAutoInheritRequest, kSaclAutoInheritRequest},
    {"AI", kDaclAutoInherited, kSaclAutoInherited},
};
constexpr std::string_view kNullList = "NO_ACCESS_CONTROL";

// A list as described by text.
struct ListText {
    bool isNull = false;
    Acl acl;
};

bool Includes(std::uint32_t parts, SddlParts part) {
    return (parts & static_cast<std::uint32_t>(part)) != 0;
}

void AppendListFlags(std::uint16_t control, std::uint16_t ListFlag::*bit, std::string& text) {
    for (const ListFlag& flag : kListFlags)
        if ((control & flag.*bit) != 0) text += flag.letters;
}

bool AppendEntries(const Acl& acl, SddlWords words, std::string& text) {
    for (const Ace& ace : acl.entries) {
        text += '(';
        if (!AppendAceAsSddl(ace, words, text)) return false;
        text += ')';
    }
    return true;
}

bool AppendDacl(const SecurityDescriptor& descriptor, SddlWords words, std::string& text) {
    if (descriptor.daclState == DaclState::kAbsent) return true;
    text += "D:";
    AppendListFlags(descriptor.control, &ListFlag::daclBit, text);
    if (descriptor.daclState == DaclState::kList) return AppendEntries(descriptor.dacl, words, text);
    text += kNullList;
    return true;
}

bool AppendSacl(const SecurityDescriptor& descriptor, SddlWords words, std::string& text) {
    const bool isNull = descriptor.saclBytes.empty();
    if (isNull && (descriptor.control & kSaclPresent) == 0) return true;
    text += "S:";
    AppendListFlags(descriptor.control, &ListFlag::saclBit, text);
    if (isNull) {
        text += kNullList;
        return true;
    }
    const auto acl = Acl::FromBytes(descriptor.saclBytes);
    return acl && AppendEntries(*acl, words, text);
}

// Removes a flag or the word for a null list from `text`.
bool TakeListWord(std::string_view& text, std::uint16_t ListFlag::*bit, std::uint16_t& control,
                  ListText& list) {
    if (text.starts_with(kNullList)) {
        list.isNull = true;
        text.remove_prefix(kNullList.size());
        return true;
    }
    const auto flag = std::ranges::find_if(
        kListFlags, [text](std::string_view letters) { return text.starts_with(letters); },
        &ListFlag::letters);
    if (flag == std::end(kListFlags)) return false;
    control |= flag->*bit;
    text.remove_prefix(flag->letters.size());
    return true;
}

// The position of the parenthesis that closes the first one. Conditions contain parentheses, and strings may
// contain any.
std::size_t FindClosingParenthesis(std::string_view text) {
    std::size_t depth = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"') isInString = !isInString;
        if (isInString) continue;
        if (text[i] == '(') ++depth;
        if (text[i] == ')' && --depth == 0) return i;
    }
    return text.npos;
}

// Removes an entry with its parentheses from `text`, which begins with one.
bool TakeEntry(std::string_view& text, const SddlAccounts& accounts, Acl& acl) {
    const std::size_t end = FindClosingParenthesis(text);
    if (end == text.npos) return false;
    auto ace = AceFromSddl(text.substr(1, end - 1), accounts);
    if (!ace) return false;
    // The revision of a list must announce its object entries.
    if (ace->object) acl.revision = Acl::kHighestRevision;
    acl.entries.push_back(std::move(*ace));
    text.remove_prefix(end + 1);
    return true;
}

bool IsAtPart(std::string_view text) {
    return text.size() >= 2 && text[1] == ':';
}

// Removes the part after "D:" or "S:" from `text`; its flags are added to `control`.
std::optional<ListText> TakeList(std::string_view& text, std::uint16_t ListFlag::*bit,
                                 const SddlAccounts& accounts, std::uint16_t& control) {
    ListText list;
    while (!text.empty() && text.front() != '(' && !IsAtPart(text))
        if (!TakeListWord(text, bit, control, list)) return std::nullopt;
    while (text.starts_with('('))
        if (list.isNull || !TakeEntry(text, accounts, list.acl)) return std::nullopt;
    if (list.acl.ByteSize() > Acl::kMaxBytes) return std::nullopt;
    return list;
}

bool TakeDacl(std::string_view& text, const SddlAccounts& accounts, SecurityDescriptor& descriptor) {
    if (descriptor.daclState != DaclState::kAbsent) return false;
    auto list = TakeList(text, &ListFlag::daclBit, accounts, descriptor.control);
    if (!list) return false;
    descriptor.control |= kDaclPresent;
    descriptor.daclState = list->isNull ? DaclState::kNull : DaclState::kList;
    descriptor.dacl = std::move(list->acl);
    return true;
}

bool TakeSacl(std::string_view& text, const SddlAccounts& accounts, SecurityDescriptor& descriptor) {
    if ((descriptor.control & kSaclPresent) != 0) return false;
    const auto list = TakeList(text, &ListFlag::saclBit, accounts, descriptor.control);
    if (!list) return false;
    descriptor.control |= kSaclPresent;
    return list->isNull || list->acl.AppendTo(descriptor.saclBytes);
}

bool TakeAccount(std::string_view& text, const SddlAccounts& accounts, std::optional<Sid>& account) {
    if (account) return false;
    // An account ends before the letter of the next part. The colon distinguishes the letter D from the last
    // digit of a hexadecimal authority.
    const std::size_t colon = text.find(':', 1);
    const std::size_t size = colon == text.npos ? text.size() : colon - 1;
    account = SidFromSddl(text.substr(0, size), accounts);
    text.remove_prefix(size);
    return account.has_value();
}

// Removes the part after its letter and colon from `text`.
bool TakePart(char key, std::string_view& text, const SddlAccounts& accounts,
              SecurityDescriptor& descriptor) {
    switch (key) {
        case 'O':
            return TakeAccount(text, accounts, descriptor.owner);
        case 'G':
            return TakeAccount(text, accounts, descriptor.group);
        case 'D':
            return TakeDacl(text, accounts, descriptor);
        case 'S':
            return TakeSacl(text, accounts, descriptor);
        default:
            return false;
    }
}

}  // namespace

std::optional<std::string> ToSddl(const SecurityDescriptor& descriptor, std::uint32_t parts,
                                  SddlWords words) {
    std::string text;
    if (descriptor.owner && Includes(parts, SddlParts::kOwner)) {
        text += "O:";
        AppendSidAsSddl(*descriptor.owner, words, text);
    }
    if (descriptor.group && Includes(parts, SddlParts::kGroup)) {
        text += "G:";
        AppendSidAsSddl(*descriptor.group, words, text);
    }
    if (Includes(parts, SddlParts::kDacl) && !AppendDacl(descriptor, words, text)) return std::nullopt;
    if (Includes(parts, SddlParts::kSacl) && !AppendSacl(descriptor, words, text)) return std::nullopt;
    return text;
}

std::optional<SecurityDescriptor> FromSddl(std::string_view text, const SddlAccounts& accounts) {
    SecurityDescriptor descriptor;
    while (!text.empty()) {
        if (!IsAtPart(text)) return std::nullopt;
        const char key = text.front();
        text.remove_prefix(2);
        if (!TakePart(key, text, accounts, descriptor)) return std::nullopt;
    }
    return descriptor;
}

}  // namespace permora::nt
