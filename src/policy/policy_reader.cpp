#include "policy/policy_reader.h"

#include <algorithm>
#include <array>
#include <map>
#include <span>
#include <tuple>
#include <utility>

// Only this source sees the library: it is large, and its version is not ours to hand on.
#define TOML_EXCEPTIONS 0
#define TOML_HEADER_ONLY 1
#define TOML_MAX_NESTED_VALUES 16
#include <toml++/toml.h>

#include "platform/nt/ace_bits.h"
#include "security/access_rights.h"

namespace permora {
namespace {

constexpr std::size_t kMostRules = 1000;
constexpr std::size_t kMostEntries = 1000;
constexpr std::size_t kMostPattern = 4096;
constexpr std::int64_t kPolicyVersion = 1;

PolicyPlace PlaceOf(const toml::source_region& region) {
    return {region.begin.line, region.begin.column};
}

// An absolute path, as this machine writes it or with a drive letter.
bool IsAbsolute(std::string_view path) {
    const bool hasDrive = path.size() >= 3 && path[1] == ':' && path[2] == '\\' &&
                          ((path[0] >= 'A' && path[0] <= 'Z') || (path[0] >= 'a' && path[0] <= 'z'));
    return path.starts_with('/') || hasDrive;
}

class PolicyParsing {
  public:
    PolicyParsing(PolicyWords& vocabulary, PolicyFault& where) : words(vocabulary), fault(where) {}

    bool TakeRoot(const toml::table& root, Policy& policy);

  private:
    bool Fail(const toml::node& node, std::string text) {
        return FailAt(PlaceOf(node.source()), std::move(text));
    }
    bool FailAt(PolicyPlace place, std::string text) {
        fault = {place, std::move(text)};
        return false;
    }
    bool HasOnly(const toml::table& table, std::span<const char* const> known);
    bool TakeText(const toml::table& table, const char* key, std::optional<std::string>& text);
    bool TakeFlag(const toml::table& table, const char* key, std::optional<bool>& flag);

    bool TakeRule(const toml::table& table, PolicyRule& rule);
    bool TakeObjects(const toml::table& table, PolicyRule& rule);
    bool TakeWanted(const toml::table& table, PolicyRule& rule);
    bool TakeEntries(const toml::node& node, PolicyRule& rule);
    bool TakeEntry(const toml::table& table, nt::Ace& entry);

    PolicyWords& words;
    PolicyFault& fault;
};

bool PolicyParsing::HasOnly(const toml::table& table, std::span<const char* const> known) {
    for (auto&& [key, value] : table) {
        const std::string_view name = key.str();
        if (std::ranges::find(known, name) == known.end())
            return FailAt(PlaceOf(key.source()), "\"" + std::string(name) + "\" is not known here");
    }
    return true;
}

// True without the key.
bool PolicyParsing::TakeText(const toml::table& table, const char* key, std::optional<std::string>& text) {
    const toml::node* const node = table.get(key);
    if (node == nullptr) return true;
    const auto* const value = node->as_string();
    if (value == nullptr) return Fail(*node, "\"" + std::string(key) + "\" is no text");
    if (value->get().empty()) return Fail(*node, "\"" + std::string(key) + "\" is empty");
    if (value->get().find('\0') != std::string::npos)
        return Fail(*node, "\"" + std::string(key) + "\" has a NUL character");
    text = value->get();
    return true;
}

bool PolicyParsing::TakeFlag(const toml::table& table, const char* key, std::optional<bool>& flag) {
    const toml::node* const node = table.get(key);
    if (node == nullptr) return true;
    const auto* const value = node->as_boolean();
    if (value == nullptr) return Fail(*node, "\"" + std::string(key) + "\" is neither true nor false");
    flag = value->get();
    return true;
}

bool PolicyParsing::TakeRoot(const toml::table& root, Policy& policy) {
    if (!HasOnly(root, std::array{"version", "rule"})) return false;
    const toml::node* const version = root.get("version");
    if (version == nullptr) return FailAt({}, "\"version = 1\" is missing");
    if (!version->is_integer() || version->as_integer()->get() != kPolicyVersion)
        return Fail(*version, "this program knows version 1 alone");
    const toml::node* const rules = root.get("rule");
    if (rules == nullptr) return FailAt({}, "there is no rule: [[rule]] begins one");
    if (!rules->is_array_of_tables())
        return Fail(*rules, "\"rule\" is no list of rules: [[rule]] begins one");
    const toml::array& list = *rules->as_array();
    if (list.size() > kMostRules) return Fail(list, "there are more than 1000 rules");
    // Where rules are that are about the same objects.
    std::map<std::tuple<std::string, std::string, PolicyKinds>, std::size_t> known;
    for (const toml::node& node : list) {
        PolicyRule rule;
        if (!TakeRule(*node.as_table(), rule)) return false;
        const auto [earlier, isNew] = known.try_emplace({rule.path, rule.below, rule.kinds}, rule.place.line);
        if (!isNew)
            return Fail(node,
                        "the rule in line " + std::to_string(earlier->second) + " is about the same objects");
        policy.rules.push_back(std::move(rule));
    }
    return true;
}

bool PolicyParsing::TakeRule(const toml::table& table, PolicyRule& rule) {
    constexpr std::array kKeys = {"path",  "below",     "only",    "optional",
                                  "owner", "protected", "entries", "includes"};
    rule.place = PlaceOf(table.source());
    if (!HasOnly(table, kKeys) || !TakeObjects(table, rule) || !TakeWanted(table, rule)) return false;
    if (rule.owner || rule.isProtected || rule.extent) return true;
    return Fail(table, "the rule says nothing: owner, protected, entries or includes is missing");
}

bool PolicyParsing::TakeObjects(const toml::table& table, PolicyRule& rule) {
    std::optional<std::string> path;
    std::optional<std::string> below;
    std::optional<std::string> only;
    std::optional<bool> isOptional;
    if (!TakeText(table, "path", path) || !TakeText(table, "below", below) ||
        !TakeText(table, "only", only) || !TakeFlag(table, "optional", isOptional))
        return false;
    if (!path) return Fail(table, "\"path\" is missing");
    if (!IsAbsolute(*path)) return Fail(*table.get("path"), "the path is not absolute: " + *path);
    if (below && (below->size() > kMostPattern || below->front() == '/' || below->back() == '/'))
        return Fail(*table.get("below"), "no pattern for names below the path: " + *below);
    if (only && *only != "files" && *only != "folders")
        return Fail(*table.get("only"), "\"only\" is neither \"files\" nor \"folders\"");
    rule.path = *path;
    rule.below = below.value_or("");
    if (only) rule.kinds = *only == "files" ? PolicyKinds::kFiles : PolicyKinds::kFolders;
    rule.isOptional = isOptional.value_or(false);
    return true;
}

bool PolicyParsing::TakeWanted(const toml::table& table, PolicyRule& rule) {
    std::optional<std::string> owner;
    if (!TakeText(table, "owner", owner) || !TakeFlag(table, "protected", rule.isProtected)) return false;
    if (owner) {
        nt::Sid sid;
        if (std::string problem = words.FindAccount(*owner, sid); !problem.empty())
            return Fail(*table.get("owner"), std::move(problem));
        rule.owner = sid;
    }
    const toml::node* const exact = table.get("entries");
    const toml::node* const least = table.get("includes");
    if (exact != nullptr && least != nullptr) return Fail(*least, "a rule has either entries or includes");
    if (exact == nullptr && least == nullptr) return true;
    rule.extent = exact != nullptr ? PolicyExtent::kExactly : PolicyExtent::kAtLeast;
    return TakeEntries(exact != nullptr ? *exact : *least, rule);
}

bool PolicyParsing::TakeEntries(const toml::node& node, PolicyRule& rule) {
    const toml::array* const list = node.as_array();
    if (list == nullptr) return Fail(node, "entries are a list: [ {allow = ..., rights = ...}, ... ]");
    if (list->size() > kMostEntries) return Fail(node, "there are more than 1000 entries");
    for (const toml::node& each : *list) {
        const toml::table* const table = each.as_table();
        if (table == nullptr) return Fail(each, "an entry is a table: {allow = ..., rights = ...}");
        nt::Ace entry;
        if (!TakeEntry(*table, entry)) return false;
        const auto isAlike = [&](const nt::Ace& other) {
            return other.type == entry.type && other.flags == entry.flags && other.sid == entry.sid;
        };
        if (std::ranges::any_of(rule.entries, isAlike))
            return Fail(each, "an entry before it has the same account and the same scope");
        rule.entries.push_back(std::move(entry));
    }
    std::stable_partition(rule.entries.begin(), rule.entries.end(),
                          [](const nt::Ace& entry) { return entry.type == nt::kAccessDeniedType; });
    return true;
}

bool PolicyParsing::TakeEntry(const toml::table& table, nt::Ace& entry) {
    std::optional<std::string> allow;
    std::optional<std::string> deny;
    std::optional<std::string> rights;
    std::optional<std::string> scope;
    std::optional<bool> childrenOnly;
    if (!HasOnly(table, std::array{"allow", "deny", "rights", "scope", "children_only"}) ||
        !TakeText(table, "allow", allow) || !TakeText(table, "deny", deny) ||
        !TakeText(table, "rights", rights) || !TakeText(table, "scope", scope) ||
        !TakeFlag(table, "children_only", childrenOnly))
        return false;
    if (allow.has_value() == deny.has_value()) return Fail(table, "an entry has either allow or deny");
    if (!rights) return Fail(table, "\"rights\" is missing");
    nt::Sid sid;
    if (std::string problem = words.FindAccount(allow ? *allow : *deny, sid); !problem.empty())
        return Fail(*table.get(allow ? "allow" : "deny"), std::move(problem));
    DWORD mask = 0;
    if (std::string problem = words.FindRights(*rights, mask); !problem.empty())
        return Fail(*table.get("rights"), std::move(problem));
    BYTE flags = nt::kObjectInherit | nt::kContainerInherit;
    if (scope)
        if (std::string problem = words.FindScope(*scope, flags); !problem.empty())
            return Fail(*table.get("scope"), std::move(problem));
    if (childrenOnly.value_or(false)) flags |= nt::kNoPropagateInherit;
    entry.type = allow ? nt::kAccessAllowedType : nt::kAccessDeniedType;
    entry.flags = flags;
    entry.mask = MaskOfChangedEntry(entry.type, mask);
    entry.sid = sid;
    return true;
}

}  // namespace

std::optional<Policy> ReadPolicy(std::string_view text, PolicyWords& words, PolicyFault& fault) {
    if (text.size() > kMostPolicyBytes) {
        fault = {{}, "it is larger than 1 MiB"};
        return std::nullopt;
    }
    const toml::parse_result parsed = toml::parse(text);
    if (!parsed) {
        fault = {PlaceOf(parsed.error().source()), std::string(parsed.error().description())};
        return std::nullopt;
    }
    Policy policy;
    if (!PolicyParsing(words, fault).TakeRoot(parsed.table(), policy)) return std::nullopt;
    return policy;
}

}  // namespace permora
