#include "security/access_rows.h"

#include "security/access_rights.h"

namespace permora {

std::vector<AccessRow> AccessRowsOf(AccessEntryList& list) {
    std::vector<AccessRow> rows;
    const std::vector<AccessEntry>& entries = list.Entries();
    for (std::size_t index = 0; index < entries.size(); ++index) {
        const AccessEntry& entry = entries[index];
        if (entry.IsOfOtherType()) {
            continue;
        }
        rows.push_back({.entryIndex = index,
                        .type = AceTypeText(entry.aceType),
                        .name = AccountDisplayName(list.AccountOf(index)),
                        .permission = MaskDisplayName(entry.mask),
                        .inheritance = InheritanceText(entry.aceFlags),
                        .applyTo = ScopeTextFromFlags(entry.aceFlags)});
    }
    return rows;
}

std::string OtherTypesRemark(std::size_t count) {
    if (count == 0) return {};
    if (count == 1) return "1 entry of another type is not shown; applying drops it.";
    return std::to_string(count) + " entries of other types are not shown; applying drops them.";
}

}  // namespace permora
