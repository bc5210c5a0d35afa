#include "platform/linux/shell/mime_database.h"

#include <fnmatch.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <utility>

#include "platform/ascii.h"
#include "platform/linux/base/user_folders.h"

namespace permora::host {
namespace {

bool IsLetterOrDigit(char character) {
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
           (character >= 'A' && character <= 'Z');
}

bool HasWildcard(std::string_view text) {
    return text.find_first_of("*?[") != text.npos;
}

// The longest run of characters in a pattern that stand for themselves.
std::string LongestPlainPart(std::string_view pattern) {
    std::string_view longest;
    while (!pattern.empty()) {
        const std::string_view run = pattern.substr(0, pattern.find_first_of("*?[\\"));
        if (run.size() > longest.size()) longest = run;
        pattern.remove_prefix(run.size());
        if (pattern.empty()) break;
        const std::size_t setEnd = pattern.front() == '[' ? pattern.find(']', 2) : 0;
        // Where it is not plain what stands for what, the rest is left to the matching.
        if (pattern.front() == '\\' || setEnd == pattern.npos) break;
        if (pattern.substr(1, setEnd).find_first_of("[\\!^") != pattern.npos) break;
        pattern.remove_prefix(setEnd + 1);
    }
    return std::string(longest);
}

// "type:icon" on each line. What an earlier folder said stays.
void ReadIcons(const std::string& path, std::map<std::string, std::string>& icons) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        std::string_view rest = line;
        const std::string_view type = TakeUntil(':', rest);
        if (!rest.empty()) icons.emplace(type, rest);
    }
}

std::string Unescaped(std::string_view text) {
    constexpr std::array<std::pair<std::string_view, char>, 5> kEntities{
        {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}}};
    std::string plain;
    while (!text.empty()) {
        const auto* entity = std::find_if(kEntities.begin(), kEntities.end(),
                                          [text](const auto& each) { return text.starts_with(each.first); });
        const bool isEntity = entity != kEntities.end();
        plain += isEntity ? entity->second : text.front();
        text.remove_prefix(isEntity ? entity->first.size() : 1);
    }
    return plain;
}

// The language that the attributes of a tag name; empty for none.
std::string_view LanguageIn(std::string_view attributes) {
    constexpr std::string_view kName = "xml:lang=";
    const std::size_t start = attributes.find(kName);
    if (start == attributes.npos) return {};
    attributes.remove_prefix(start + kName.size());
    if (attributes.empty()) return {};
    const char quote = attributes.front();
    attributes.remove_prefix(1);
    return attributes.substr(0, attributes.find(quote));
}

}  // namespace

MimeDatabase::MimeDatabase(std::vector<std::string> dataFolders) : folders(std::move(dataFolders)) {
    for (std::string& folder : folders)
        folder += "/mime";
    // The last comes first, so that the others can overrule it.
    std::for_each(folders.rbegin(), folders.rend(), [this](const std::string& folder) { ReadGlobs(folder); });
    for (const std::string& folder : folders) {
        ReadIcons(folder + "/icons", icons);
        ReadIcons(folder + "/generic-icons", genericIcons);
    }
}

const MimeDatabase& MimeDatabase::Shared() {
    static const MimeDatabase database(DataFolders());
    return database;
}

void MimeDatabase::ReadGlobs(const std::string& folder) {
    std::ifstream file(folder + "/globs2");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with('#')) continue;
        std::string_view rest = line;
        const std::string_view weight = TakeUntil(':', rest);
        Rule rule;
        rule.type = TakeUntil(':', rest);
        const std::string pattern(TakeUntil(':', rest));
        const bool isCaseSensitive = TakeUntil(':', rest).find("cs") != std::string_view::npos;
        const char* end = weight.data() + weight.size();
        if (std::from_chars(weight.data(), end, rule.weight).ptr != end || pattern.empty()) continue;
        rule.length = pattern.size();
        AddGlob(pattern, isCaseSensitive, rule);
    }
}

void MimeDatabase::AddGlob(const std::string& pattern, bool isCaseSensitive, const Rule& rule) {
    const std::string key = isCaseSensitive ? pattern : InLowerCase(pattern);
    Patterns& target = isCaseSensitive ? caseSensitivePatterns : patterns;
    const auto add = [&rule](Rules& rules, std::string text) {
        Rule& known = rules[std::move(text)];
        if (rule.weight >= known.weight) known = rule;
    };
    if (!HasWildcard(key)) {
        // The few that have a case ("core") are told from others by nothing else.
        if (!isCaseSensitive) add(literals, key);
    } else if (key.starts_with('*') && !HasWildcard(key.substr(1)) && key.size() > 1 &&
               !IsLetterOrDigit(key[1])) {
        add(target.endings, key.substr(1));
        target.longestEnding = std::max(target.longestEnding, key.size() - 1);
    } else {
        target.others.push_back({key, LongestPlainPart(key), rule});
    }
}

const MimeDatabase::Rule* MimeDatabase::FindLiteral(const std::string& name) const {
    const auto found = literals.find(name);
    return found == literals.end() ? nullptr : &found->second;
}

const MimeDatabase::Rule* MimeDatabase::FindPattern(const Patterns& patterns, const std::string& name) {
    const Rule* best = nullptr;
    const auto consider = [&best](const Rule& rule) {
        const bool isBetter = best == nullptr || rule.weight > best->weight ||
                              (rule.weight == best->weight && rule.length > best->length);
        if (isBetter) best = &rule;
    };
    const std::string_view text = name;
    for (std::size_t i = text.size() - std::min(text.size(), patterns.longestEnding); i < text.size(); ++i) {
        if (IsLetterOrDigit(text[i])) continue;
        const auto found = patterns.endings.find(text.substr(i));
        if (found != patterns.endings.end()) consider(found->second);
    }
    for (const Glob& glob : patterns.others) {
        // Most names are told apart by this alone, at a fraction of the cost.
        if (text.find(glob.plainPart) == text.npos) continue;
        if (fnmatch(glob.pattern.c_str(), name.c_str(), 0) == 0) consider(glob.rule);
    }
    return best;
}

std::string MimeDatabase::TypeOfName(std::string_view hostName) const {
    const std::string name(hostName);
    const std::string lower = InLowerCase(hostName);
    const Rule* rule = FindLiteral(lower);
    if (rule == nullptr) rule = FindPattern(caseSensitivePatterns, name);
    if (rule == nullptr) rule = FindPattern(patterns, lower);
    return rule == nullptr ? "" : rule->type;
}

std::string MimeDatabase::CommentOf(const std::string& type,
                                    const std::vector<std::string>& languages) const {
    const std::string below = '/' + type + ".xml";
    for (const std::string& folder : folders) {
        std::ifstream file(folder + below);
        if (!file) continue;
        const std::string xml{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        if (std::string comment = CommentInXml(xml, languages); !comment.empty()) return comment;
    }
    return {};
}

std::vector<std::string> MimeDatabase::IconsOf(const std::string& type) const {
    std::vector<std::string> names;
    if (const auto own = icons.find(type); own != icons.end()) names.push_back(own->second);
    std::string derived = type;
    std::replace(derived.begin(), derived.end(), '/', '-');
    names.push_back(derived);
    const auto generic = genericIcons.find(type);
    names.push_back(generic != genericIcons.end() ? generic->second
                                                  : type.substr(0, type.find('/')) + "-x-generic");
    return names;
}

std::vector<std::string> WantedLanguages() {
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value == nullptr || *value == '\0') continue;
        const std::string_view locale = value;
        const std::string language(locale.substr(0, locale.find_first_of(".@")));
        if (language == "C" || language == "POSIX") return {};
        return {language, language.substr(0, language.find('_'))};
    }
    return {};
}

std::string CommentInXml(std::string_view xml, const std::vector<std::string>& languages) {
    constexpr std::string_view kTag = "<comment";
    std::string best;
    std::size_t bestRank = languages.size() + 1;
    for (std::size_t start = xml.find(kTag); start != xml.npos; start = xml.find(kTag, start + 1)) {
        const std::string_view rest = xml.substr(start + kTag.size());
        const std::size_t tagEnd = rest.find('>');
        const std::size_t textEnd = rest.find('<');
        if (tagEnd >= textEnd || textEnd == rest.npos || textEnd == tagEnd + 1) continue;
        const std::string_view attributes = rest.substr(0, tagEnd);
        if (attributes.ends_with('/')) continue;
        const std::string_view language = LanguageIn(attributes);
        const auto wanted = std::find(languages.begin(), languages.end(), language);
        // The text without a language is the last choice.
        if (wanted == languages.end() && !language.empty()) continue;
        const auto rank = static_cast<std::size_t>(wanted - languages.begin());
        if (rank >= bestRank) continue;
        bestRank = rank;
        best = Unescaped(rest.substr(tagEnd + 1, textEnd - tagEnd - 1));
    }
    return best;
}

}  // namespace permora::host
