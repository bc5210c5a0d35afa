#include "policy/path_pattern.h"

#include <cstddef>
#include <vector>

#include "platform/utf8.h"

namespace permora {
namespace {

std::vector<std::string_view> NamesOf(std::string_view text, char separator) {
    std::vector<std::string_view> names;
    for (;;) {
        const std::size_t end = text.find(separator);
        names.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return names;
        text.remove_prefix(end + 1);
    }
}

std::size_t FirstCharacter(std::string_view text) {
    const Utf8Character first = FirstUtf8Character(text);
    return first.isWellFormed ? first.bytes : 1;
}

// The last star is tried again with one more character, which is enough.
bool MatchesName(std::string_view pattern, std::string_view name) {
    std::size_t at = 0;
    std::size_t seen = 0;
    std::size_t star = std::string_view::npos;
    std::size_t starSeen = 0;
    while (seen < name.size()) {
        if (at < pattern.size() && pattern[at] == '*') {
            star = at++;
            starSeen = seen;
        } else if (at < pattern.size() && pattern[at] == '?') {
            ++at;
            seen += FirstCharacter(name.substr(seen));
        } else if (at < pattern.size() && pattern[at] == name[seen]) {
            ++at;
            ++seen;
        } else if (star != std::string_view::npos) {
            at = star + 1;
            starSeen += FirstCharacter(name.substr(starSeen));
            seen = starSeen;
        } else {
            return false;
        }
    }
    while (at < pattern.size() && pattern[at] == '*')
        ++at;
    return at == pattern.size();
}

}  // namespace

// The same with names in the place of characters, and "**" in that of the star.
bool MatchesPattern(std::string_view pattern, std::string_view path) {
    const std::vector<std::string_view> wanted = NamesOf(pattern, '/');
    const std::vector<std::string_view> names = NamesOf(path, '\\');
    constexpr std::size_t kNone = ~std::size_t{0};
    std::size_t at = 0;
    std::size_t seen = 0;
    std::size_t star = kNone;
    std::size_t starSeen = 0;
    while (seen < names.size()) {
        if (at < wanted.size() && wanted[at] == "**") {
            star = at++;
            starSeen = seen;
        } else if (at < wanted.size() && MatchesName(wanted[at], names[seen])) {
            ++at;
            ++seen;
        } else if (star != kNone) {
            at = star + 1;
            seen = ++starSeen;
        } else {
            return false;
        }
    }
    while (at < wanted.size() && wanted[at] == "**")
        ++at;
    return at == wanted.size();
}

}  // namespace permora
