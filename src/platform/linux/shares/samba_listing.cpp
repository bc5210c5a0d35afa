#include "platform/linux/shares/samba_listing.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <set>

#include "platform/ascii.h"
#include "platform/linux/accounts/account_names.h"
#include "platform/nt/ace_bits.h"

namespace permora::host {

namespace {

bool IsTrue(std::string_view value) {
    constexpr std::array<std::string_view, 4> kWords = {"yes", "true", "1", "on"};
    return std::ranges::find(kWords, InLowerCase(value)) != kWords.end();
}

// Sections that are not shares.
bool IsPattern(std::string_view name) {
    return EqualsIgnoringCase(name, "global") || EqualsIgnoringCase(name, "homes") ||
           EqualsIgnoringCase(name, "printers");
}

Share ShareOf(const SambaSection& section) {
    if (IsSameShare(section.name, InterProcessShare().name)) return InterProcessShare();
    Share share;
    share.name = section.name;
    share.remark = section.Value("comment").value_or("");
    share.path = section.Value("path").value_or("");
    if (section.IsSet("printable")) share.type = STYPE_PRINTQ;
    if (section.IsSet("administrative share")) share.type |= STYPE_SPECIAL;
    const std::string limit = section.Value("max connections").value_or("");
    DWORD number = 0;
    const auto [end, error] = std::from_chars(limit.data(), limit.data() + limit.size(), number);
    const bool isLimited = error == std::errc() && end == limit.data() + limit.size() && number != 0;
    if (isLimited) share.maxUses = number;
    return share;
}

// --- Grants of users' own shares. Masks: what the server makes of "F" and "R", and for reading also what a
// share that everyone may read usually has, with the right to run programs.

constexpr std::uint32_t kFull = nt::kFileAllAccess;
constexpr std::uint32_t kRead = nt::kFileGenericRead;
constexpr std::uint32_t kReadAndExecute = nt::kFileGenericRead | nt::kFileGenericExecute;

// A share has nothing below it, so entries that are only handed down do not count.
char AccessOf(const nt::Ace& ace) {
    if ((ace.flags & INHERIT_ONLY_ACE) != 0 || !ace.tail.empty()) return 0;
    if (ace.type == ACCESS_DENIED_ACE_TYPE) return ace.mask == kFull ? 'D' : '\0';
    if (ace.type != ACCESS_ALLOWED_ACE_TYPE) return 0;
    if (ace.mask == kFull) return 'F';
    return ace.mask == kRead || ace.mask == kReadAndExecute ? 'R' : '\0';
}

}  // namespace

std::optional<std::string> SambaSection::Value(std::string_view parameter) const {
    for (const auto& [known, value] : parameters)
        if (known == parameter) return value;
    return std::nullopt;
}

bool SambaSection::IsSet(std::string_view parameter) const {
    return IsTrue(Value(parameter).value_or(""));
}

std::vector<SambaSection> ParseSambaSections(std::string_view text) {
    std::vector<SambaSection> sections;
    std::set<std::u16string> known;
    bool counts = false;
    while (!text.empty()) {
        const std::string_view line = TakeLine(text);
        if (line.starts_with('[') && line.ends_with(']')) {
            const std::string_view name = line.substr(1, line.size() - 2);
            counts = known.insert(ShareKey(name)).second;
            if (counts) sections.push_back({std::string(name), {}});
            continue;
        }
        const std::size_t sign = line.find('=');
        if (!counts || sign == line.npos) continue;
        sections.back().parameters.emplace_back(InLowerCase(WithoutOuterBlanks(line.substr(0, sign))),
                                                WithoutOuterBlanks(line.substr(sign + 1)));
    }
    return sections;
}

bool HasSection(std::string_view fileText, std::string_view share) {
    while (!fileText.empty()) {
        const std::string_view line = WithoutOuterBlanks(TakeLine(fileText));
        if (!line.starts_with('[')) continue;
        const std::string_view name = line.substr(1, line.find(']') - 1);
        if (IsSameShare(WithoutOuterBlanks(name), share)) return true;
    }
    return false;
}

std::vector<Share> SharesOfSections(const std::vector<SambaSection>& sections) {
    std::vector<Share> shares;
    for (const SambaSection& section : sections) {
        const bool isAvailable = IsTrue(section.Value("available").value_or("yes"));
        if (isAvailable && !IsPattern(section.name) && IsPlainAccountName(section.name))
            shares.push_back(ShareOf(section));
    }
    return shares;
}

std::optional<std::string> FormatUserShareAcl(const nt::SecurityDescriptor& descriptor) {
    if (descriptor.daclState != nt::DaclState::kList || !descriptor.saclBytes.empty()) return std::nullopt;
    std::string text;
    for (const nt::Ace& ace : descriptor.dacl.entries) {
        const char access = AccessOf(ace);
        if (access == 0 || !ace.sid) return std::nullopt;
        text += (text.empty() ? "" : ",") + ace.sid->ToText() + ':' + LowerLetter(access);
    }
    // An empty list would be read as the default, which lets everyone read.
    if (text.empty()) return std::nullopt;
    return text;
}

std::optional<std::vector<UserShareGrant>> ParseUserShareAcl(std::string_view text) {
    std::vector<UserShareGrant> grants;
    while (!text.empty()) {
        const std::string_view part = text.substr(0, text.find(','));
        text.remove_prefix(std::min(part.size() + 1, text.size()));
        if (part.size() < 3 || part[part.size() - 2] != ':') return std::nullopt;
        const char access = part.back();
        if (access != 'F' && access != 'R' && access != 'D') return std::nullopt;
        grants.push_back({std::string(part.substr(0, part.size() - 2)), access});
    }
    return grants;
}

nt::Ace AceOfGrant(char access, const nt::Sid& account) {
    nt::Ace ace;
    ace.type = access == 'D' ? ACCESS_DENIED_ACE_TYPE : ACCESS_ALLOWED_ACE_TYPE;
    ace.mask = access == 'R' ? kRead : kFull;
    ace.sid = account;
    return ace;
}

}  // namespace permora::host
