#include "policy/path_pattern.h"

#include <algorithm>
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

bool MayMatchBelow(std::string_view pattern, std::string_view folder) {
    const std::vector<std::string_view> wanted = NamesOf(pattern, '/');
    // Which names of the pattern may come next.
    std::vector<bool> next(wanted.size() + 1);
    next[0] = true;
    const auto skipStars = [&] {
        for (std::size_t i = 0; i < wanted.size(); ++i)
            if (next[i] && wanted[i] == "**") next[i + 1] = true;
    };
    skipStars();
    const std::vector<std::string_view> names =
        folder.empty() ? std::vector<std::string_view>() : NamesOf(folder, '\\');
    for (const std::string_view name : names) {
        for (std::size_t i = wanted.size(); i > 0; --i) {
            const bool isStay = i < wanted.size() && wanted[i] == "**" && next[i];
            next[i] = isStay || (next[i - 1] && wanted[i - 1] != "**" && MatchesName(wanted[i - 1], name));
        }
        next[0] = next[0] && wanted[0] == "**";
        skipStars();
    }
    next.pop_back();
    return std::ranges::find(next, true) != next.end();
}

std::string PatternProblem(std::string_view pattern) {
    for (const std::string_view name : NamesOf(pattern, '/')) {
        if (name.empty()) return "a name is empty";
        if (name == "." || name == "..") return "it has \"" + std::string(name) + "\" as a name";
        const bool hasOther = std::ranges::any_of(name, [](char letter) {
            return static_cast<unsigned char>(letter) < ' ' ||
                   std::string_view("\\:\"<>|").find(letter) != std::string_view::npos;
        });
        if (hasOther || name.ends_with('.') || name.ends_with(' '))
            return "no name has one of \\ : \" < > | or a control character, nor a dot or blank at its end, "
                   "as this program shows it; for such a character of the host, write ?";
    }
    return {};
}

}  // namespace permora
