// One access control entry as text: the fields between the parentheses of "(A;OICI;FA;;;BA)".
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/nt/acl.h"
#include "platform/nt/sddl.h"
#include "platform/nt/sid.h"

namespace permora::nt {

void AppendSidAsSddl(const Sid& sid, SddlWords words, std::string& text);

// Appends the six fields of an entry. False, with `text` as before, when text cannot hold the whole entry.
[[nodiscard]] bool AppendAceAsSddl(const Ace& ace, SddlWords words, std::string& text);

// The entry whose six fields are `text`; nothing when they break the grammar. `machine` as for FromSddl.
std::optional<Ace> AceFromSddl(std::string_view text, const Sid* machine);

}  // namespace permora::nt
