#include "platform/linux/accounts/server_output.h"

#include <algorithm>
#include <charconv>

#include "platform/ascii.h"
#include "platform/linux/accounts/account_names.h"

namespace permora::host {
namespace {

constexpr std::string_view kNobody = "result was NT_STATUS_NONE_MAPPED";

// Takes a fixed text off the front.
bool TakePrefix(std::string_view prefix, std::string_view& text) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

bool TakeSuffix(std::string_view suffix, std::string_view& text) {
    if (!text.ends_with(suffix)) return false;
    text.remove_suffix(suffix.size());
    return true;
}

template <int base>
std::optional<std::uint32_t> NumberOf(std::string_view digits) {
    std::uint32_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [place, error] = std::from_chars(digits.data(), end, number, base);
    if (error != std::errc() || place != end) return std::nullopt;
    return number;
}

// S-1-5-21-a-b-c, the form of every machine's and every domain's SID.
bool IsDomainSid(const nt::Sid& sid) {
    return sid.Authority() == 5 && sid.SubAuthorityCount() == 4 && sid.SubAuthority(0) == 21;
}

// What `lsaquery` tells of a domain.
struct DomainLines {
    std::string_view name;
    std::string_view sid;
};
std::optional<DomainLines> TakeDomain(std::string_view& text) {
    std::string_view rest = text;
    DomainLines lines{TakeLine(rest), TakeLine(rest)};
    if (!TakePrefix("Domain Name: ", lines.name) || !TakePrefix("Domain Sid: ", lines.sid))
        return std::nullopt;
    text = rest;
    return lines;
}

// "DOMAIN\name (1)"
std::optional<AccountName> ReadName(std::string_view text) {
    const std::size_t opening = text.rfind(" (");
    if (opening == text.npos || !TakeSuffix(")", text)) return std::nullopt;
    const std::optional<std::uint32_t> use = NumberOf<10>(text.substr(opening + 2));
    if (!use || *use < SidTypeUser || *use > SidTypeComputer) return std::nullopt;
    if (*use == SidTypeUnknown || *use == SidTypeInvalid) return AccountName{};
    text = text.substr(0, opening);
    const std::string_view domain = TakeUntil('\\', text);
    if (!IsPlainAccountName(domain) || !IsPlainAccountName(text)) return std::nullopt;
    return AccountName{std::string(text), std::string(domain), static_cast<SID_NAME_USE>(*use)};
}

}  // namespace

std::optional<ServerIdentity> TakeIdentity(std::string_view& text) {
    std::string_view rest = text;
    const std::optional<DomainLines> lines = TakeDomain(rest);
    const std::optional<nt::Sid> sid = lines ? nt::Sid::FromText(lines->sid) : std::nullopt;
    if (!sid || !IsDomainSid(*sid) || !CanBeAskedFor(lines->name)) return std::nullopt;
    text = rest;
    return ServerIdentity{std::string(lines->name), *sid};
}

std::optional<ServerRole> TakeRole(std::string_view& text, const ServerIdentity& server) {
    const std::optional<DomainLines> lines = TakeDomain(text);
    if (!lines) return std::nullopt;
    return nt::Sid::FromText(lines->sid) == server.sid ? ServerRole::kDomainController : ServerRole::kOther;
}

std::optional<std::vector<std::string_view>> SplitAnswers(std::string_view text, const ServerIdentity& server,
                                                          std::size_t count) {
    const std::string between = "Domain Name: " + server.name + "\nDomain Sid: " + server.sid.ToText() + '\n';
    std::vector<std::string_view> answers;
    for (std::size_t end = text.find(between); end != text.npos; end = text.find(between)) {
        answers.push_back(text.substr(0, end));
        text.remove_prefix(end + between.size());
    }
    answers.push_back(text);
    return answers.size() == count ? std::optional(answers) : std::nullopt;
}

std::optional<std::vector<AccountName>> ParseServerNames(std::string_view text,
                                                         std::span<const nt::Sid> asked) {
    std::vector<AccountName> names(asked.size());
    std::vector<bool> isAnswered(asked.size());
    if (std::string_view rest = text; TakeLine(rest) == kNobody && rest.empty()) return names;
    while (!text.empty()) {
        std::string_view line = TakeLine(text);
        const std::optional<nt::Sid> sid = nt::Sid::FromText(TakeUntil(' ', line));
        const std::optional<AccountName> name = ReadName(line);
        if (!sid || !name) return std::nullopt;
        const auto place = std::ranges::find(asked, *sid) - asked.begin();
        const auto i = static_cast<std::size_t>(place);
        if (i == asked.size() || isAnswered[i]) return std::nullopt;
        isAnswered[i] = true;
        names[i] = *name;
    }
    return std::ranges::find(isAnswered, false) == isAnswered.end() ? std::optional(names) : std::nullopt;
}

std::optional<nt::Sid> ParseServerSid(std::string_view text, std::string_view name) {
    std::string_view line = TakeLine(text);
    if (!text.empty()) return std::nullopt;
    if (line == kNobody) return nt::Sid();
    if (!TakePrefix(name, line) || !TakePrefix(" ", line)) return std::nullopt;
    const std::string_view sidText = TakeUntil(' ', line);
    if (sidText == "S-0-0") return nt::Sid();
    return line.starts_with('(') && line.ends_with(')') ? nt::Sid::FromText(sidText) : std::nullopt;
}

std::optional<std::uint32_t> ParsePrimaryGroup(std::string_view text) {
    std::optional<std::uint32_t> group;
    // The texts that people give stand before it, so the last one is it.
    while (!text.empty())
        if (std::string_view line = TakeLine(text); TakePrefix("\tgroup_rid:\t0x", line))
            group = NumberOf<16>(line);
    return group;
}

std::optional<std::vector<std::uint32_t>> ParseGroupIds(std::string_view text) {
    std::vector<std::uint32_t> ids;
    while (!text.empty()) {
        std::string_view line = TakeLine(text);
        if (!TakePrefix("\tgroup rid:[0x", line)) return std::nullopt;
        const std::optional<std::uint32_t> id = NumberOf<16>(TakeUntil(']', line));
        if (!id || (!line.empty() && !line.starts_with(" attr:["))) return std::nullopt;
        ids.push_back(*id);
    }
    return ids;
}

bool CanBeAskedFor(std::string_view name) {
    constexpr std::string_view kForbidden = "\"/\\[]:;|=,+*?<>'";
    return IsPlainAccountName(name) && name.find_first_of(kForbidden) == name.npos;
}

}  // namespace permora::host
