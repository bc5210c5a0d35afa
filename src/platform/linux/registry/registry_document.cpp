#include "platform/linux/registry/registry_document.h"

#include <algorithm>
#include <utility>

#include "platform/ascii.h"

namespace permora::host {
namespace {

constexpr std::string_view kHeading = "Windows Registry Editor Version 5.00";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view WithoutBlanksBehind(std::string_view text) {
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

std::vector<std::string_view> LinesOf(std::string_view text) {
    std::vector<std::string_view> lines;
    lines.reserve(static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1);
    while (!text.empty()) {
        std::string_view line = TakeLine(text);
        while (line.ends_with('\r'))
            line.remove_suffix(1);
        lines.push_back(line);
    }
    return lines;
}

bool IsHeadingOfSection(std::string_view line) {
    return line.starts_with('[');
}

// The path in "[HKEY_...]"; empty for headings of another kind, such as one that says to delete a key.
std::string_view PathInHeading(std::string_view line) {
    line = WithoutBlanksBehind(line);
    if (!line.starts_with("[HKEY_") || !line.ends_with(']')) return {};
    return line.substr(1, line.size() - 2);
}

bool IsBelow(std::string_view path, std::string_view above) {
    return path.size() > above.size() + 1 && path[above.size()] == '\\' &&
           EqualsIgnoringCase(path.substr(0, above.size()), above);
}

std::string_view ParentOf(std::string_view path) {
    const std::size_t end = path.rfind('\\');
    return end == path.npos ? std::string_view() : path.substr(0, end);
}

}  // namespace

RegistryDocument::RegistryDocument() {
    sections.push_back({"", std::string(kHeading), {}});
}

std::optional<RegistryDocument> RegistryDocument::Parse(std::string_view text) {
    RegistryDocument document;
    document.hasByteOrderMark = text.starts_with(kByteOrderMark);
    if (document.hasByteOrderMark) text.remove_prefix(kByteOrderMark.size());
    if (text.empty()) return document;
    const std::vector<std::string_view> lines = LinesOf(text);
    if (WithoutBlanksBehind(lines.front()) != kHeading) return std::nullopt;
    if (text.substr(lines.front().size()).starts_with('\r')) document.lineEnd = "\r\n";
    document.ParseLines(lines);
    return document;
}

void RegistryDocument::ParseLines(const std::vector<std::string_view>& lines) {
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const std::string_view line = lines[i];
        if (IsHeadingOfSection(line)) {
            sections.push_back({std::string(PathInHeading(line)), std::string(line), {}});
            continue;
        }
        Entry entry{std::string(line), {}};
        if (const std::optional<ValueLine> value = SplitValueLine(line); value && value->content != "-") {
            entry.name = value->name;
            // What looks like a line of its own is one, so that a damaged value takes no other with it.
            std::string_view last = value->content;
            bool goesOn = IsContinued(last);
            while (goesOn && i + 1 < lines.size() && !IsHeadingOfSection(lines[i + 1]) &&
                   !SplitValueLine(lines[i + 1])) {
                last = lines[++i];
                entry.text.append(lineEnd).append(last);
                goesOn = WithoutBlanksBehind(last).ends_with('\\');
            }
        }
        sections.back().entries.push_back(std::move(entry));
    }
}

std::string RegistryDocument::ToText() const {
    std::size_t size = kByteOrderMark.size();
    for (const Section& section : sections) {
        size += section.heading.size() + lineEnd.size();
        for (const Entry& entry : section.entries)
            size += entry.text.size() + lineEnd.size();
    }
    std::string text;
    text.reserve(size);
    if (hasByteOrderMark) text = kByteOrderMark;
    for (const Section& section : sections) {
        text.append(section.heading).append(lineEnd);
        for (const Entry& entry : section.entries)
            text.append(entry.text).append(lineEnd);
    }
    return text;
}

bool RegistryDocument::HasKey(std::string_view path) const {
    return std::any_of(sections.begin(), sections.end(), [path](const Section& section) {
        return EqualsIgnoringCase(section.path, path) || IsBelow(section.path, path);
    });
}

std::vector<std::string> RegistryDocument::SubkeysOf(std::string_view path) const {
    std::vector<std::string> names;
    for (const Section& section : sections) {
        if (!IsBelow(section.path, path)) continue;
        const std::string rest = section.path.substr(path.size() + 1);
        const std::string name = rest.substr(0, rest.find('\\'));
        const bool isKnown = std::any_of(names.begin(), names.end(), [&name](const std::string& known) {
            return EqualsIgnoringCase(known, name);
        });
        if (!isKnown) names.push_back(name);
    }
    return names;
}

std::vector<std::string> RegistryDocument::ValueNamesOf(std::string_view path) const {
    std::vector<std::string> names;
    for (const auto& [key, entry] : LastEntriesOf(path))
        names.push_back(*entry->name);
    return names;
}

std::vector<RegistryValue> RegistryDocument::ValuesOf(std::string_view path) const {
    std::vector<RegistryValue> values;
    for (const auto& [key, entry] : LastEntriesOf(path)) {
        RegistryValue value;
        if (ReadEntry(*entry, value)) values.push_back(std::move(value));
    }
    return values;
}

std::map<std::string, const RegistryDocument::Entry*> RegistryDocument::LastEntriesOf(
    std::string_view path) const {
    std::map<std::string, const Entry*> entries;
    for (const Section& section : sections) {
        if (!EqualsIgnoringCase(section.path, path)) continue;
        for (const Entry& entry : section.entries) {
            if (entry.name) entries[InLowerCase(*entry.name)] = &entry;
        }
    }
    return entries;
}

RegistryDocument::Section* RegistryDocument::FindSection(std::string_view path) {
    const auto found = std::find_if(sections.rbegin(), sections.rend(), [path](const Section& section) {
        return EqualsIgnoringCase(section.path, path);
    });
    return found == sections.rend() ? nullptr : &*found;
}

const RegistryDocument::Entry* RegistryDocument::FindEntry(std::string_view path,
                                                           std::string_view name) const {
    const Entry* found = nullptr;
    for (const Section& section : sections) {
        if (!EqualsIgnoringCase(section.path, path)) continue;
        for (const Entry& entry : section.entries) {
            if (entry.name && EqualsIgnoringCase(*entry.name, name)) found = &entry;
        }
    }
    return found;
}

RegistryDocument::Entry* RegistryDocument::FindEntry(std::string_view path, std::string_view name) {
    return const_cast<Entry*>(std::as_const(*this).FindEntry(path, name));
}

RegistryDocument::Lookup RegistryDocument::FindValue(std::string_view path, std::string_view name,
                                                     RegistryValue& value) const {
    const Entry* entry = FindEntry(path, name);
    if (entry == nullptr) return Lookup::kMissing;
    return ReadEntry(*entry, value) ? Lookup::kFound : Lookup::kDamaged;
}

bool RegistryDocument::ReadEntry(const Entry& entry, RegistryValue& value) {
    std::string joined;
    for (const std::string_view line : LinesOf(entry.text))
        joined += line;
    const std::optional<ValueLine> split = SplitValueLine(joined);
    RegistryValue found;
    if (!split || !ParseValueContent(split->content, found)) return false;
    found.name = split->name;
    value = std::move(found);
    return true;
}

void RegistryDocument::AddKey(std::string_view path) {
    // From the root down; the root itself needs no lines.
    for (std::size_t end = path.find('\\'); end != path.npos;) {
        end = path.find('\\', end + 1);
        const std::string_view key = path.substr(0, end);
        if (FindSection(key) != nullptr) continue;
        std::vector<Entry>& above = sections.back().entries;
        const bool isSeparated = !above.empty() && above.back().text.empty();
        if (!isSeparated) above.push_back({});
        sections.push_back({std::string(key), "[" + std::string(key) + "]", {}});
    }
}

void RegistryDocument::SetValue(std::string_view path, const RegistryValue& value) {
    Entry replacement{FormatValue(value, lineEnd), value.name};
    if (Entry* entry = FindEntry(path, value.name); entry != nullptr) {
        *entry = std::move(replacement);
        return;
    }
    if (FindSection(path) == nullptr) AddKey(path);
    std::vector<Entry>& entries = FindSection(path)->entries;
    // Before the blank lines that set the next key off.
    const auto last = std::find_if(entries.rbegin(), entries.rend(),
                                   [](const Entry& entry) { return !entry.text.empty(); });
    entries.insert(last.base(), std::move(replacement));
}

void RegistryDocument::RemoveValue(std::string_view path, std::string_view name) {
    for (Section& section : sections) {
        if (!EqualsIgnoringCase(section.path, path)) continue;
        std::erase_if(section.entries, [name](const Entry& entry) {
            return entry.name && EqualsIgnoringCase(*entry.name, name);
        });
    }
}

void RegistryDocument::RemoveKey(std::string_view path) {
    AddKey(ParentOf(path));
    std::erase_if(sections,
                  [path](const Section& section) { return EqualsIgnoringCase(section.path, path); });
}

}  // namespace permora::host
