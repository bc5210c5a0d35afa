// Reports of real trees, in every form.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ReportTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
            GTEST_SKIP() << reason;
        // What is in it has what it hands down, but for Payroll.
        for (const std::string& each : {top, plain, payroll})
            ASSERT_EQ(SetDescriptorText(each, "O:BAG:BAD:AI"), 0U);
        ASSERT_EQ(SetDescriptorText(top, "O:BAG:BAD:PAI(A;OICI;FA;;;BA)(A;OICI;FR;;;BU)"), 0U);
        ASSERT_EQ(SetDescriptorText(payroll, "O:BAG:BAD:PAI(A;OICI;FA;;;BA)"), 0U);
        ASSERT_EQ(SetDescriptorText(secret, "O:BAG:BAD:AI(A;;FA;;;WD)"), 0U);
    }

    std::string Paths(std::vector<std::string> options) const {
        options.insert(options.begin(), {"report", top, "--json"});
        const CommandResult result = RunCli(options);
        const auto json = nlohmann::json::parse(result.output, nullptr, false);
        if (json.is_discarded()) return result.output;
        std::string text = json["extent"].get<std::string>() + ':';
        for (const auto& object : json["objects"])
            text += ' ' + object["path"].get<std::string>().substr(top.size());
        return text;
    }

    const TemporaryFolder folder;
    const std::string top = folder.MakeFolder("top");
    const std::string plain = folder.MakeFolder("top/plain");
    const std::string payroll = folder.MakeFolder("top/Payroll");
    const std::string secret = folder.MakeFile("top/Payroll/secret");
};

TEST_F(ReportTest, OnlyWhereSomethingChanges) {
    const CommandResult result = RunCli({"report", top});
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_THAT(result.output, StartsWith("Objects: 4, folders: 3, distinct lists: 4, not readable: 0\n"));
    EXPECT_THAT(result.output, HasSubstr("open-to-all  1  "));
    EXPECT_THAT(
        result.output,
        HasSubstr(payroll + "\n  Remarks: own-entries, protected\n  Owner: BUILTIN\\Administrators\n"));
    EXPECT_THAT(result.output, HasSubstr("Hands down: 1 entry to folders, 1 entry to files"));
    EXPECT_THAT(result.output, Not(HasSubstr("plain")));

    EXPECT_EQ(Paths({}), "whole:  /Payroll /Payroll/secret");
    EXPECT_EQ(Paths({"--depth", "1"}), "part:  /Payroll");
    EXPECT_EQ(Paths({"--only", "open-to-all,damaged"}), "part: /Payroll/secret");
    EXPECT_EQ(Paths({"--account", "S-1-5-32-545"}), "part:  /Payroll/secret");
    for (const std::vector<std::string>& wrong : {std::vector<std::string>{"--only", "open"},
                                                  {"--depth", "x"},
                                                  {"--csv", "--json"},
                                                  {"--compare"},
                                                  {"--csv", "--html", "x"}}) {
        std::vector<std::string> arguments = {"report", top};
        arguments.insert(arguments.end(), wrong.begin(), wrong.end());
        EXPECT_EQ(RunCli(arguments).exitCode, 2) << wrong.front();
    }
}

TEST_F(ReportTest, WhatCannotBeReadIsNamedAndListed) {
    ASSERT_EQ(RunCommand({"setfattr", "-n", "security.NTACL", "-v", "damaged", secret}).exitCode, 0);
    const CommandResult result = RunCli({"report", top, folder.Path("none")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.output, HasSubstr(secret + ": not read: "));
    EXPECT_THAT(result.output, HasSubstr(secret + "\n  Remarks: damaged\n  Not read: "));
    EXPECT_THAT(result.output, HasSubstr("none: "));
}

// A report that could not be written whole is none.
TEST_F(ReportTest, OutputThatCannotBeWrittenIsAnError) {
    for (const char* form : {"", " --json", " --csv", " --html -"}) {
        const CommandResult result =
            RunCommand({"sh", "-c", CliPath() + " report '" + top + "'" + form + " > /dev/full"});
        EXPECT_EQ(result.exitCode, 1) << form;
        EXPECT_NE(result.output, "") << form;
    }
    const std::string page = folder.Path("report.html");
    std::ofstream(page) << "older";
    EXPECT_EQ(RunCli({"report", folder.Path("none"), "--html", page}).exitCode, 1);
    EXPECT_EQ(ReadWholeFile(page), "older");
    EXPECT_EQ(RunCli({"report", top, "--html", page}).exitCode, 0);
    EXPECT_THAT(ReadWholeFile(page), StartsWith("<!DOCTYPE html>"));
    EXPECT_EQ(RunCli({"report", top, "--html", plain}).exitCode, 2);
}

TEST_F(ReportTest, TwoReportsAreCompared) {
    const std::string older = folder.Path("older.json");
    const std::string newer = folder.Path("newer.json");
    const auto save = [&](const std::string& name) {
        std::ofstream(name) << RunCli({"report", top, "--json"}).output;
    };
    save(older);
    CommandResult result = RunCli({"report", "--compare", older, older});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "compared: 3 objects, gained: 0, lost: 0, other owners: 0\n");

    ASSERT_EQ(SetDescriptorText(plain, "O:BAG:BAD:PAI(A;OICI;FA;;;BA)(A;OICI;FA;;;BG)"), 0U);
    save(newer);
    result = RunCli({"report", "--compare", older, newer});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.output, HasSubstr(plain + "\n"));
    EXPECT_THAT(
        result.output,
        HasSubstr("  Gained  BUILTIN\\Guests  None    Full control  This folder, subfolders and files\n"));
    EXPECT_THAT(
        result.output,
        HasSubstr("  Lost    BUILTIN\\Users   Read    None          This folder, subfolders and files\n"));
    const auto json = ResultsIn(RunCli({"report", "--compare", older, newer, "--json"}).output);
    ASSERT_EQ(json.size(), 1U);
    EXPECT_EQ(json[0]["path"], plain);

    std::ofstream(newer) << RunCli({"report", top, "--json", "--depth", "0"}).output;
    EXPECT_EQ(RunCli({"report", "--compare", older, newer}).exitCode, 2);
    EXPECT_EQ(RunCli({"report", "--compare", older, secret}).exitCode, 2);
    EXPECT_EQ(RunCli({"report", "--compare", older}).exitCode, 2);
}

TEST_F(ReportTest, MembersArePeople) {
    const CommandResult result = RunCli({"report", top, "--members"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.output, HasSubstr("Members:\n  BUILTIN\\Administrators\n"));
    EXPECT_THAT(result.output, HasSubstr("\\root\n"));
    EXPECT_THAT(result.output, HasSubstr("  Everyone\n    whoever is Everyone\n"));
}

}  // namespace
}  // namespace permora::test
