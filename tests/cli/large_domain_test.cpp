// Listing the accounts of a domain with five thousand users, and what is said when the domain does not
// answer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "tests/cli/cli_program.h"
#include "tests/support/domain_fixture.h"

namespace permora::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class LargeDomain : public OnDomainMember {};

TEST_F(LargeDomain, IsListedWhole) {
    const CommandResult listed = RunCli({"accounts", "--json"});
    ASSERT_EQ(listed.exitCode, 0) << listed.output;
    std::set<std::string> persons;
    std::set<std::string> others;
    for (const auto& account : ResultsIn(listed.output)) {
        const std::string name = account["account"];
        if (account["domain"] != "EXAMPLE") continue;
        EXPECT_TRUE((name.starts_with("EXAMPLE\\person") ? persons : others).insert(name).second) << name;
    }
    EXPECT_EQ(persons.size(), 5000U);
    EXPECT_THAT(others, testing::IsSupersetOf({"EXAMPLE\\anna", "EXAMPLE\\dora", "EXAMPLE\\WS1$",
                                               "EXAMPLE\\Engineering", "EXAMPLE\\Payroll",
                                               "EXAMPLE\\Auditors", "EXAMPLE\\Domain Users"}));
    EXPECT_FALSE(others.contains("EXAMPLE\\emil")) << "who has been deleted";
}

TEST_F(LargeDomain, IsSearched) {
    const CommandResult found = RunCli({"accounts", "--search", "PERSON0123"});
    EXPECT_EQ(found.exitCode, 0);
    EXPECT_EQ(std::count(found.output.begin(), found.output.end(), '\n'), 11) << found.output;
    EXPECT_THAT(found.output, HasSubstr("EXAMPLE\\person01234  User  S-1-5-21-1111111111-"));
}

// A frozen winbindd lets each call wait for minutes.
TEST_F(LargeDomain, ThatDoesNotAnswerIsAFailureInTime) {
    Control({"freeze", "winbindd"});
    const auto start = std::chrono::steady_clock::now();
    const CommandResult listed = RunCli({"accounts"});
    const auto time = std::chrono::steady_clock::now() - start;
    Control({"thaw", "winbindd"});
    EXPECT_EQ(listed.exitCode, 1);
    EXPECT_THAT(listed.output, AllOf(HasSubstr("Everyone"), HasSubstr(" are missing: "),
                                     HasSubstr(" does not answer: accounts are shown by their SIDs"),
                                     Not(HasSubstr("EXAMPLE\\person"))));
    EXPECT_LT(time, std::chrono::seconds(15));
}

}  // namespace
}  // namespace permora::test
