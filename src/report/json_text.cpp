#include "report/json_text.h"

#include <string_view>
#include <vector>

#include "report/visible_text.h"
#include "security/access_rights.h"
#include "security/entry_details.h"

namespace permora {
namespace {

Json EntryJson(const AccessEntry& entry, EntryDetails& details) {
    Json json = {
        {"type", EntryTypeName(entry.aceType)},
        {"aceType", entry.aceType},
        {"account", AccountDisplayName(details.account)},
        {"sid", details.account.GetSidText()},
        {"mask", MaskDigits(entry.mask)},
        {"synchronize", (entry.mask & SYNCHRONIZE) != 0},
        {"permission", PermissionText(entry.mask)},
        {"inherited", entry.IsInherited()},
        {"applyTo", ScopeTextFromFlags(entry.aceFlags)},
        {"childrenOnly", IsForDirectChildrenOnly(entry.aceFlags)},
        {"flags", entry.aceFlags},
        {"sddl", details.text.empty() ? Json() : Json(details.text)},
    };
    constexpr BYTE kResourceAttribute = 0x12;
    const char* const dataKey = entry.aceType == kResourceAttribute ? "attribute" : "condition";
    if (!details.objectType.empty()) json["objectType"] = details.objectType;
    if (!details.inheritedObjectType.empty()) json["inheritedObjectType"] = details.inheritedObjectType;
    if (!details.condition.empty()) json[dataKey] = details.condition;
    return json;
}

// The value, with the bytes of those of its texts that are not UTF-8.
Json WithBytes(const Json& value) {
    if (!value.is_structured()) return value;
    if (value.is_array()) {
        Json whole = Json::array();
        for (const Json& element : value)
            whole.push_back(WithBytes(element));
        return whole;
    }
    Json whole = Json::object();
    for (const auto& [key, member] : value.items()) {
        whole[key] = WithBytes(member);
        const auto* text = member.get_ptr<const std::string*>();
        if (text != nullptr && !IsWellFormedUtf8(*text)) whole[key + "Bytes"] = HexOfBytes(*text);
    }
    return whole;
}

// The members of an object as they stand between its braces.
std::string MembersText(const Json& object) {
    const std::string text = JsonText(object);
    return text.substr(1, text.size() - 3);
}

}  // namespace

std::string JsonText(const Json& document) {
    return WithBytes(document).dump(2, ' ', true, Json::error_handler_t::replace);
}

// Up to the bracket before the first result.
std::string JsonDocumentText::Head() const {
    return "{" + MembersText({{"version", kJsonVersion}, {"command", command}}) + ",\n  \"results\": [";
}

std::string JsonDocumentText::Add(const Json& result) {
    std::string text = std::exchange(isEmpty, false) ? Head() : ",";
    // A result may be large, so it is copied once.
    for (const char letter : '\n' + JsonText(result)) {
        text += letter;
        if (letter == '\n') text += "    ";
    }
    return text;
}

std::string JsonDocumentText::End(const Json& rest) {
    return (isEmpty ? Head() + "]" : "\n  ]") + (rest.empty() ? "" : "," + MembersText(rest)) + "\n}\n";
}

Json EntriesJson(PACL dacl, const AccessEntryList& entries) {
    if (dacl == nullptr) return {};
    // As many as `entries`, which were read from `dacl`.
    std::vector<EntryDetails> details = DetailsOfEntries(dacl);
    Json array = Json::array();
    for (std::size_t i = 0; i < entries.Entries().size() && i < details.size(); ++i)
        array.push_back(EntryJson(entries.Entries()[i], details[i]));
    return array;
}

}  // namespace permora
