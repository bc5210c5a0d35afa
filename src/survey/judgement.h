// Judging one object's security: where it departs from what its folder hands down, and what else is worth a
// remark. Pure but for the accounts, which are looked up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "platform/nt/security_descriptor.h"
#include "platform/tree_reading.h"
#include "survey/account_standing.h"
#include "survey/remark.h"

namespace permora {

// Everyone who has one of these may change what is in the object, or who may: writing and appending data
// (making files and folders), deleting it or what is in it, changing permissions or the owner.
inline constexpr std::uint32_t kOpenRights = 0x0002 | 0x0004 | 0x0040 | 0x00010000 | 0x00040000 | 0x00080000;

// A descriptor that a survey has come across, once for all objects that have it.
struct DistinctSecurity {
    std::size_t number = 0;           // from 0, in the order in which the walks came to them
    std::vector<std::uint8_t> bytes;  // self-relative, checked; without the system access list
    bool isStored = true;             // false: made from the host's owner, group and mode
    std::size_t objects = 0;          // that have it, so far

    // Read anew by each call: surveys hold many, and need few of them at a time.
    nt::SecurityDescriptor Descriptor() const;
};

// The judgement on a descriptor in one place, shared by all objects that have it in such a place.
struct JudgedSecurity {
    const DistinctSecurity* own;
    // Of the folder that holds the object. Null: the root of a volume, or it could not be read.
    const DistinctSecurity* above;
    TreeObjectKind kind;
    RemarkSet remarks;
};

// What a judgement says about an object with no folder above it in the survey: all that it has is remarked
// on, whether or not it has it from its folder.
enum class SurveyPlace : std::uint8_t { kTop, kBelow };

using StandingOf = std::function<AccountStanding(const nt::Sid& sid)>;

// `above` may be null: then nothing is said about what is handed down.
RemarkSet JudgeSecurity(const DistinctSecurity& own, const DistinctSecurity* above, TreeObjectKind kind,
                        SurveyPlace place, const StandingOf& standingOf);

}  // namespace permora
