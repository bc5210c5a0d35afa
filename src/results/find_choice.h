// What the user chose in the Find dialog, without a window.
#pragma once

#include <cstdint>
#include <string>

#include "survey/entry_search.h"

namespace permora {

enum class SearchedAccounts : std::uint8_t { kOne, kGone };

struct FindChoice {
    SearchedAccounts accounts = SearchedAccounts::kOne;
    std::string typed;   // of kOne: a name, DOMAIN\name or the text of a SID
    std::string server;  // that is asked for names which nobody here has (LookupAccountByName)
    SearchedPart part = SearchedPart::kEntries;
    // Of entries alone.
    std::uint32_t rights = 0;
    EntryEffect effect = EntryEffect::kAny;
    EntryOrigin origin = EntryOrigin::kAny;
};

struct FindRequest {
    EntryCriteria criteria;
    std::string name;  // of what is searched, for the window's title
};

// Looks the account up, which may take long. What is wrong with it, or an empty text; `request` is untouched
// then.
std::string MakeFindRequest(const FindChoice& choice, FindRequest& request);

}  // namespace permora
