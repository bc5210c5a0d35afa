#include "platform/nt/well_known_sids.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace permora::nt {
namespace {

// The look-up is a binary search: one row out of order hides others.
TEST(WellKnownSids, EveryRowIsFoundAndNoKeyTwice) {
    std::set<std::string> sids;
    std::set<std::string> names;
    std::set<std::string_view> aliases;
    for (const WellKnownSid& row : WellKnownSids()) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(FindWellKnownSid(row.sid), &row);
        EXPECT_TRUE(sids.insert(row.sid.ToText()).second);
        EXPECT_TRUE(names.insert(std::string(row.domain) + '\\' + std::string(row.name)).second);
        EXPECT_TRUE(row.sddlAlias.empty() || row.sddlAlias.size() == 2);
        EXPECT_TRUE(row.sddlAlias.empty() || aliases.insert(row.sddlAlias).second);
        EXPECT_FALSE(row.name.empty());
    }
    std::uint32_t previousId = 0;
    for (const RelativeAccount& row : RelativeAccounts()) {
        SCOPED_TRACE(row.name);
        EXPECT_LT(previousId, row.relativeId);
        EXPECT_TRUE(row.sddlAlias.empty() || aliases.insert(row.sddlAlias).second);
        previousId = row.relativeId;
    }
}

TEST(WellKnownSids, OthersAreNotFound) {
    for (const Sid& sid : {Sid(5, {}), Sid(5, {32, 1000}), Sid(5, {21, 1, 2, 3, 500}), Sid(1, {}),
                           Sid(22, {1, 0}), Sid(0xFFFFFFFFFFFF, {1})})
        EXPECT_EQ(FindWellKnownSid(sid), nullptr) << sid.ToText();
}

}  // namespace
}  // namespace permora::nt
