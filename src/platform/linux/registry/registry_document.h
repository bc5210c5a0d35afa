// A registry file as keys and values that can be changed without touching anything else in it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/registry/registry_value.h"

namespace permora::host {

// Every line that a change does not concern stays as it is: comments, lines that this program does not
// understand, damaged values. (A file with both kinds of line ends gets those of its first line.)
//
// Paths are whole ("HKEY_CURRENT_USER\Software\x"). A key exists when the file has it or one below it.
class RegistryDocument {
  public:
    // With nothing in it but the heading.
    RegistryDocument();
    // Nothing when the text is no registry file of version 5 in UTF-8. Empty text is a file without keys.
    static std::optional<RegistryDocument> Parse(std::string_view text);
    std::string ToText() const;

    bool HasKey(std::string_view path) const;
    // The names right below a key, each once, in the order of the file.
    std::vector<std::string> SubkeysOf(std::string_view path) const;
    // The names of a key's values, each once.
    std::vector<std::string> ValueNamesOf(std::string_view path) const;
    // A key's values that are whole, each name once.
    std::vector<RegistryValue> ValuesOf(std::string_view path) const;

    enum class Lookup { kFound, kMissing, kDamaged };
    // Of several lines for one value the last counts. `value` is changed only when it was found.
    Lookup FindValue(std::string_view path, std::string_view name, RegistryValue& value) const;

    // Adds the key, and those above it that have no lines of their own.
    void AddKey(std::string_view path);
    // Adds or replaces; the key is added when it is missing.
    void SetValue(std::string_view path, const RegistryValue& value);
    void RemoveValue(std::string_view path, std::string_view name);
    // Removes the key's own lines. The key above it stays.
    void RemoveKey(std::string_view path);

  private:
    struct Entry {
        std::string text;                 // its lines, without the last line's end
        std::optional<std::string> name;  // of a value; nothing for every other line
    };
    struct Section {
        std::string path;  // empty for what stands before the first key, or below a heading of another kind
        std::string heading;
        std::vector<Entry> entries;
    };

    static bool ReadEntry(const Entry& entry, RegistryValue& value);
    // Of each name, in small letters, the line that counts.
    std::map<std::string, const Entry*> LastEntriesOf(std::string_view path) const;
    Section* FindSection(std::string_view path);
    Entry* FindEntry(std::string_view path, std::string_view name);
    const Entry* FindEntry(std::string_view path, std::string_view name) const;
    void ParseLines(const std::vector<std::string_view>& lines);

    std::string lineEnd = "\n";
    bool hasByteOrderMark = false;
    std::vector<Section> sections;  // at least one: the first has the file's heading
};

}  // namespace permora::host
