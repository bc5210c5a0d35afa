// Why an account has a right by an access list, or does not have it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/accounts.h"
#include "platform/nt/acl.h"
#include "security/access_rights.h"
#include "security/access_rows.h"
#include "security/entry_source.h"

namespace permora {

// What explanations of rights do not consider.
inline constexpr const char* kNotExplained =
    "Not considered: privileges, and the mode bits that count beside the list on this machine itself";

enum class RightAnswer : std::uint8_t { kGranted, kDenied, kNotMentioned };

// One of the thirteen single rights, with the one entry that decides it: the first that grants or denies it
// to the account or to a group that it belongs to. Later ones are never asked.
struct ExplainedRight {
    const AccessRight* right;
    RightAnswer answer = RightAnswer::kNotMentioned;
    std::size_t entry = 0;  // its index in the list; not of kNotMentioned
};

// An entry that names the account or one of its groups and is not counted, since it grants or denies under
// conditions, or only on certain objects, or is of an unknown type.
struct UnjudgedEntry {
    std::size_t entry;
    bool isOfUnknownType;  // nobody knows whom it names
};

// What the owner of an object may do, where that is the account or one of its groups.
enum class OwnerStanding : std::uint8_t {
    kNotOwner,
    kAlways,         // read and change permissions, whatever the list says
    kByOwnerRights,  // no more than the list's entries for OWNER RIGHTS say
};

struct RightsExplanation {
    DWORD rights = 0;  // granted in all: what FindEffectiveRights (security/effective_rights.h) reports
    std::vector<ExplainedRight> single;  // in the order of kAccessRights, without "Full control"
    std::vector<UnjudgedEntry> unjudged;
    std::vector<EntrySource> sources;  // of the list's entries; none: not asked for
    std::optional<nt::Sid> owner;      // of the object
    OwnerStanding standing = OwnerStanding::kNotOwner;
    DWORD rightsAsOwner = 0;  // with those that come of being the owner; `rights` for who is not
    nt::Acl list;
    AccountGroups groups;
};

// Explains the rights of an account with these groups by a list. `owner` is that of the object; nothing when
// it has none.
RightsExplanation ExplainRights(nt::Acl list, const std::optional<nt::Sid>& owner,
                                const AccountGroups& groups);
// The same with the sources of the entries. `dacl`, which is not null, was read from the object. A system
// error code, ERROR_INVALID_ACL for a damaged list; `explanation` is then untouched.
DWORD ExplainRights(const HeldObject& object, PACL dacl, const AccountGroups& groups,
                    RightsExplanation& explanation);

inline constexpr std::array<const char*, 5> kExplanationTitles = {"Right", "Granted", "Because Of", "Through",
                                                                  "Inherited From"};

// One right in five texts, in the order of kExplanationTitles.
using ExplanationRow = std::array<std::string, kExplanationTitles.size()>;

std::vector<ExplanationRow> ExplanationRows(const RightsExplanation& explanation, NameAccount* nameOf);

// "Delete, Read permissions"; empty for none of the thirteen.
std::string NamesOfRights(DWORD rights);

// What else is to be known, in half sentences: what the owner may do, and entries that are not judged.
std::vector<std::string> RemarksOnExplanation(const RightsExplanation& explanation, NameAccount* nameOf);

}  // namespace permora
