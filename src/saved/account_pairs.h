// Which accounts take the place of which, as a user writes it: OLD=NEW, or a table with a line for each pair.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace permora {

// Names, DOMAIN\name or SIDs, as typed.
struct AccountPair {
    std::string old;
    std::string other;
    std::size_t line = 0;  // of the table, from 1
};

// False when `text` is not of the form OLD=NEW with something on both sides.
bool ReadAccountPair(std::string_view text, AccountPair& pair);

// The pairs of a table in the form of RFC 4180: two fields in a line with a comma between them, in double
// quotes where a field holds a comma; either kind of line end. A mark of UTF-8 at the beginning, empty lines
// and a first line "old,new" mean nothing. On false, `badLine` is the first line with anything else, and
// `pairs` is untouched.
bool ReadAccountTable(std::string_view table, std::vector<AccountPair>& pairs, std::size_t& badLine);

}  // namespace permora
