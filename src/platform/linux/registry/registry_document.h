// A registry file as keys and values that can be changed without touching anything else in it.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/registry/registry_value.h"

namespace permora::host {

// The file's text, which is searched as it stands: thousands of values cost no more memory than their lines.
// What a change does not concern stays as it is: comments, lines that this program does not understand,
// damaged values. New lines end as the first one does.
//
// Paths are whole ("HKEY_CURRENT_USER\Software\x"). A key exists when the file has it or one below it.
class RegistryDocument {
  public:
    // With nothing in it but the heading.
    RegistryDocument();
    // Nothing when the text is no registry file of version 5 in UTF-8. Empty text is a file without keys.
    static std::optional<RegistryDocument> Parse(std::string text);
    const std::string& Text() const { return text; }
    // Whether the text has become another since it was parsed.
    bool IsChanged() const { return isChanged; }

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
    // A key's heading and what follows up to the next heading: places in the text.
    struct Section {
        std::size_t begin = 0;
        std::size_t body = 0;
        std::size_t end = 0;
        std::string_view path;  // empty before the first heading, and below one of another kind
    };
    // A value's lines, or any other single line of a section.
    struct Entry {
        std::size_t begin = 0;
        std::size_t end = 0;              // of the last line, before its line end
        std::size_t next = 0;             // behind it
        std::optional<std::string> name;  // nothing for what is no value
    };

    // The first section, or entry of a section, that begins at `place` or behind it.
    std::optional<Section> SectionFrom(std::size_t place) const;
    std::optional<Entry> EntryFrom(std::size_t place, const Section& section) const;
    // The line that begins at `place`, without its end, and where the next one begins.
    std::string_view LineAt(std::size_t place, std::size_t& next) const;

    // Of several the last. Found places hold until the text changes.
    std::optional<Section> FindSection(std::string_view path) const;
    std::optional<Entry> FindEntry(std::string_view path, std::string_view name) const;
    // Of each name, in small letters, the entry that counts.
    std::map<std::string, Entry> LastEntriesOf(std::string_view path) const;
    bool ReadEntry(const Entry& entry, RegistryValue& value) const;

    void Replace(std::size_t begin, std::size_t end, std::string_view replacement);

    std::string text;  // its last line has an end too
    std::string lineEnd = "\n";
    bool isChanged = false;
};

}  // namespace permora::host
