#include "security/access_rows.h"

#include "security/access_rights.h"
#include "security/distinct_names.h"

namespace permora {

std::vector<AccessRow> AccessRowsOf(AccessEntryList& list, NameAccount* nameOf) {
    std::vector<AccessRow> rows;
    DistinctNames names;
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
        names.Note(rows.back().name, entry.account);
    }
    for (AccessRow& row : rows)
        row.name = names.Of(row.name, entries[row.entryIndex].account);
    return rows;
}

std::vector<std::string> RemarksOnEntries(const AccessEntryList& entries) {
    std::vector<std::string> remarks;
    if (entries.Entries().empty()) remarks.emplace_back("the access list is empty: nobody has access");
    if (!entries.IsInCanonicalOrder())
        remarks.emplace_back("the entries do not stand in the usual order (deny, allow, inherited)");
    const std::size_t others = entries.OtherTypeCount();
    if (others > 0) {
        remarks.push_back(std::to_string(others) +
                          (others == 1 ? " entry of another type" : " entries of other types") +
                          " than allow and deny " + (others == 1 ? "is" : "are") + " not shown");
    }
    if (const std::size_t invalid = entries.UnacceptableCount(); invalid > 0) {
        remarks.push_back(std::to_string(invalid) +
                          (invalid == 1 ? " entry is not valid" : " entries are not valid"));
    }
    return remarks;
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
