#include "platform/linux/accounts/samba_output.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <map>

#include "platform/ascii.h"
#include "platform/linux/accounts/account_names.h"

namespace permora::host {

namespace {

std::vector<std::string_view> SplitLines(std::string_view text) {
    std::vector<std::string_view> lines;
    while (!text.empty())
        lines.push_back(TakeLine(text));
    return lines;
}

std::string_view TrimBlanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

// What follows `label` on the line; nothing when the line starts otherwise.
std::optional<std::string_view> ValueAfter(std::string_view line, std::string_view label) {
    if (!line.starts_with(label)) return std::nullopt;
    return TrimBlanks(line.substr(label.size()));
}

std::optional<id_t> ParseId(std::string_view text) {
    id_t id = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    // The highest number means "nobody" in every call that takes an id.
    if (id == std::numeric_limits<id_t>::max()) return std::nullopt;
    return id;
}

std::string SidKey(const SambaAccount& account) {
    return account.sid.ToText();
}

std::string NameKey(const SambaAccount& account) {
    return account.name;
}

std::map<std::string, int> CountKeys(const std::vector<SambaAccount>& accounts,
                                     std::string (*key)(const SambaAccount&)) {
    std::map<std::string, int> counts;
    for (const SambaAccount& account : accounts)
        ++counts[key(account)];
    return counts;
}

}  // namespace

std::string ParseGlobalParameter(std::string_view text, std::string_view parameter) {
    const std::string label = "\t" + std::string(parameter) + " =";
    bool isGlobal = false;
    for (const std::string_view line : SplitLines(text)) {
        if (line.starts_with('[')) isGlobal = line == "[global]";
        const std::optional<std::string_view> value = ValueAfter(line, label);
        if (isGlobal && value) return std::string(*value);
    }
    return {};
}

std::optional<SambaAccount> ParseLocalSid(std::string_view text) {
    const std::vector<std::string_view> lines = SplitLines(text);
    if (lines.size() != 1) return std::nullopt;
    constexpr std::string_view kBetween = " is: ";
    const std::string_view answer = ValueAfter(lines[0], "SID for domain ").value_or("");
    const std::size_t between = answer.find(kBetween);
    if (between == std::string_view::npos) return std::nullopt;

    const std::string_view name = answer.substr(0, between);
    const std::optional<nt::Sid> sid = nt::Sid::FromText(answer.substr(between + kBetween.size()));
    // S-1-5-21-a-b-c, the form of every machine's and every domain's SID.
    const bool isMachine =
        sid && sid->Authority() == 5 && sid->SubAuthorityCount() == 4 && sid->SubAuthority(0) == 21;
    if (!isMachine || !IsPlainAccountName(name)) return std::nullopt;
    return SambaAccount{std::string(name), *sid, nt::SidUse::kDomain, std::nullopt};
}

std::vector<SambaAccount> ParseUserList(std::string_view text, const nt::Sid& machine) {
    // A record is a line of dashes, then one field on each line. Only the first four are looked at: later
    // ones hold free text.
    const std::vector<std::string_view> lines = SplitLines(text);
    std::vector<SambaAccount> users;
    for (std::size_t i = 0; i + 4 < lines.size(); ++i) {
        if (lines[i] != "---------------") continue;
        const auto name = ValueAfter(lines[i + 1], "Unix username:");
        const auto otherName = ValueAfter(lines[i + 2], "NT username:");
        const auto flags = ValueAfter(lines[i + 3], "Account Flags:");
        const auto sidText = ValueAfter(lines[i + 4], "User SID:");
        if (!name || !otherName || !flags || !sidText || !IsPlainAccountName(*name)) continue;
        const std::optional<nt::Sid> sid = nt::Sid::FromText(*sidText);
        if (!sid || !sid->IsDirectlyBelow(machine)) continue;
        users.push_back({std::string(*name), *sid, nt::SidUse::kUser, std::nullopt});
    }
    const std::map<std::string, int> names = CountKeys(users, NameKey);
    const std::map<std::string, int> sids = CountKeys(users, SidKey);
    std::erase_if(users, [&](const SambaAccount& user) {
        return names.at(NameKey(user)) > 1 || sids.at(SidKey(user)) > 1;
    });
    return users;
}

std::vector<SambaAccount> ParseGroupMap(std::string_view text) {
    // A record is the group's name, then its fields, each on a line that starts with a tab.
    const std::vector<std::string_view> lines = SplitLines(text);
    std::vector<SambaAccount> groups;
    for (std::size_t i = 0; i + 4 < lines.size(); ++i) {
        const auto sidText = ValueAfter(lines[i + 1], "\tSID       :");
        const auto idText = ValueAfter(lines[i + 2], "\tUnix gid  :");
        const auto hostName = ValueAfter(lines[i + 3], "\tUnix group:");
        const auto type = ValueAfter(lines[i + 4], "\tGroup type:");
        if (!sidText || !idText || !hostName || !type || !IsPlainAccountName(lines[i])) continue;
        const std::optional<nt::Sid> sid = nt::Sid::FromText(*sidText);
        const std::optional<id_t> id = ParseId(*idText);
        if (!sid || !id) continue;
        const nt::SidUse use = *type == "Domain Group" ? nt::SidUse::kGroup : nt::SidUse::kAlias;
        groups.push_back({std::string(lines[i]), *sid, use, id});
    }
    const std::map<std::string, int> sids = CountKeys(groups, SidKey);
    std::erase_if(groups, [&](const SambaAccount& group) { return sids.at(SidKey(group)) > 1; });
    return groups;
}

std::vector<nt::Sid> ParseMembers(std::string_view text) {
    std::vector<nt::Sid> members;
    for (const std::string_view line : SplitLines(text))
        if (const std::optional<nt::Sid> sid = nt::Sid::FromText(line)) members.push_back(*sid);
    return members;
}

}  // namespace permora::host
