#include "cli/json_output.h"

#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "security/access_rights.h"

namespace permora {
namespace {

Json EntryJson(AccessEntryList& entries, std::size_t index) {
    const AccessEntry& entry = entries.Entries()[index];
    AccountRecord& account = entries.AccountOf(index);
    // An entry of another type has no row and no name, but a program that reads this must not miss it.
    return {
        {"type",
         entry.IsOfOtherType() ? "Type " + std::to_string(entry.aceType) : AceTypeText(entry.aceType)},
        {"account", AccountDisplayName(account)},
        {"sid", account.GetSidText()},
        {"mask", "0x" + HexText(entry.mask & ~SYNCHRONIZE)},
        {"synchronize", (entry.mask & SYNCHRONIZE) != 0},
        {"permission", PermissionText(entry.mask)},
        {"inherited", entry.IsInherited()},
        {"applyTo", ScopeTextFromFlags(entry.aceFlags)},
        {"flags", entry.aceFlags},
    };
}

std::string HexOfBytes(std::string_view text) {
    std::string digits;
    for (const char byte : text) {
        const std::string pair = HexText(static_cast<unsigned char>(byte));
        digits += std::string(2 - pair.size(), '0') + pair;
    }
    return digits;
}

// The value with the bytes of its texts that are no UTF-8.
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
        if (text != nullptr && !IsUtf8(*text)) whole[key + "Bytes"] = HexOfBytes(*text);
    }
    return whole;
}

}  // namespace

void PrintJson(const Json& document) {
    Print(WithBytes(document).dump(2, ' ', true, Json::error_handler_t::replace) + '\n');
}

Json EntriesJson(PACL dacl, AccessEntryList& entries) {
    if (dacl == nullptr) return {};
    Json array = Json::array();
    for (std::size_t i = 0; i < entries.Entries().size(); ++i)
        array.push_back(EntryJson(entries, i));
    return array;
}

void PrintJsonObjects(const Json& objects, std::size_t paths) {
    if (paths != 1) {
        PrintJson(objects);
    } else if (!objects.empty()) {
        PrintJson(objects.front());
    }
}

}  // namespace permora
