// The desktop's types of files: their names, texts and icons.
//
// Format: "Shared MIME-info Database" of freedesktop.org, the files that update-mime-database makes. File
// contents are not looked at: what lies in a folder that others can write is not read for its icon.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace permora::host {

class MimeDatabase {
  public:
    // Reads the "mime" folders below `dataFolders`; the first has precedence.
    explicit MimeDatabase(std::vector<std::string> dataFolders);

    // That of this user, read once.
    static const MimeDatabase& Shared();

    // The type that a file's name says it has; empty when it says nothing.
    std::string TypeOfName(std::string_view hostName) const;
    // What the type is called in the first of `languages` ("de_AT", "de") that has a text, else in English;
    // empty when nothing is known about it.
    std::string CommentOf(const std::string& type, const std::vector<std::string>& languages) const;
    // Names of icons for the type, the best one first.
    std::vector<std::string> IconsOf(const std::string& type) const;

  private:
    struct Rule {
        std::string type;
        int weight = 0;
        std::size_t length = 0;  // of the pattern
    };
    struct Glob {
        std::string pattern;
        std::string plainPart;  // what every name that matches has in it
        Rule rule;
    };
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };
    using Rules = std::unordered_map<std::string, Rule, TextHash, std::equal_to<>>;
    // The rules for names as they are, or for names in lower case.
    struct Patterns {
        Rules endings;  // what follows "*"
        std::size_t longestEnding = 0;
        std::vector<Glob> others;
    };

    void ReadGlobs(const std::string& folder);
    void AddGlob(const std::string& pattern, bool isCaseSensitive, const Rule& rule);
    const Rule* FindLiteral(const std::string& name) const;
    static const Rule* FindPattern(const Patterns& patterns, const std::string& name);

    std::vector<std::string> folders;
    Rules literals;  // whole names, in lower case
    Patterns patterns;
    Patterns caseSensitivePatterns;
    std::map<std::string, std::string> icons;
    std::map<std::string, std::string> genericIcons;
};

// The languages that texts are wanted in, by the environment; none for English as it is built in.
std::vector<std::string> WantedLanguages();

// The text of the <comment> of a type's XML file in the first of `languages` that has one.
std::string CommentInXml(std::string_view xml, const std::vector<std::string>& languages);

}  // namespace permora::host
