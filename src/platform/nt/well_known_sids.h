// The SIDs that mean the same on every machine, with their names and SDDL abbreviations.
// Source: [MS-DTYP] 2.4.2.4 "Well-Known SID Structures" and 2.5.1.1 (abbreviations); names in English, as in
// the system's account look-up.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "platform/nt/sid.h"

namespace permora::nt {

// Values of SID_NAME_USE.
enum class SidUse : std::uint8_t {
    kUser = 1,
    kGroup = 2,
    kDomain = 3,
    kAlias = 4,
    kWellKnownGroup = 5,
    kLabel = 10,  // integrity levels
};

struct WellKnownSid {
    Sid sid;
    SidUse use;
    std::string_view sddlAlias;  // two letters, or empty
    std::string_view domain;     // "BUILTIN", "NT AUTHORITY", ... or empty
    std::string_view name;       // "Administrators"
};

// The whole table, in ascending order of authority and sub-authorities.
std::span<const WellKnownSid> WellKnownSids();

// The row of a SID, or null. Rows live for the whole process.
const WellKnownSid* FindWellKnownSid(const Sid& sid);

// Accounts with a fixed relative id below every machine's or domain's SID (500 Administrator, 501 Guest,
// ...).
struct RelativeAccount {
    std::uint32_t relativeId;
    SidUse use;
    std::string_view sddlAlias;  // "LA", or empty
    std::string_view name;
};
std::span<const RelativeAccount> RelativeAccounts();

}  // namespace permora::nt
