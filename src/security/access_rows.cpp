#include "security/access_rows.h"

#include "security/access_rights.h"

namespace permora {

std::vector<AccessRow> AccessRowsOf(AccessEntryList& list, NameAccount* nameOf) {
    std::vector<AccessRow> rows;
    const std::vector<AccessEntry>& entries = list.Entries();
    for (std::size_t index = 0; index < entries.size(); ++index) {
        const AccessEntry& entry = entries[index];
        if (entry.IsOfOtherType()) continue;
        rows.push_back({.entryIndex = index,
                        .type = AceTypeText(entry.aceType),
                        .name = nameOf(list.AccountOf(index)),
                        .permission = PermissionText(entry.mask),
                        .inheritance = InheritanceText(entry.aceFlags),
                        .applyTo = ScopeTextFromFlags(entry.aceFlags)});
    }
    return rows;
}

std::string LossesRemark(std::size_t otherTypes, std::size_t unacceptable) {
    std::string remark;
    if (otherTypes == 1)
        remark = "1 entry of another type is not shown; applying drops it.";
    else if (otherTypes > 1)
        remark = std::to_string(otherTypes) + " entries of other types are not shown; applying drops them.";
    if (unacceptable == 0) return remark;
    if (!remark.empty()) remark += ' ';
    if (unacceptable == 1) return remark + "1 entry is not valid; applying drops it.";
    return remark + std::to_string(unacceptable) + " entries are not valid; applying drops them.";
}

}  // namespace permora
