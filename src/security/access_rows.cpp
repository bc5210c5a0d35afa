#include "security/access_rows.h"

#include "security/access_rights.h"

namespace permora {

std::vector<AccessRow> AccessRowsOf(AccessEntryList& list) {
    std::vector<AccessRow> rows;
    const std::vector<AccessEntry>& entries = list.Entries();
    for (std::size_t index = 0; index < entries.size(); ++index) {
        const AccessEntry& entry = entries[index];
        if (!entry.IsAllow() && !entry.IsDeny()) {
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

}  // namespace permora
