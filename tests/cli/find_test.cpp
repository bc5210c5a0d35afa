// find: the objects in whose lists an account has an entry.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::HasSubstr;

class FindTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
            GTEST_SKIP() << reason;
        ASSERT_EQ(SetDescriptorText(top, "O:BAG:BAD:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BG)"), 0U);
        ASSERT_EQ(SetDescriptorText(sub, "O:BAD:(D;OICI;FW;;;BG)"), 0U);
        ASSERT_EQ(SetDescriptorText(file, "O:S-1-5-21-9-9-9-1001D:(A;;GA;;;S-1-5-21-9-9-9-1001)(A;;FA;;;BG)"),
                  0U);
    }

    // The paths below the top, in the order in which they were printed.
    std::string Find(std::vector<std::string> options) const {
        options.insert(options.begin(), {"find", top});
        const CommandResult result = RunCli(options);
        EXPECT_EQ(result.exitCode, 0) << result.output;
        std::string text = result.output;
        for (std::size_t at = 0; (at = text.find(top, at)) != text.npos;)
            text.erase(at, top.size());
        std::ranges::replace(text, '\n', ' ');
        return text;
    }

    const TemporaryFolder folder;
    const std::string top = folder.MakeFolder("top");
    const std::string sub = folder.MakeFolder("top/sub");
    const std::string file = folder.MakeFile("top/sub/file");
};

TEST_F(FindTest, FindsTheEntriesThatFit) {
    const std::string guests = "BUILTIN\\Guests";
    const struct {
        std::vector<std::string> options;
        const char* paths;
    } rows[] = {
        {{"--account", guests}, " /sub /sub/file "},
        {{"--account", "S-1-5-32-544"}, " /sub /sub/file "},
        {{"--account", "Everyone"}, ""},
        {{"--account", guests, "--deny"}, "/sub /sub/file "},
        {{"--account", guests, "--deny", "--explicit"}, "/sub "},
        {{"--account", guests, "--explicit"}, " /sub /sub/file "},
        {{"--account", guests, "--inherited", "--allow"}, "/sub /sub/file "},
        {{"--account", guests, "--rights", "Delete"}, "/sub/file "},
        {{"--account", guests, "--rights", "Read permissions,Delete", "--inherited"}, ""},
        {{"--account", "S-1-5-21-9-9-9-1001", "--rights", "Full control"}, "/sub/file "},
        {{"--unresolved"}, "/sub/file "},
        {{"--unresolved", "--owner"}, "/sub/file "},
        {{"--account", "S-1-5-32-544", "--owner"}, " /sub "},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Find(row.options), row.paths) << testing::PrintToString(row.options);
}

// Other programs are given the names as they are, programs that read JSON the entries.
TEST_F(FindTest, ProgramsGetPathsThatTheyCanUse) {
    const std::string odd = folder.MakeFile("top/a\nb:\xFF");
    ASSERT_EQ(SetDescriptorText(odd, "D:(A;;FR;;;BU)"), 0U);
    const std::vector<std::string> search = {"find", top, "--account", "BUILTIN\\Users"};
    std::vector<std::string> nul = search;
    nul.emplace_back("-0");
    EXPECT_EQ(RunCli(nul).output, odd + '\0');
    std::vector<std::string> json = search;
    json.emplace_back("--json");
    const auto found = ResultsIn(RunCli(json).output);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0]["kind"], "file");
    EXPECT_EQ(found[0]["entries"].size(), 1U);
    EXPECT_EQ(found[0]["entries"][0]["sid"], "S-1-5-32-545");
    EXPECT_EQ(RunCli({"find", top, "--account", "Everyone", "--json"}).output,
              "{\n  \"version\": 1,\n  \"command\": \"find\",\n  \"results\": []\n}\n");
}

TEST_F(FindTest, WhatWasNotSearchedIsNamed) {
    ASSERT_EQ(setxattr(sub.c_str(), "security.NTACL", "damaged", 7, 0), 0);
    const CommandResult result = RunCli({"find", top, "--account", "BUILTIN\\Guests"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.output, HasSubstr("top/sub: not searched: "));
    EXPECT_THAT(result.output, HasSubstr(file + "\n"));
    EXPECT_EQ(RunCli({"find", folder.Path("none"), "--unresolved"}).exitCode, 1);
    for (const std::vector<std::string>& wrong :
         std::vector<std::vector<std::string>>{{"find", top},
                                               {"find", top, "--unresolved", "--account", "Everyone"},
                                               {"find", top, "--account", "nobody-here"},
                                               {"find", top, "--unresolved", "--owner", "--deny"},
                                               {"find", top, "--unresolved", "--allow", "--deny"},
                                               {"find", top, "--unresolved", "--json", "-0"}})
        EXPECT_EQ(RunCli(wrong).exitCode, 2) << testing::PrintToString(wrong);
    EXPECT_EQ(RunCommand({"sh", "-c", CliPath() + " find " + top + " --account BUILTIN\\\\Guests >/dev/full"})
                  .exitCode,
              1);
}

}  // namespace
}  // namespace permora::test
