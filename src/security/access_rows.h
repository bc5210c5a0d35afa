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
// What is said of `count` entries that have no row, where the list is about to be replaced; empty for none.
std::string OtherTypesRemark(std::size_t count);

}  // namespace permora
