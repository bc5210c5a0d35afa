// What becomes of accounts of a domain when winbind is slow, silent, or says what cannot be.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/accounts/domain_accounts.h"
#include "platform/linux/accounts/logon_record.h"
#include "tests/platform/linux/accounts/fake_winbind.h"
#include "tests/support/patience.h"

namespace permora::test {
namespace {

using host::DomainAccounts;
using host::LetterCase;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::Contains;
using testing::Not;

nt::Sid Sid(std::uint32_t relativeId) {
    return {5, {21, 1, 2, 3, relativeId}};
}

// A domain of its own for each test. It stays, since calls of it may still be running.
class DomainFailuresTest : public testing::Test {
  protected:
    void SetUp() override {
        FakeWinbind& fake = TheFakeWinbind();
        fake.mood = FakeMood::kHealthy;
        fake.milliseconds = 0;
        fake.isOld = false;
        fake.healthyCallsLeft = -1;
        static std::vector<std::unique_ptr<DomainAccounts>>& kept =
            *new std::vector<std::unique_ptr<DomainAccounts>>;
        kept.push_back(std::make_unique<DomainAccounts>());
        accounts = kept.back().get();
        ASSERT_EQ(Available(), DomainAvailability::kOnline);
    }
    void TearDown() override {
        TheFakeWinbind().mood = FakeMood::kHealthy;
        TheFakeWinbind().milliseconds = 0;
    }

    DomainAvailability Available() { return accounts->Link().Availability(host::Patience::For(seconds(2))); }

    // "EXAMPLE\\anna", or the error's number.
    std::string NameOf(std::uint32_t relativeId, milliseconds wait = kLookupTime) {
        AccountName name;
        const DWORD error = accounts->FindName(Sid(relativeId), wait, name);
        return error == ERROR_SUCCESS ? name.domain + '\\' + name.name : std::to_string(error);
    }

    DWORD SidOf(const std::string& name) {
        nt::Sid sid;
        return accounts->FindSid({"EXAMPLE", name, true}, LetterCase::kIgnored, sid);
    }

    DWORD GroupsOf(std::uint32_t relativeId, AccountGroups& groups) {
        return accounts->FindGroups(Sid(relativeId), GroupsRequest::kUsual, groups);
    }

    DWORD Search(std::vector<AccountRow>& found) {
        const std::function<void(std::vector<AccountRow>)> take = [&](std::vector<AccountRow> rows) {
            std::ranges::move(rows, std::back_inserter(found));
        };
        const std::atomic<bool> isStopped = false;
        FoundRows rows("", take);
        return accounts->Search(isStopped, rows);
    }

    template <class Call>
    static milliseconds TimeOf(Call call) {
        const auto start = std::chrono::steady_clock::now();
        call();
        return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
    }

    DomainAccounts* accounts = nullptr;
};

TEST_F(DomainFailuresTest, AFrozenCallMakesTheDomainOfflineForAll) {
    ASSERT_EQ(NameOf(1103), "EXAMPLE\\anna");
    TheFakeWinbind().mood = FakeMood::kFrozen;
    EXPECT_LT(TimeOf([&] { EXPECT_EQ(NameOf(1104, {}), std::to_string(kNameNotYet)); }), kLookupTime);
    // Whoever waits for the whole time knows it then, although the thread of the call may have begun late.
    const auto waitForIt = [&] {
        EXPECT_NE(NameOf(1104), "EXAMPLE\\bert");
        EXPECT_EQ(Available(), DomainAvailability::kOffline);
    };
    EXPECT_LT(TimeOf(waitForIt), kPatience);
    EXPECT_EQ(NameOf(1104), std::to_string(kDomainOffline));
    const int calls = TheFakeWinbind().calls;
    const milliseconds rest = TimeOf([&] {
        AccountGroups groups;
        std::vector<AccountRow> rows;
        nt::Sid sid;
        uid_t user = 0;
        EXPECT_EQ(NameOf(1107), std::to_string(kDomainOffline));
        EXPECT_EQ(NameOf(1103), "EXAMPLE\\anna");
        EXPECT_EQ(SidOf("anna"), kDomainOffline);
        EXPECT_EQ(GroupsOf(1103, groups), kDomainOffline);
        EXPECT_EQ(Search(rows), kDomainOffline);
        EXPECT_EQ(accounts->FindUser(Sid(1103), user), kDomainOffline);
        EXPECT_EQ(accounts->FindSidOf(host::AccountKind::kUser, 101103, sid), kDomainOffline);
    });
    EXPECT_LT(rest, kLookupTime);
    EXPECT_EQ(TheFakeWinbind().calls, calls);
    EXPECT_EQ(accounts->Link().State().domain, "EXAMPLE");

    // The name follows when the call ends after all.
    const std::uint64_t news = accounts->Link().News();
    TheFakeWinbind().mood = FakeMood::kHealthy;
    EXPECT_TRUE(
        Await([&] { return accounts->Link().News() != news && NameOf(1104, {}) == "EXAMPLE\\bert"; }));
    EXPECT_EQ(Available(), DomainAvailability::kOnline);
}

TEST_F(DomainFailuresTest, AnAccountIsGoneOnlyWhereTheDomainItselfSaysSo) {
    TheFakeWinbind().mood = FakeMood::kKeptNobody;
    AccountName name;
    EXPECT_EQ(accounts->FindName(Sid(1199), kLookupTime, name), ERROR_NONE_MAPPED);
    EXPECT_EQ(name.use, SidTypeDeletedAccount);
    EXPECT_EQ(Available(), DomainAvailability::kOnline);
    TheFakeWinbind().mood = FakeMood::kKeptGaps;
    EXPECT_NE(NameOf(1198), std::to_string(ERROR_NONE_MAPPED));
}

TEST_F(DomainFailuresTest, AFrozenCallDoesNotHoldUpTheEndOfTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto end = [this] {
        TheFakeWinbind().mood = FakeMood::kFrozen;
        NameOf(1104, {});
        std::this_thread::sleep_for(milliseconds(50));
        std::exit(0);
    };
    EXPECT_LT(TimeOf([&] { EXPECT_EXIT(end(), testing::ExitedWithCode(0), ""); }), kPatience);
}

TEST_F(DomainFailuresTest, WithoutWinbindNothingIsKnownAndNothingDenied) {
    TheFakeWinbind().mood = FakeMood::kGone;
    AccountGroups groups;
    EXPECT_EQ(NameOf(1104), std::to_string(kDomainOffline));
    EXPECT_EQ(SidOf("anna"), kDomainOffline);
    EXPECT_EQ(GroupsOf(1103, groups), kDomainOffline);
}

// "Not found" is also what winbind says of everything when its controller is away.
TEST_F(DomainFailuresTest, WhatIsNotFoundWithoutAControllerIsNotDenied) {
    ASSERT_EQ(SidOf("nobody"), ERROR_NONE_MAPPED);
    TheFakeWinbind().mood = FakeMood::kNoController;
    EXPECT_EQ(SidOf("nobody"), kDomainOffline);
    SetUp();
    TheFakeWinbind().mood = FakeMood::kNoController;
    nt::Sid sid;
    EXPECT_EQ(accounts->FindSidOf(host::AccountKind::kUser, 4711, sid), kDomainOffline);
}

TEST_F(DomainFailuresTest, ANameThatIsNotFoundSoonAfterAnOutageIsNotDenied) {
    TheFakeWinbind().milliseconds = 3000;
    EXPECT_EQ(SidOf("anna"), kDomainOffline);
    ASSERT_TRUE(Await([&] { return Available() == DomainAvailability::kOffline; }));
    TheFakeWinbind().milliseconds = 0;
    ASSERT_TRUE(Await([&] { return Available() == DomainAvailability::kOnline; }));
    EXPECT_EQ(SidOf("anna"), ERROR_SUCCESS);
    EXPECT_EQ(SidOf("nobody"), kNameNotYet);
}

TEST_F(DomainFailuresTest, AnEmptyListIsAnError) {
    std::vector<AccountRow> rows;
    EXPECT_EQ(Search(rows), ERROR_SUCCESS);
    EXPECT_EQ(rows.size(), 205U);
    for (const int calls : {1, 2, 7, 8, 9, 10}) {
        rows.clear();
        TheFakeWinbind().mood = FakeMood::kHealthy;
        TheFakeWinbind().healthyCallsLeft = calls;
        EXPECT_EQ(Search(rows), kDomainOffline) << calls;
    }
}

// Without its controller winbind succeeds with fewer groups. Whenever that goes away, groups are an error.
TEST_F(DomainFailuresTest, FewerGroupsAreAnError) {
    AccountGroups whole;
    int calls = TheFakeWinbind().calls;
    ASSERT_EQ(NameOf(1103), "EXAMPLE\\anna");
    ASSERT_EQ(GroupsOf(1103, whole), ERROR_SUCCESS);
    EXPECT_THAT(whole.sids, Contains(Sid(1109)));
    EXPECT_THAT(whole.sids, Contains(nt::Sid(5, {32, 545})));
    EXPECT_THAT(whole.sids, Contains(nt::Sid(22, {1, 101103})));
    EXPECT_THAT(whole.sids, Contains(nt::Sid(22, {2, 101107})));
    EXPECT_THAT(whole.sids, Not(Contains(nt::Sid(22, {1, 101107}))));
    calls = TheFakeWinbind().calls - calls;
    for (int before = 1; before < calls - 1; ++before) {
        SetUp();
        ASSERT_EQ(NameOf(1103), "EXAMPLE\\anna");
        TheFakeWinbind().healthyCallsLeft = before;
        AccountGroups groups;
        EXPECT_EQ(GroupsOf(1103, groups), kDomainOffline) << before;
        EXPECT_TRUE(groups.sids.empty());
    }
}

TEST_F(DomainFailuresTest, WhatCannotBeIsAnError) {
    for (const FakeMood mood : {FakeMood::kNullAnswers, FakeMood::kDamagedSids, FakeMood::kForeignGroups}) {
        SetUp();
        ASSERT_EQ(NameOf(1103), "EXAMPLE\\anna");
        TheFakeWinbind().mood = mood;
        AccountGroups groups;
        EXPECT_NE(GroupsOf(1103, groups), ERROR_SUCCESS) << static_cast<int>(mood);
        EXPECT_TRUE(groups.sids.empty());
    }
    SetUp();
    TheFakeWinbind().mood = FakeMood::kDamagedSids;
    EXPECT_EQ(SidOf("anna"), kDomainOffline);
    SetUp();
    TheFakeWinbind().mood = FakeMood::kDamagedNames;
    EXPECT_NE(NameOf(1104), "EXAMPLE\\bert");
    std::vector<AccountRow> rows;
    EXPECT_NE(Search(rows), ERROR_SUCCESS);
    SetUp();
    TheFakeWinbind().mood = FakeMood::kUnmappedIds;
    uid_t user = 7;
    EXPECT_EQ(accounts->FindUser(Sid(1103), user), ERROR_NONE_MAPPED);
}

TEST_F(DomainFailuresTest, AnOlderLibraryListsShorterDomains) {
    EXPECT_EQ(accounts->Link().OwnDomain().dnsName, "EXAMPLE.TEST");
    TheFakeWinbind().isOld = true;
    DomainAccounts& others = *new DomainAccounts;
    static DomainAccounts* kept = &others;
    EXPECT_EQ(kept->Link().Availability(host::Patience::For(seconds(2))), DomainAvailability::kOnline);
    EXPECT_EQ(others.Link().OwnDomain().dnsName, "EXAMPLE.TEST");
    EXPECT_EQ(others.Link().Domains().size(), 2U);
}

TEST_F(DomainFailuresTest, TenThousandRowsCostAFewCalls) {
    const int calls = TheFakeWinbind().calls;
    for (int row = 0; row < 10'000; ++row)
        NameOf(5000 + static_cast<std::uint32_t>(row % 200), {});
    ASSERT_TRUE(Await([&] { return NameOf(5199, {}) == "EXAMPLE\\crowd"; }));
    for (int row = 0; row < 10'000; ++row)
        EXPECT_EQ(NameOf(5000 + static_cast<std::uint32_t>(row % 200), {}), "EXAMPLE\\crowd");
    EXPECT_LE(TheFakeWinbind().calls - calls, 200);
}

TEST(LogonRecordTest, AnAccountIsInTheListingByItsWholeSid) {
    constexpr std::string_view kListing =
        "SID                        Name           When cached\n"
        "------------------------------------------------------\n"
        "S-1-5-21-1-2-3-1104        EXAMPLE\\bert   Thu Nov 26 03:22:10 2026 UTC\n";
    EXPECT_TRUE(host::IsInLogonListing(kListing, Sid(1104)));
    EXPECT_FALSE(host::IsInLogonListing(kListing, Sid(110)));
    EXPECT_FALSE(host::IsInLogonListing(kListing, Sid(1105)));
    EXPECT_FALSE(host::IsInLogonListing("", Sid(1104)));
}

}  // namespace
}  // namespace permora::test
