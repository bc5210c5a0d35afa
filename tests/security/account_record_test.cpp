#include "security/account_record.h"

#include <array>
#include <string>
#include <utility>

#include "gtest/gtest.h"
#include "platform/api/errors.h"
#include "tests/security/entries.h"
#include "tests/security/service_fakes.h"

namespace permora {
namespace {

using test::AccountOf;
using test::ServiceFakes;

const nt::Sid kEveryone{1, {0}};
const nt::Sid kAdministrators{5, {32, 544}};

TEST(AccountRecord, WritesASidAsText) {
    const struct {
        nt::Sid sid;
        const char* text;
    } cases[] = {
        {kAdministrators, "S-1-5-32-544"},
        {{0x010000000005, {}}, "S-1-0x010000000005"},
        {{0x00AB00000000, {7}}, "S-1-0x00ab00000000-7"},
        {{0xFFFFFFFF, {0xFFFFFFFF}}, "S-1-4294967295-4294967295"},
        {{5, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}},
         "S-1-5-1-2-3-4-5-6-7-8-9-10-11-12-13-14-15"},
    };
    for (const auto& c : cases) {
        AccountRecord record = AccountOf(c.sid);
        EXPECT_EQ(record.GetSidText(), c.text);
        EXPECT_EQ(record.sidText, c.text);
    }
}

TEST(AccountRecord, IsShownByDomainAndNameOrByItsSid) {
    ServiceFakes services;
    const std::string longName(300, 'n');
    const std::string longDomain(64, 'd');
    services.accounts = {
        {"S-1-1-0", "", "Everyone", SidTypeWellKnownGroup},
        {"S-1-5-32-544", "BUILTIN", "Administrators", SidTypeAlias},
        {"S-1-5-80-1", "NT SERVICE", longName, SidTypeUser},
        {"S-1-5-80-2", longDomain, std::string(63, 'n'), SidTypeUser},
        {"S-1-5-80-3", "EMPTY", "", SidTypeDomain},
    };
    const struct {
        std::string text;
        SID_NAME_USE use;
        nt::Sid sid;
    } cases[] = {
        {"Everyone", SidTypeWellKnownGroup, kEveryone},
        {"BUILTIN\\Administrators", SidTypeAlias, kAdministrators},
        {"NT SERVICE\\" + longName, SidTypeUser, {5, {80, 1}}},
        {longDomain + '\\' + std::string(63, 'n'), SidTypeUser, {5, {80, 2}}},
        {"EMPTY\\", SidTypeDomain, {5, {80, 3}}},
        {"S-1-5-21-1-2-3-1013", SidTypeUnknown, {5, {21, 1, 2, 3, 1013}}},
    };
    for (const auto& c : cases) {
        AccountRecord record = AccountOf(c.sid);
        EXPECT_EQ(AccountDisplayName(record), c.text);
        EXPECT_EQ(record.use, c.use) << c.text;
    }
    AccountRecord nobody;
    EXPECT_EQ(AccountDisplayName(nobody) + nobody.GetName() + nobody.GetDomain() + nobody.GetSidText(), "");
    EXPECT_FALSE(nobody.Lookup());
}

TEST(AccountRecord, AFailedLookUpGivesNoNamesAndKeepsWhatWasKnown) {
    ServiceFakes services;
    services.accounts = {{"S-1-1-0", "", "Everyone", SidTypeWellKnownGroup}};
    AccountRecord record = AccountOf(kEveryone);
    ASSERT_TRUE(record.Lookup());

    services.accountError = ERROR_ACCESS_DENIED;
    EXPECT_FALSE(record.Lookup());
    EXPECT_EQ(record.name, "Everyone");
    EXPECT_EQ(record.use, SidTypeWellKnownGroup);
    EXPECT_EQ(record.GetName(), "");
    EXPECT_EQ(AccountDisplayName(record), "S-1-1-0");

    // Both attempts find the buffers too small, as when an account is renamed meanwhile.
    services.accountError = ERROR_INSUFFICIENT_BUFFER;
    EXPECT_FALSE(record.Lookup());
    EXPECT_EQ(record.use, SidTypeInvalid);
}

TEST(AccountRecord, ACopyOwnsItsSidAndAFailedOneIsEmpty) {
    ServiceFakes services;
    services.accounts = {{"S-1-1-0", "", "Everyone", SidTypeWellKnownGroup}};
    AccountRecord original = AccountOf(kEveryone);
    original.machine = "SERVER";
    ASSERT_TRUE(original.Lookup());

    AccountRecord copy = original;
    copy = *&copy;  // onto itself
    EXPECT_NE(copy.sid.get(), original.sid.get());
    EXPECT_EQ(copy.GetSidText(), "S-1-1-0");
    EXPECT_EQ(copy.name, "Everyone");
    EXPECT_EQ(copy.machine, "SERVER");
    EXPECT_EQ(copy.use, SidTypeWellKnownGroup);

    services.allocationsLeft = 0;
    copy = original;
    EXPECT_EQ(copy.sid, nullptr);
    EXPECT_EQ(copy.name + copy.machine, "");
    EXPECT_EQ(copy.use, SidTypeInvalid);
}

TEST(AccountRecord, SettingASidForgetsTheOldAccountOnlyWhenItSucceeds) {
    ServiceFakes services;
    services.accounts = {{"S-1-1-0", "", "Everyone", SidTypeWellKnownGroup}};
    AccountRecord record = AccountOf(kEveryone);
    record.machine = "SERVER";
    ASSERT_TRUE(record.Lookup());
    const AccountRecord other = AccountOf(kAdministrators);

    EXPECT_FALSE(record.SetSid(nullptr, "OTHER"));
    EXPECT_FALSE(record.SetSid(nullptr));
    services.allocationsLeft = 0;
    EXPECT_FALSE(record.SetSid(other.sid.get(), "OTHER"));
    EXPECT_EQ(record.GetSidText() + record.name + record.machine, "S-1-1-0EveryoneSERVER");

    services.allocationsLeft = 1;
    EXPECT_TRUE(record.SetSid(other.sid.get()));
    EXPECT_EQ(record.name, "");
    EXPECT_EQ(record.sidText, "");
    EXPECT_EQ(record.use, SidTypeInvalid);
    EXPECT_EQ(record.machine, "SERVER");
    EXPECT_EQ(record.GetSidText(), "S-1-5-32-544");
}

}  // namespace
}  // namespace permora
