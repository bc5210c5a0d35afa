// One access control entry as text: the fields between the parentheses of "(A;OICI;FA;;;BA)" or
// "(XA;;FX;;;WD;(@USER.Title == "PM"))".
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/nt/acl.h"
#include "platform/nt/sddl_sid.h"

namespace permora::nt {

// Appends the fields of an entry. False, with `text` as before, when they would not be read as the same
// entry.
[[nodiscard]] bool AppendAceAsSddl(const Ace& ace, SddlWords words, std::string& text);

// The entry whose fields are `text`; nothing when they break the grammar. `accounts` as for SidFromSddl.
std::optional<Ace> AceFromSddl(std::string_view text, const SddlAccounts& accounts);

}  // namespace permora::nt
