#include "security/account_record.h"

#include <string>

#include "gtest/gtest.h"
#include "platform/api/errors.h"
#include "tests/security/entries.h"
#include "tests/security/service_fakes.h"

namespace permora {
namespace {

using test::AccountOf;
using test::ServiceFakes;

constexpr const char* kEveryone = "S-1-1-0";
constexpr const char* kAdministrators = "S-1-5-32-544";

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
        const char* sid;
    } cases[] = {
        {"Everyone", SidTypeWellKnownGroup, kEveryone},
        {"BUILTIN\\Administrators", SidTypeAlias, kAdministrators},
        {"NT SERVICE\\" + longName, SidTypeUser, "S-1-5-80-1"},
        {longDomain + '\\' + std::string(63, 'n'), SidTypeUser, "S-1-5-80-2"},
        {"EMPTY\\", SidTypeDomain, "S-1-5-80-3"},
        {"S-1-5-21-1-2-3-1013", SidTypeUnknown, "S-1-5-21-1-2-3-1013"},
    };
    for (const auto& c : cases) {
        AccountRecord record = AccountOf(c.sid);
        EXPECT_EQ(AccountDisplayName(record), c.text);
        EXPECT_EQ(record.use, c.use) << c.text;
    }
    AccountRecord nobody;
    EXPECT_EQ(AccountDisplayName(nobody) + nobody.GetSidText(), "");
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
    EXPECT_EQ(AccountDisplayName(record), "S-1-1-0");

    // Both attempts find the buffers too small, as when an account is renamed meanwhile.
    services.accountError = ERROR_INSUFFICIENT_BUFFER;
    EXPECT_FALSE(record.Lookup());
    EXPECT_EQ(record.use, SidTypeInvalid);
}

TEST(AccountRecord, SettingASidForgetsTheOldAccountOnlyWhenItSucceeds) {
    ServiceFakes services;
    services.accounts = {{"S-1-1-0", "", "Everyone", SidTypeWellKnownGroup}};
    AccountRecord record = AccountOf(kEveryone);
    ASSERT_TRUE(record.Lookup());

    BYTE sixteenSubAuthorities[] = {1, 16};
    EXPECT_FALSE(record.SetSid(nullptr));
    EXPECT_FALSE(record.SetSid(sixteenSubAuthorities));
    EXPECT_EQ(record.GetSidText() + record.name, "S-1-1-0Everyone");

    EXPECT_TRUE(record.SetSid(AccountOf(kAdministrators).RawSid()));
    EXPECT_EQ(record.name, "");
    EXPECT_EQ(record.use, SidTypeInvalid);
    EXPECT_EQ(record.GetSidText(), "S-1-5-32-544");
}

}  // namespace
}  // namespace permora
