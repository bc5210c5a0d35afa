#include "security/account_lookup.h"

#include <string>

#include "gtest/gtest.h"
#include "platform/api/errors.h"
#include "tests/security/entries.h"
#include "tests/security/service_fakes.h"

namespace permora {
namespace {

using testing::AccountOf;
using testing::ServiceFakes;

class AccountLookup : public ::testing::Test {
  protected:
    AccountLookup() {
        services.accounts = {
            {"S-1-1-0", "", "Everyone", SidTypeWellKnownGroup},
            {"S-1-5-32-544", "BUILTIN", "Administrators", SidTypeAlias},
            {"S-1-5-80-1", "NT SERVICE", std::string(256, 's'), SidTypeUser},
        };
    }

    ServiceFakes services;
};

TEST_F(AccountLookup, FindsSidAndNamesHoweverLong) {
    for (const auto& account : services.accounts) {
        UniqueLocal<void> sid;
        ASSERT_EQ(LookupSidByName(account.name.c_str(), sid), ERROR_SUCCESS);
        AccountRecord record;
        ASSERT_TRUE(record.SetSid(sid.get()));
        EXPECT_EQ(record.GetSidText(), account.sidText);

        UniqueLocal<char> name;
        UniqueLocal<char> domain;
        SID_NAME_USE use = SidTypeInvalid;
        ASSERT_EQ(LookupNameBySid(sid.get(), name, domain, nullptr), ERROR_SUCCESS);
        ASSERT_EQ(LookupNameBySid(sid.get(), name, domain, &use), ERROR_SUCCESS);
        EXPECT_EQ(name.get(), account.name);
        EXPECT_EQ(domain.get(), account.domain);
        EXPECT_EQ(use, account.use);
    }
}

TEST_F(AccountLookup, HandsOutNothingOnFailure) {
    const AccountRecord longNamed = AccountOf(nt::Sid{5, {80, 1}});
    const struct {
        DWORD accountError;
        int allocations;
        DWORD error;
    } cases[] = {
        {ERROR_NONE_MAPPED, 9, ERROR_NONE_MAPPED},
        {ERROR_INSUFFICIENT_BUFFER, 9, ERROR_INSUFFICIENT_BUFFER},
        {0, 0, ERROR_NOT_ENOUGH_MEMORY},
        {0, 1, ERROR_NOT_ENOUGH_MEMORY},
    };
    for (const auto& c : cases) {
        services.accountError = c.accountError;
        services.allocationsLeft = c.allocations;
        UniqueLocal<void> sid;
        EXPECT_EQ(LookupSidByName("Administrators", sid), c.error);
        EXPECT_EQ(sid, nullptr);

        services.allocationsLeft = c.allocations;
        UniqueLocal<char> name;
        UniqueLocal<char> domain;
        SID_NAME_USE use = SidTypeComputer;
        EXPECT_EQ(LookupNameBySid(longNamed.sid.get(), name, domain, &use), c.error);
        EXPECT_TRUE(name == nullptr && domain == nullptr);
        EXPECT_EQ(use, SidTypeComputer);
    }
}

}  // namespace
}  // namespace permora
