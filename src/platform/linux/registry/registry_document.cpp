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

std::string_view WithoutLineEnd(std::string_view line) {
    if (line.ends_with('\n')) line.remove_suffix(1);
    while (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

// The path in "[HKEY_...]"; empty for other headings, such as one that deletes a key.
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

RegistryDocument::RegistryDocument() : text(std::string(kHeading) + '\n') {}

std::optional<RegistryDocument> RegistryDocument::Parse(std::string text) {
    RegistryDocument document;
    const std::size_t start = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    if (text.size() == start) {
        document.text.insert(0, text);
        return document;
    }
    document.text = std::move(text);
    std::size_t next = 0;
    const std::string_view first = document.LineAt(start, next);
    if (WithoutBlanksBehind(first) != kHeading) return std::nullopt;
    if (document.text[start + first.size()] == '\r') document.lineEnd = "\r\n";
    if (!document.text.ends_with('\n')) document.text += document.lineEnd;
    return document;
}

std::string_view RegistryDocument::LineAt(std::size_t place, std::size_t& next) const {
    next = std::min(text.find('\n', place), text.size() - 1) + 1;
    return WithoutLineEnd(std::string_view(text).substr(place, next - place));
}

std::optional<RegistryDocument::Section> RegistryDocument::SectionFrom(std::size_t place) const {
    const auto findHeading = [this](std::size_t from) {
        std::size_t found = text.find('[', from);
        while (found != text.npos && (found == 0 || text[found - 1] != '\n'))
            found = text.find('[', found + 1);
        return std::min(found, text.size());
    };
    Section section;
    section.begin = findHeading(place);
    if (section.begin == text.size()) return std::nullopt;
    section.path = PathInHeading(LineAt(section.begin, section.body));
    section.end = findHeading(section.body);
    return section;
}

std::optional<RegistryDocument::Entry> RegistryDocument::EntryFrom(std::size_t place,
                                                                   const Section& section) const {
    if (place >= section.end) return std::nullopt;
    Entry entry;
    entry.begin = place;
    std::string_view last = LineAt(place, entry.next);
    entry.end = place + last.size();
    const std::optional<ValueLine> value = SplitValueLine(last);
    if (!value || value->content == "-") return entry;
    entry.name = value->name;
    // A line that looks like the start of a value is one, so that a damaged value does not swallow the next.
    for (bool goesOn = IsContinued(value->content); goesOn && entry.next < section.end;) {
        std::size_t next = 0;
        last = LineAt(entry.next, next);
        if (SplitValueLine(last)) break;
        entry.end = entry.next + last.size();
        entry.next = next;
        goesOn = WithoutBlanksBehind(last).ends_with('\\');
    }
    return entry;
}

bool RegistryDocument::HasKey(std::string_view path) const {
    for (auto section = SectionFrom(0); section; section = SectionFrom(section->end))
        if (EqualsIgnoringCase(section->path, path) || IsBelow(section->path, path)) return true;
    return false;
}

std::vector<std::string> RegistryDocument::SubkeysOf(std::string_view path) const {
    std::vector<std::string> names;
    for (auto section = SectionFrom(0); section; section = SectionFrom(section->end)) {
        if (!IsBelow(section->path, path)) continue;
        const std::string_view rest = section->path.substr(path.size() + 1);
        const std::string_view name = rest.substr(0, rest.find('\\'));
        const bool isKnown = std::any_of(names.begin(), names.end(), [name](const std::string& known) {
            return EqualsIgnoringCase(known, name);
        });
        if (!isKnown) names.emplace_back(name);
    }
    return names;
}

std::vector<std::string> RegistryDocument::ValueNamesOf(std::string_view path) const {
    std::vector<std::string> names;
    for (const auto& [key, entry] : LastEntriesOf(path))
        names.push_back(*entry.name);
    return names;
}

std::vector<RegistryValue> RegistryDocument::ValuesOf(std::string_view path) const {
    std::vector<RegistryValue> values;
    for (const auto& [key, entry] : LastEntriesOf(path)) {
        RegistryValue value;
        if (ReadEntry(entry, value)) values.push_back(std::move(value));
    }
    return values;
}

std::map<std::string, RegistryDocument::Entry> RegistryDocument::LastEntriesOf(std::string_view path) const {
    std::map<std::string, Entry> entries;
    for (auto section = SectionFrom(0); section; section = SectionFrom(section->end)) {
        if (!EqualsIgnoringCase(section->path, path)) continue;
        for (auto entry = EntryFrom(section->body, *section); entry; entry = EntryFrom(entry->next, *section))
            if (entry->name) entries[InLowerCase(*entry->name)] = *entry;
    }
    return entries;
}

std::optional<RegistryDocument::Section> RegistryDocument::FindSection(std::string_view path) const {
    std::optional<Section> found;
    for (auto section = SectionFrom(0); section; section = SectionFrom(section->end))
        if (EqualsIgnoringCase(section->path, path)) found = section;
    return found;
}

std::optional<RegistryDocument::Entry> RegistryDocument::FindEntry(std::string_view path,
                                                                   std::string_view name) const {
    std::optional<Entry> found;
    for (auto section = SectionFrom(0); section; section = SectionFrom(section->end)) {
        if (!EqualsIgnoringCase(section->path, path)) continue;
        for (auto entry = EntryFrom(section->body, *section); entry; entry = EntryFrom(entry->next, *section))
            if (entry->name && EqualsIgnoringCase(*entry->name, name)) found = entry;
    }
    return found;
}

RegistryDocument::Lookup RegistryDocument::FindValue(std::string_view path, std::string_view name,
                                                     RegistryValue& value) const {
    const std::optional<Entry> entry = FindEntry(path, name);
    if (!entry) return Lookup::kMissing;
    return ReadEntry(*entry, value) ? Lookup::kFound : Lookup::kDamaged;
}

bool RegistryDocument::ReadEntry(const Entry& entry, RegistryValue& value) const {
    std::string joined;
    for (std::size_t place = entry.begin; place < entry.next;)
        joined += LineAt(place, place);
    const std::optional<ValueLine> split = SplitValueLine(joined);
    RegistryValue found;
    if (!split || !ParseValueContent(split->content, found)) return false;
    found.name = split->name;
    value = std::move(found);
    return true;
}

void RegistryDocument::Replace(std::size_t begin, std::size_t end, std::string_view replacement) {
    if (std::string_view(text).substr(begin, end - begin) == replacement) return;
    text.replace(begin, end - begin, replacement);
    isChanged = true;
}

void RegistryDocument::AddKey(std::string_view path) {
    // From the root down. The root itself needs no lines.
    for (std::size_t end = path.find('\\'); end != path.npos;) {
        end = path.find('\\', end + 1);
        const std::string key(path.substr(0, end));
        if (FindSection(key)) continue;
        const bool isSeparated = WithoutLineEnd(text).ends_with('\n');
        const std::string lines = (isSeparated ? "" : lineEnd) + '[' + key + ']' + lineEnd;
        Replace(text.size(), text.size(), lines);
    }
}

void RegistryDocument::SetValue(std::string_view path, const RegistryValue& value) {
    const std::string lines = FormatValue(value, lineEnd);
    if (const std::optional<Entry> entry = FindEntry(path, value.name)) {
        Replace(entry->begin, entry->end, lines);
        return;
    }
    if (!FindSection(path)) AddKey(path);
    const Section section = *FindSection(path);
    // Before the blank lines that separate the next key.
    std::size_t place = section.end;
    while (place > section.body) {
        const std::size_t line = text.rfind('\n', place - 2) + 1;
        if (std::size_t next = 0; !LineAt(line, next).empty()) break;
        place = line;
    }
    Replace(place, place, lines + lineEnd);
}

void RegistryDocument::RemoveValue(std::string_view path, std::string_view name) {
    while (const std::optional<Entry> entry = FindEntry(path, name))
        Replace(entry->begin, entry->next, {});
}

void RegistryDocument::RemoveKey(std::string_view path) {
    AddKey(ParentOf(path));
    while (const std::optional<Section> section = FindSection(path))
        Replace(section->begin, section->end, {});
}

}  // namespace permora::host
