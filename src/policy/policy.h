// What a policy file says: which entries, protection and owner objects are to have (docs/policy.md).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/nt/acl.h"
#include "platform/nt/sid.h"

namespace permora {

// A place in the file, both counted from 1.
struct PolicyPlace {
    std::size_t line = 0;
    std::size_t column = 0;
};

enum class PolicyKinds : std::uint8_t { kAll, kFolders, kFiles };

enum class PolicyExtent : std::uint8_t {
    kExactly,  // an object has these entries of its own and no others
    kAtLeast,  // an object has these among others
};

struct PolicyRule {
    PolicyPlace place;
    std::string path;   // absolute, as it was written
    std::string below;  // a pattern for what is below the path; empty: the object at the path itself
    PolicyKinds kinds = PolicyKinds::kAll;
    bool isOptional = false;  // nothing need be at the path

    // Nothing: as it is.
    std::optional<nt::Sid> owner;
    std::optional<bool> isProtected;
    std::optional<PolicyExtent> extent;
    // As a folder has them: denials first, then in the order of the file. No two of them are of one type, for
    // one account and with the same flags.
    std::vector<nt::Ace> entries;
};

struct Policy {
    std::vector<PolicyRule> rules;
};

}  // namespace permora
