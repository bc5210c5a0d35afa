#include "cli/json_output.h"

#include "cli/listing.h"
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
        {"mask", "0x" + HexText(entry.mask)},
        {"permission", MaskDisplayName(entry.mask)},
        {"inherited", entry.IsInherited()},
        {"applyTo", ScopeTextFromFlags(entry.aceFlags)},
        {"flags", entry.aceFlags},
    };
}

}  // namespace

void PrintJson(const Json& document) {
    Print(document.dump(2, ' ', false, Json::error_handler_t::replace) + '\n');
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
