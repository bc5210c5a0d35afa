// The rows in which a person reads an access list.
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
    std::size_t entryIndex;  // in the list; entries without a row make it run ahead of the row's position
    const char* type;
    std::string name;
    const char* permission;
    const char* inheritance;
    const char* applyTo;  // empty for an entry that applies to nothing
};

// A row for every allow and deny entry, in list order. Looks up the names of all accounts.
std::vector<AccessRow> AccessRowsOf(AccessEntryList& list);
// What is said, where a list is about to be replaced, of the entries that the new one will not have: those of
// other types, which have no row, and those that are not acceptable. Empty for none.
std::string LossesRemark(std::size_t otherTypes, std::size_t unacceptable);

}  // namespace permora
