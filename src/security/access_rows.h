// The rows of an access list, as windows and the terminal show them.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "security/access_entry_list.h"

namespace permora {

inline constexpr std::array<const char*, 5> kAccessRowTitles = {"Type", "Name", "Permission", "Inheritance",
                                                                "Apply To"};

// One entry in five texts, in the order of kAccessRowTitles.
struct AccessRow {
    std::size_t entryIndex;  // in the list, where some entries have no row
    const char* type;
    std::string name;
    const char* permission;
    const char* inheritance;
    const char* applyTo;  // empty for an entry that applies to nothing
};

// Looks up the name of an account: AccountDisplayName or AccountNameSoFar.
using NameAccount = std::string(AccountRecord& account);

// A row for every allow and deny entry, in list order. Accounts of one name are told apart by their SIDs.
std::vector<AccessRow> AccessRowsOf(AccessEntryList& list, NameAccount* nameOf);

// Remarks beside the rows, a sentence each: that the list is empty or out of order, or holds entries that no
// row shows.
std::vector<std::string> RemarksOnEntries(const AccessEntryList& entries);

// A remark about the entries that are lost when the list is replaced: those of other types, which have no
// row, and those that are not acceptable. Empty for none.
std::string LossesRemark(std::size_t otherTypes, std::size_t unacceptable);

}  // namespace permora
