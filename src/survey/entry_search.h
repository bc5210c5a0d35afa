// Searching lists for the entries of an account, or of accounts that are no more.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/nt/acl.h"
#include "platform/nt/sid.h"
#include "survey/account_standing.h"

namespace permora {

enum class EntryEffect : std::uint8_t { kAny, kAllow, kDeny };
enum class EntryOrigin : std::uint8_t { kAny, kExplicit, kInherited };
enum class SearchedPart : std::uint8_t { kEntries, kOwner };

struct EntryCriteria {
    // Nothing: the accounts that were deleted, are not known here, or cannot be.
    std::optional<nt::Sid> account;
    SearchedPart part = SearchedPart::kEntries;
    // Of entries alone.
    std::uint32_t rights = 0;  // it has all of these, in its own words or as a generic right; 0: any
    EntryEffect effect = EntryEffect::kAny;
    EntryOrigin origin = EntryOrigin::kAny;
};

// What fits in one descriptor.
struct FoundEntries {
    bool fits = false;
    nt::Acl entries;               // those that fit, in the list's order
    std::optional<nt::Sid> owner;  // when it fits
};

// Looks at each distinct descriptor once. One thread at a time.
class EntrySearch {
  public:
    explicit EntrySearch(const EntryCriteria& searched) : criteria(searched) {}

    // `descriptor` is self-relative and checked. The result lives as long as this.
    const FoundEntries& Find(std::span<const std::uint8_t> descriptor);
    // Whether there was an account that could not be asked about. It does not fit.
    bool HasMetUnasked() const { return hasMetUnasked; }

  private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };

    FoundEntries Look(std::span<const std::uint8_t> descriptor);
    bool FitsAccount(const nt::Sid& sid);
    bool FitsEntry(const nt::Ace& entry);

    const EntryCriteria criteria;
    SurveyedAccounts accounts;
    std::unordered_map<std::string, FoundEntries, Hash, std::equal_to<>> known;
    bool hasMetUnasked = false;
};

}  // namespace permora
