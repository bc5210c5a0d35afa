#include "platform/nt/sddl.h"

#include <algorithm>

#include "platform/nt/sddl_ace.h"
#include "platform/nt/well_known_sids.h"

namespace permora::nt {
namespace {

// What stands before the entries of a list.
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

// A list as text describes it.
struct ListText {
    bool isNull = false;
    Acl acl;
};

bool Includes(std::uint32_t parts, SddlParts part) {
    return (parts & static_cast<std::uint32_t>(part)) != 0;
}

void AppendListFlags(std::uint16_t control, std::uint16_t ListFlag::*bit, std::string& text) {
    for (const ListFlag& flag : kListFlags) {
        if ((control & flag.*bit) != 0) text += flag.letters;
    }
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

// Takes a flag or the word for a null list off `text`.
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

// Takes an entry with its parentheses off `text`.
bool TakeEntry(std::string_view& text, const Sid* machine, Acl& acl) {
    const std::size_t end = text.find(')');
    if (text.front() != '(' || end == std::string_view::npos) return false;
    auto ace = AceFromSddl(text.substr(1, end - 1), machine);
    if (!ace) return false;
    // A list must say by its revision that it holds object entries.
    if (ShapeOfAceType(ace->type) == AceShape::kObject) acl.revision = 4;
    acl.entries.push_back(std::move(*ace));
    text.remove_prefix(end + 1);
    return true;
}

// What follows "D:" or "S:"; the flags are added to `control`.
std::optional<ListText> ReadList(std::string_view text, std::uint16_t ListFlag::*bit, const Sid* machine,
                                 std::uint16_t& control) {
    ListText list;
    while (!text.empty() && text.front() != '(') {
        if (!TakeListWord(text, bit, control, list)) return std::nullopt;
    }
    while (!text.empty()) {
        if (list.isNull || !TakeEntry(text, machine, list.acl)) return std::nullopt;
    }
    if (list.acl.ByteSize() > Acl::kMaxBytes) return std::nullopt;
    return list;
}

bool ReadDacl(std::string_view text, const Sid* machine, SecurityDescriptor& descriptor) {
    if (descriptor.daclState != DaclState::kAbsent) return false;
    auto list = ReadList(text, &ListFlag::daclBit, machine, descriptor.control);
    if (!list) return false;
    descriptor.control |= kDaclPresent;
    descriptor.daclState = list->isNull ? DaclState::kNull : DaclState::kList;
    descriptor.dacl = std::move(list->acl);
    return true;
}

bool ReadSacl(std::string_view text, const Sid* machine, SecurityDescriptor& descriptor) {
    if ((descriptor.control & kSaclPresent) != 0) return false;
    const auto list = ReadList(text, &ListFlag::saclBit, machine, descriptor.control);
    if (!list) return false;
    descriptor.control |= kSaclPresent;
    return list->isNull || list->acl.AppendTo(descriptor.saclBytes);
}

bool ReadAccount(std::string_view text, const Sid* machine, std::optional<Sid>& account) {
    if (account) return false;
    account = SidFromSddl(text, machine);
    return account.has_value();
}

bool ReadPart(char key, std::string_view text, const Sid* machine, SecurityDescriptor& descriptor) {
    switch (key) {
        case 'O':
            return ReadAccount(text, machine, descriptor.owner);
        case 'G':
            return ReadAccount(text, machine, descriptor.group);
        case 'D':
            return ReadDacl(text, machine, descriptor);
        case 'S':
            return ReadSacl(text, machine, descriptor);
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

std::optional<SecurityDescriptor> FromSddl(std::string_view text, const Sid* machine) {
    SecurityDescriptor descriptor;
    while (!text.empty()) {
        if (text.size() < 2 || text[1] != ':') return std::nullopt;
        // A part ends before the letter of the next one. Looking for the colon keeps a hexadecimal
        // authority's last digit apart from the letter D.
        const std::size_t nextColon = text.find(':', 3);
        const std::size_t end = nextColon == std::string_view::npos ? text.size() : nextColon - 1;
        if (!ReadPart(text[0], text.substr(2, end - 2), machine, descriptor)) return std::nullopt;
        text.remove_prefix(end);
    }
    return descriptor;
}

std::optional<Sid> SidFromSddl(std::string_view text, const Sid* machine) {
    if (text.size() != 2) return Sid::FromText(text);
    const auto known = WellKnownSids();
    const auto row = std::ranges::find(known, text, &WellKnownSid::sddlAlias);
    if (row != known.end()) return row->sid;
    if (machine == nullptr) return std::nullopt;
    const auto accounts = RelativeAccounts();
    const auto account = std::ranges::find(accounts, text, &RelativeAccount::sddlAlias);
    if (account == accounts.end()) return std::nullopt;
    return machine->Append(account->relativeId);
}

}  // namespace permora::nt
