// The commands with accounts of a domain that answers late, in part or not at all.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/program.h"
#include "cli/terminal_text.h"
#include "tests/support/access_lists.h"
#include "tests/support/fake_domain.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

using test::FakeDomain;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr unsigned kAnna = 1103;
constexpr unsigned kEngineering = 1107;
constexpr const char* kOfflineLine =
    "permora-cli: The domain EXAMPLE does not answer: accounts are shown by their SIDs\n";

struct Result {
    int exitCode = 0;
    std::string output;
    std::string errors;
};

class DomainAccounts : public testing::Test {
  protected:
    DomainAccounts() {
        UseUtf8Terminal();
        domain.Add(kAnna, "anna");
        domain.Add(kEngineering, "Engineering of all the houses that there are", SidTypeGroup);
    }

    static Result Run(const std::vector<std::string>& arguments) {
        std::vector<const char*> texts = {"permora-cli"};
        for (const std::string& argument : arguments)
            texts.push_back(argument.c_str());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        constexpr std::array<MakeCommand*, 6> kCommands = {MakeShow,      MakeGrant,    MakeRevoke,
                                                           MakeEffective, MakeAccounts, MakeReport};
        Result result;
        result.exitCode = RunProgram(kCommands, static_cast<int>(texts.size()), texts.data());
        result.output = testing::internal::GetCapturedStdout();
        result.errors = testing::internal::GetCapturedStderr();
        return result;
    }

    // A file that anna may read and Engineering write.
    std::string MakeFile() {
        const std::string path = folder.MakeFile("file");
        const DWORD error =
            test::SetDescriptorText(path, "D:P(A;;FR;;;" + FakeDomain::SidText(kAnna) + ")(A;;0x116;;;" +
                                              FakeDomain::SidText(kEngineering) + ")");
        EXPECT_EQ(error, ERROR_SUCCESS);
        return path;
    }

    FakeDomain domain;
    const test::TemporaryFolder folder;
};

TEST_F(DomainAccounts, AreListedBehindTheMachines) {
    const Result all = Run({"accounts"});
    EXPECT_EQ(all.exitCode, 0);
    EXPECT_EQ(all.errors, "");
    EXPECT_THAT(all.output, StartsWith("Name"));
    EXPECT_LT(all.output.find("Everyone"), all.output.find("EXAMPLE\\anna"));
    EXPECT_EQ(Run({"accounts", "--search", "of all the houses"}).output,
              "Name  Type  SID\n"
              "EXAMPLE\\Engineering of all the houses that there are  Group  " +
                  FakeDomain::SidText(kEngineering) + '\n');
    const auto json =
        nlohmann::json::parse(Run({"accounts", "--json", "--search", "example\\"}).output)["results"];
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(json[0]["account"], "EXAMPLE\\anna");
    EXPECT_EQ(json[1]["type"], "Group");
}

TEST_F(DomainAccounts, ThatAreMissingMakeAFailureAndTheOthersAreListed) {
    domain.EndSearchesWith(kDomainOffline);
    domain.SetState(DomainAvailability::kOffline);
    for (const bool asJson : {false, true}) {
        const Result some = asJson ? Run({"accounts", "--json"}) : Run({"accounts"});
        EXPECT_EQ(some.exitCode, 1);
        EXPECT_THAT(some.output, HasSubstr("Everyone"));
        EXPECT_THAT(some.errors,
                    AllOf(HasSubstr("The accounts of EXAMPLE are missing: "), EndsWith(kOfflineLine)));
    }
}

TEST_F(DomainAccounts, AreShownByTheirSidsUntilTheirNamesCome) {
    const std::string file = MakeFile();
    EXPECT_THAT(Run({"show", file}).output, HasSubstr("EXAMPLE\\anna"));
    domain.HoldNames(true);
    domain.SetState(DomainAvailability::kOffline);
    const Result shown = Run({"show", file, file});
    EXPECT_EQ(shown.exitCode, 0);
    EXPECT_THAT(shown.output, AllOf(HasSubstr(FakeDomain::SidText(kAnna)), Not(HasSubstr("EXAMPLE"))));
    EXPECT_EQ(shown.errors, kOfflineLine) << "once";
}

TEST_F(DomainAccounts, AreNotTakenUnderANameThatIsNotResolved) {
    const std::string file = MakeFile();
    const std::string before = test::DaclText(file);
    const struct {
        DWORD error;
        const char* reason;
    } kCases[] = {
        {kAmbiguousName, "both have an account of that name. Write whose it is, such as EXAMPLE\\name\n"},
        {kDomainOffline, "the domain EXAMPLE does not answer, so the name cannot be looked up\n"},
        {kNameNotYet, "the domain EXAMPLE does not answer, so the name cannot be looked up\n"},
    };
    for (const auto& [error, reason] : kCases) {
        domain.EndLookupsWith(error);
        const Result refused = Run({"grant", file, "--account", "anna", "--rights", "Full control"});
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_THAT(refused.errors, AllOf(StartsWith("permora-cli: anna: "), EndsWith(reason)));
    }
    EXPECT_EQ(test::DaclText(file), before);
}

TEST_F(DomainAccounts, HaveEffectiveRightsThatTellWhatTheyRestOn) {
    const std::string file = MakeFile();
    const auto ask = [&](std::vector<std::string> more) {
        std::vector<std::string> arguments = {"effective", file, "--account", "EXAMPLE\\anna"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Run(arguments);
    };
    const struct {
        GroupsOrigin origin;
        const char* name;
        const char* remark;
    } kCases[] = {
        {GroupsOrigin::kLastLogon, "lastLogon", "as of the last logon; later changes"},
        {GroupsOrigin::kWithoutLogon, "withoutLogon", "as the domain lists them"},
        {GroupsOrigin::kDomain, "domain", "may be as of the last logon"},
        {GroupsOrigin::kExact, "exact", "those that a logon gives it now"},
    };
    for (const auto& [origin, name, remark] : kCases) {
        domain.SetGroups(ERROR_SUCCESS, {kAnna, kEngineering}, origin);
        const bool isExact = origin == GroupsOrigin::kExact;
        EXPECT_THAT(ask(isExact ? std::vector<std::string>{"--exact"} : std::vector<std::string>()).output,
                    AllOf(HasSubstr(remark), HasSubstr("Create files / Write data")));
        const auto json = nlohmann::json::parse(
            ask(isExact ? std::vector<std::string>{"--exact", "--json"} : std::vector<std::string>{"--json"})
                .output)["results"][0];
        EXPECT_EQ(json["groups"], name);
        EXPECT_EQ(json["mask"], "0x2019f");
    }
}

TEST_F(DomainAccounts, WhoseGroupsAreNotKnownHaveNoEffectiveRights) {
    const std::string file = MakeFile();
    const struct {
        DWORD error;
        const char* option;
        const char* reason;
    } kCases[] = {
        {ERROR_NONE_MAPPED, "--json", " are not known here\n"},
        {kDomainOffline, "--json", " are not known, since its domain does not answer\n"},
        {kDomainOffline, "--exact", " are not known, since its domain does not answer\n"},
        {ERROR_ACCESS_DENIED, "--exact", " can be asked for by root alone\n"},
        {ERROR_NOT_SUPPORTED, "--exact", "it cannot log on, or Samba's tools are not installed\n"},
    };
    for (const auto& [error, option, reason] : kCases) {
        domain.SetGroups(error, {}, GroupsOrigin::kExact);
        const Result failed = Run({"effective", file, "--account", "EXAMPLE\\anna", option});
        EXPECT_EQ(failed.exitCode, 1);
        EXPECT_THAT(failed.errors, AllOf(HasSubstr("the groups of EXAMPLE\\anna"), EndsWith(reason)));
        EXPECT_THAT(failed.output, Not(HasSubstr("Permission")));
    }
}

TEST_F(DomainAccounts, WhatNobodyAnswersForIsNotRemovedAsUnresolved) {
    const std::string gone = "S-1-22-1-4000000";
    const std::string path = folder.MakeFile("file");
    const std::string list = "(A;;FR;;;" + FakeDomain::SidText(kAnna) + ")";
    ASSERT_EQ(test::SetDescriptorText(path, "D:P" + list + "(A;;FX;;;" + gone + ")"), ERROR_SUCCESS);
    const std::string before = test::DaclText(path);
    const std::vector<std::string> revoke = {"revoke", path, "--tree", "--unresolved", "--no-history"};
    domain.HoldNames(true);
    const Result refused = Run(revoke);
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.errors, HasSubstr(FakeDomain::SidText(kAnna) + ": nothing was changed"));
    EXPECT_EQ(test::DaclText(path), before);
    domain.HoldNames(false);
    const Result done = Run(revoke);
    EXPECT_EQ(done.exitCode, 0);
    EXPECT_THAT(done.output, HasSubstr("no longer exists: " + gone));
    EXPECT_EQ(test::DaclText(path), "D:PAI" + list);
}

// What is missing is said; that nobody knows an account is an answer.
TEST_F(DomainAccounts, AreMissedInAReport) {
    const std::string file = MakeFile();
    const std::string gone = folder.MakeFile("gone");
    ASSERT_EQ(test::SetDescriptorText(gone, "D:P(A;;FR;;;S-1-5-21-4-4-4-1000)"), ERROR_SUCCESS);
    domain.SetGroups(ERROR_SUCCESS, {kAnna}, GroupsOrigin::kLastLogon);
    EXPECT_EQ(Run({"report", file, gone}).exitCode, 0);
    const Result members = Run({"report", file, "--members"});
    EXPECT_EQ(members.exitCode, 1);
    EXPECT_THAT(members.errors, HasSubstr("not all could be asked: who is in EXAMPLE\\Engineering"));
    domain.SetGroups(kDomainOffline, {}, GroupsOrigin::kLastLogon);
    const Result figures = Run({"report", file});
    EXPECT_EQ(figures.exitCode, 1);
    EXPECT_THAT(figures.output, HasSubstr("not known"));
    EXPECT_THAT(figures.errors, HasSubstr("could not be asked about: what 2 accounts, EXAMPLE\\anna"));
    domain.SetGroups(ERROR_SUCCESS, {kAnna}, GroupsOrigin::kLastLogon);
    domain.HoldNames(true);
    EXPECT_EQ(Run({"report", file, "--members"}).exitCode, 1) << "not even whether it is a group";
}

}  // namespace
}  // namespace permora
