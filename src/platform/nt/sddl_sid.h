// SIDs inside the text forms of descriptors: written in full or as the two letters of [MS-DTYP] 2.5.1.1.
#pragma once

#include <functional>
#include <map>
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

// What the aliases mean that need a domain or the local machine (DA, LA, ...).
class SddlAccounts {
  public:
    // They mean nothing.
    SddlAccounts() = default;
    // They mean accounts of this machine or domain.
    explicit SddlAccounts(const Sid& machine) : relativeTo(machine) {}

    // False when `alias` is none of them, or means another account already.
    bool Define(std::string_view alias, const Sid& account);
    std::optional<Sid> Find(std::string_view alias) const;

  private:
    std::optional<Sid> relativeTo;
    std::map<std::string, Sid, std::less<>> defined;
};

// A SID as text or as an alias ("BA", "WD"). Aliases that `accounts` does not know are refused.
std::optional<Sid> SidFromSddl(std::string_view text, const SddlAccounts& accounts = {});

}  // namespace permora::nt
