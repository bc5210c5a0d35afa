#include "cli/share_listing.h"

#include <array>

#include "cli/listing.h"
#include "cli/terminal_text.h"
#include "survey/list_enforcement.h"

namespace permora {

std::string ShareTypeText(DWORD type) {
    constexpr std::array<const char*, 4> kTypes = {"Folder", "Printer", "Device", "IPC"};
    const DWORD kind = type & ~STYPE_SPECIAL;
    const std::string text = kind < kTypes.size() ? kTypes.at(kind) : "Type " + std::to_string(kind);
    return (type & STYPE_SPECIAL) != 0 ? text + ", administrative" : text;
}

std::string UsesText(DWORD maxUses) {
    return maxUses == SHI_USES_UNLIMITED ? "unlimited" : std::to_string(maxUses);
}

Json FactsJson(const ShareFacts& facts) {
    Json json = {{"name", facts.name},
                 {"type", ShareTypeText(facts.type)},
                 {"path", facts.path},
                 {"remark", facts.remark}};
    json["maxUses"] = facts.maxUses == SHI_USES_UNLIMITED ? Json() : Json(facts.maxUses);
    return json;
}

std::string ShareText(ShareSecurity& share) {
    const ShareFacts facts = FactsOf(*share.record);
    std::string text = PrintableText(facts.name) + "\n  Type: " + ShareTypeText(facts.type) + '\n';
    if (!facts.path.empty()) text += "  Path: " + PrintableText(facts.path) + '\n';
    if (!facts.remark.empty()) text += "  Remark: " + PrintableText(facts.remark) + '\n';
    return text + "  Users: " + UsesText(facts.maxUses) + '\n' + "  Kept: " + KeptText(FindShareServer()) +
           '\n' + RemarkLines(RemarksOn(share.dacl, share.entries)) + RowsText(share.entries);
}

}  // namespace permora
