#include "platform/nt/well_known_sids.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace permora::nt {
namespace {

// A row in the wrong place would not be found.
TEST(WellKnownSids, EveryRowIsFoundAndNoAbbreviationMeansTwoAccounts) {
    std::set<std::string_view> aliases;
    for (const WellKnownSid& row : WellKnownSids()) {
        EXPECT_EQ(FindWellKnownSid(row.sid), &row) << row.name;
        EXPECT_TRUE(row.sddlAlias.empty() || aliases.insert(row.sddlAlias).second) << row.sddlAlias;
    }
    for (const RelativeAccount& row : RelativeAccounts())
        EXPECT_TRUE(row.sddlAlias.empty() || aliases.insert(row.sddlAlias).second) << row.sddlAlias;
}

TEST(WellKnownSids, EveryBuiltInGroupHasAName) {
    const auto hasName = [](std::uint32_t relativeId) {
        const WellKnownSid* row = FindWellKnownSid(Sid(5, {32, relativeId}));
        return row != nullptr && row->domain == "BUILTIN" && !row->name.empty();
    };
    // The public list of relative ids has gaps.
    const std::set<std::uint32_t> unused = {563, 564, 565, 566, 567, 570, 571, 572};
    for (std::uint32_t relativeId = 544; relativeId <= 585; ++relativeId)
        EXPECT_EQ(hasName(relativeId), unused.count(relativeId) == 0) << relativeId;
}

}  // namespace
}  // namespace permora::nt
