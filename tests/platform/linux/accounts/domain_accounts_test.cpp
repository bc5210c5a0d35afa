// Accounts of a real domain, and what becomes of every call while parts of it do not answer.
#include "platform/linux/accounts/domain_accounts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "platform/linux/accounts/account_directory.h"
#include "platform/linux/accounts/unix_accounts.h"
#include "tests/support/command.h"
#include "tests/support/domain_fixture.h"
#include "tests/support/patience.h"

namespace permora::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

nt::Sid Sid(const std::string& text) {
    return nt::Sid::FromText(text).value();
}

std::string SidOfName(const std::string& name) {
    nt::Sid sid;
    const DWORD error = host::FindAccountSid(name, sid);
    return error == ERROR_SUCCESS ? sid.ToText() : "error " + std::to_string(error);
}

std::string NameOfSid(const std::string& sid) {
    AccountName name;
    switch (FindAccountName(Sid(sid), kLookupTime, name)) {
        case NameAnswer::kKnown:
            return name.domain + '\\' + name.name + ' ' + std::to_string(name.use);
        case NameAnswer::kDeleted:
            return "deleted from " + name.domain;
        case NameAnswer::kNobody:
            return "nobody";
        case NameAnswer::kNotYet:
            return "not yet";
        default:
            return "failed";
    }
}

// The same as soon as the domain has answered, which takes it longer on a busy machine than anybody waits.
std::string AwaitedNameOfSid(const std::string& sid) {
    std::string name;
    Await([&] {
        name = NameOfSid(sid);
        return name != "not yet";
    });
    return name;
}

milliseconds TimeOf(const std::function<void()>& call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
}

bool IsOnline() {
    return StateOfDomain().availability == DomainAvailability::kOnline;
}

class DomainAccountsTest : public OnDomainMember {};

TEST_F(DomainAccountsTest, ANameOfBothThisMachineAndTheDomainMeansNeither) {
    ASSERT_EQ(RunCommand({"useradd", "--no-create-home", "carla"}).exitCode, 0);
    EXPECT_EQ(SidOfName("carla"), "error " + std::to_string(kAmbiguousName));
    EXPECT_EQ(SidOfName("EXAMPLE\\carla"), DomainSid(kCarla));
    EXPECT_THAT(SidOfName("Unix User\\carla"), testing::StartsWith("S-1-22-1-"));
    ASSERT_EQ(RunCommand({"userdel", "carla"}).exitCode, 0);
}

TEST_F(DomainAccountsTest, SidsLeadToNames) {
    const std::map<std::string, std::string> cases = {
        {DomainSid(kDeleted), "deleted from EXAMPLE"},
        {"S-1-5-21-7-8-9-1000", "nobody"},
        {"S-1-5-21-7-8-9", "nobody"},
        {"S-1-5-32-545", "BUILTIN\\Users 4"},
    };
    for (const auto& [sid, name] : cases)
        EXPECT_EQ(AwaitedNameOfSid(sid), name) << sid;
}

TEST_F(DomainAccountsTest, ANumberOfTheHostIsTheDomainsAccount) {
    uid_t user = 0;
    ASSERT_EQ(host::TheDomainAccounts().FindUser(Sid(DomainSid(kAnna)), user), ERROR_SUCCESS);
    EXPECT_EQ(host::SidForUser(user).ToText(), DomainSid(kAnna));
    EXPECT_EQ(host::SidForUser(0).ToText(), "S-1-22-1-0");
    std::optional<uid_t> found = 7;
    EXPECT_EQ(host::FindUserForSid(Sid("S-1-5-21-7-8-9-1000"), found), ERROR_SUCCESS);
    EXPECT_FALSE(found);
}

TEST_F(DomainAccountsTest, GroupsAreThoseOfTheServersToken) {
    const auto groupsOf = [](unsigned account, GroupsRequest request) {
        AccountGroups groups;
        EXPECT_EQ(FindAccountGroups(Sid(DomainSid(account)), request, groups), ERROR_SUCCESS) << account;
        return groups;
    };
    const auto has = [](unsigned relativeId) { return Contains(Sid(DomainSid(relativeId))); };
    const AccountGroups usual = groupsOf(kBert, GroupsRequest::kUsual);
    EXPECT_EQ(usual.sids.front().ToText(), DomainSid(kBert));
    EXPECT_THAT(usual.sids, AllOf(has(kPlatform), has(kEngineering), has(kPayroll), has(kAuditors),
                                  has(kDomainUsers), Not(has(kLeavers))));
    EXPECT_THAT(usual.sids,
                AllOf(Contains(Sid("S-1-1-0")), Contains(Sid("S-1-5-11")), Contains(Sid(kOperatorsSid))));
    EXPECT_EQ(usual.origin, GroupsOrigin::kWithoutLogon);

    // Without a logon Domain Users is counted wrongly; this is what the origin warns of.
    EXPECT_THAT(groupsOf(kDora, GroupsRequest::kUsual).sids, AllOf(has(kLeavers), has(kDomainUsers)));
    const AccountGroups exact = groupsOf(kDora, GroupsRequest::kExact);
    EXPECT_THAT(exact.sids, AllOf(has(kLeavers), Not(has(kDomainUsers))));
    EXPECT_EQ(exact.origin, GroupsOrigin::kExact);
    EXPECT_EQ(groupsOf(kDora, GroupsRequest::kUsual).origin, GroupsOrigin::kLastLogon);

    AccountGroups none;
    for (const unsigned account : {kEngineering, kDeleted})
        EXPECT_EQ(FindAccountGroups(Sid(DomainSid(account)), GroupsRequest::kUsual, none), ERROR_NONE_MAPPED);
}

struct Found {
    SearchOutcome outcome;
    std::map<std::string, AccountRow> rows;  // by qualified name
    std::size_t batches = 0;
};

Found Search(const std::string& filter, const std::atomic<bool>& isStopped) {
    Found found;
    found.outcome = SearchAccounts(filter, isStopped, [&](const std::vector<AccountRow>& rows) {
        ++found.batches;
        for (const AccountRow& row : rows)
            found.rows[row.domain + '\\' + row.name] = row;
    });
    return found;
}

TEST_F(DomainAccountsTest, ASearchFindsUsersComputersAndGroups) {
    std::atomic<bool> isStopped = false;
    Found all;
    const milliseconds time = TimeOf([&] { all = Search("", isStopped); });
    EXPECT_EQ(all.outcome.error, ERROR_SUCCESS) << all.outcome.source;
    std::cout << all.rows.size() << " accounts in " << time.count() << " ms\n";
    ASSERT_TRUE(all.rows.contains("EXAMPLE\\anna"));
    EXPECT_EQ(all.rows["EXAMPLE\\anna"].sid.ToText(), DomainSid(kAnna));
    EXPECT_EQ(all.rows["EXAMPLE\\Payroll"].use, SidTypeAlias);
    EXPECT_EQ(all.rows["EXAMPLE\\WS1$"].use, SidTypeComputer);
    EXPECT_TRUE(all.rows.contains("FILES\\Operators"));
    EXPECT_TRUE(all.rows.contains("\\Everyone"));
    EXPECT_TRUE(all.rows.contains("EXAMPLE\\person05000"));

    const Found some = Search("PERSON0123", isStopped);
    EXPECT_EQ(some.rows.size(), 10U);
    isStopped = true;
    EXPECT_EQ(Search("", isStopped).outcome.error, ERROR_OPERATION_ABORTED);
}

class DomainOutageTest : public OnDomainMember, public testing::WithParamInterface<Outage> {};

// Every call ends in time and says that the domain is away, whatever winbind makes of it.
TEST_P(DomainOutageTest, EndsInTimeAndIsSaid) {
    ASSERT_TRUE(Await(IsOnline));
    ASSERT_EQ(AwaitedNameOfSid(DomainSid(kAnna)), "EXAMPLE\\anna 1");
    ASSERT_TRUE(Await(IsOnline));
    static unsigned next = 100000;  // people that nobody has asked for yet
    Control(GetParam().begin);
    std::map<std::string, milliseconds> times;
    const auto measure = [&](const std::string& call, const std::function<void()>& run) {
        times[call] = TimeOf(run);
    };
    measure("1 a name", [&] { EXPECT_EQ(NameOfSid(DomainSid(next++)), "not yet"); });
    measure("2 the next name", [&] { EXPECT_EQ(NameOfSid(DomainSid(next++)), "not yet"); });
    measure("3 a name seen before", [&] { EXPECT_EQ(NameOfSid(DomainSid(kAnna)), "EXAMPLE\\anna 1"); });
    measure("4 a SID", [&] { EXPECT_EQ(SidOfName("EXAMPLE\\nobody-yet"), "error 1355"); });
    measure("5 groups", [&] {
        AccountGroups groups;
        EXPECT_EQ(FindAccountGroups(Sid(DomainSid(kAnna)), GroupsRequest::kUsual, groups), kDomainOffline);
    });
    measure("6 exact groups", [&] {
        AccountGroups groups;
        EXPECT_NE(FindAccountGroups(Sid(DomainSid(kAnna)), GroupsRequest::kExact, groups), ERROR_SUCCESS);
    });
    const std::atomic<bool> isStopped = false;
    measure("7 a search", [&] {
        const Found found = Search("", isStopped);
        EXPECT_EQ(found.outcome.error, kDomainOffline);
        EXPECT_EQ(found.outcome.source, "EXAMPLE");
        EXPECT_TRUE(found.rows.contains("FILES\\Operators"));
    });
    measure("8 an owner's number", [&] {
        std::optional<uid_t> user;
        EXPECT_EQ(host::FindUserForSid(Sid(DomainSid(next++)), user), kDomainOffline);
    });
    measure("9 this machine's user", [&] { EXPECT_EQ(SidOfName("root"), "S-1-22-1-0"); });
    EXPECT_EQ(StateOfDomain().availability, DomainAvailability::kOffline);
    EXPECT_EQ(StateOfDomain().domain, "EXAMPLE");
    for (const auto& [call, time] : times) {
        std::cout << GetParam().name << ": " << call << ": " << time.count() << " ms\n";
        EXPECT_LE(time, call.starts_with("1") ? 2 * kLookupTime : kLookupTime) << call;
    }
    Control(GetParam().end);
    const milliseconds back = TimeOf([] { EXPECT_TRUE(Await(IsOnline, seconds(150))); });
    std::cout << GetParam().name << ": online again after " << back.count() << " ms\n";
    EXPECT_EQ(AwaitedNameOfSid(DomainSid(kCarla)), "EXAMPLE\\carla 1");
    AccountGroups groups;
    EXPECT_TRUE(Await([&] {
        return FindAccountGroups(Sid(DomainSid(kAnna)), GroupsRequest::kUsual, groups) == ERROR_SUCCESS;
    }));
    EXPECT_THAT(groups.sids, Contains(Sid(DomainSid(kPayroll))));
}

INSTANTIATE_TEST_SUITE_P(, DomainOutageTest, testing::ValuesIn(Outages()), OutageName);

}  // namespace
}  // namespace permora::test
