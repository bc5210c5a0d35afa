// SIDs inside the text forms of descriptors: written in full or as the two letters of [MS-DTYP] 2.5.1.1.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/nt/sid.h"

namespace permora::nt {

enum class SddlWords {
    kAbbreviations,  // of rights and SIDs, where the grammar has some
    kNumbers,        // rights as numbers and SIDs in full, for readers who mean other things by the words
};

void AppendSidAsSddl(const Sid& sid, SddlWords words, std::string& text);

// A SID as text or as an alias ("BA", "WD"). Aliases that need a domain or the local machine (DA, LA, ...)
// are taken relative to `machine` when it is given, else refused.
std::optional<Sid> SidFromSddl(std::string_view text, const Sid* machine = nullptr);

}  // namespace permora::nt
