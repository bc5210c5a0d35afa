// Where a walk for a window of results begins, and how its objects are found again.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/place.h"
#include "results/result_source.h"
#include "security/object_security.h"

namespace permora {

struct ResultTop {
    ResultObject object;
    RememberedObject remembered;  // as it was when the user chose it
};

// The tops of a place that a browser shows; without names the folder itself. `folder` is its full path; empty
// for drives.
std::vector<ResultTop> TopsOf(const Place& place, const std::string& folder);
// For people: "C:\data", "3 items in C:\data", "2 drives".
std::string NameOfTops(const std::vector<ResultTop>& tops);

// What stands at `below` (with backslashes; empty: the top itself) below a top.
ResultObject ObjectBelow(const ResultObject& top, std::string_view below, TreeObjectKind kind);

struct HeldResults {
    RememberedPlace place;  // those that were found
    std::string firstName;
    Outcomes failures;  // those that were not: vanished, moved, replaced by a link
};
// Finds the objects again from where their walks began. No link is followed and no mount entered on the way.
HeldResults HoldResults(const std::vector<ResultObject>& objects);

}  // namespace permora
