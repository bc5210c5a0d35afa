// Which accounts in lists no longer exist, as far as that is known.
#include "changes/gone_accounts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "tests/support/access_lists.h"
#include "tests/support/fake_domain.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Texts(const std::vector<nt::Sid>& sids) {
    std::vector<std::string> texts;
    for (const nt::Sid& sid : sids)
        texts.push_back(sid.ToText());
    return texts;
}

TEST(GoneAccountsTest, WhatADomainDoesNotAnswerIsNoAnswer) {
    const TemporaryFolder folder;
    const std::string file = folder.MakeFile("file");
    FakeDomain domain;
    domain.Add(1103, "anna");
    const std::string anna = FakeDomain::SidText(1103);
    const std::string foreign = "S-1-5-21-1-2-3-1001";
    if (SetDescriptorText(file, "D:P(A;;FA;;;" + anna + ")(A;;FR;;;" + foreign + ")(A;;FR;;;S-1-5-21-1)") !=
        0U)
        GTEST_SKIP() << "no lists here";
    const auto looked = [&](GoneAccounts::Kinds kinds) {
        GoneAccounts accounts(kinds);
        EXPECT_EQ(accounts.LookThrough(Held(folder.Path()), [](std::string_view) { return true; }),
                  ERROR_SUCCESS);
        return accounts;
    };
    EXPECT_THAT(Texts(looked(GoneAccounts::Kinds::kDeleted).Gone()), IsEmpty());
    const GoneAccounts more = looked(GoneAccounts::Kinds::kForeignToo);
    EXPECT_THAT(Texts(more.Gone()), ElementsAre(foreign, "S-1-5-21-1"));
    EXPECT_TRUE(more.IsGone(nt::Sid::FromText(foreign).value()));
    EXPECT_FALSE(more.IsGone(nt::Sid::FromText(anna).value()));
    EXPECT_THAT(more.Unasked(), IsEmpty());

    domain.HoldNames(true);
    const GoneAccounts unasked = looked(GoneAccounts::Kinds::kForeignToo);
    EXPECT_THAT(Texts(unasked.Unasked()), ElementsAre(anna));
}

TEST(GoneAccountsTest, LookingEndsWhenItIsToldTo) {
    const TemporaryFolder folder;
    folder.MakeFile("file");
    GoneAccounts accounts(GoneAccounts::Kinds::kDeleted);
    EXPECT_EQ(accounts.LookThrough(Held(folder.Path()), [](std::string_view) { return false; }),
              ERROR_OPERATION_ABORTED);
}

}  // namespace
}  // namespace permora::test
