// The security wizard's assignment of rights, by the command assign.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::HasSubstr;

// A folder that inherits full control for administrators, and a file with a protected list of its own.
class AssignTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
            GTEST_SKIP() << reason;
        ASSERT_EQ(SetDescriptorText(top, "D:P(A;OICI;FA;;;BA)"), 0U);
        ASSERT_EQ(SetDescriptorText(first, "D:(A;OICI;FR;;;BU)"), 0U);
        ASSERT_EQ(SetDescriptorText(second, kSecond), 0U);
    }
    // The output of assign for `paths`, and the lists of both objects afterwards.
    std::string Assign(const std::vector<std::string>& paths, const std::vector<std::string>& options,
                       int exitCode = 0) const {
        std::vector<std::string> arguments = {"assign"};
        arguments.insert(arguments.end(), paths.begin(), paths.end());
        arguments.insert(arguments.end(), options.begin(), options.end());
        const CommandResult result = RunCli(arguments);
        EXPECT_EQ(result.exitCode, exitCode) << result.output;
        return result.output;
    }
    static std::string ListOf(const std::string& path) {
        const std::string text = SddlOf(path);
        return text.substr(text.find("D:"));
    }

    static constexpr const char* kSecond = "D:PAI(A;;FA;;;WD)";
    const TemporaryFolder folder;
    const std::string top = folder.MakeFolder("top");
    const std::string first = folder.MakeFolder("top/first");
    const std::string second = folder.MakeFile("top/second");
};

TEST_F(AssignTest, EveryObjectGetsTheFirstOnesEntriesWithTheChange) {
    const std::string preview =
        Assign({first, second}, {"--account", "Guests", "--combination", "read", "--dry-run"});
    EXPECT_THAT(preview, HasSubstr(second + " after:\n  Inherits: no\n"));
    EXPECT_THAT(preview, HasSubstr("Allow  BUILTIN\\Guests          Special       Not inherited"));
    EXPECT_EQ(ListOf(second), std::string(kSecond) + "\n") << "a preview writes nothing";

    Assign({first, second}, {"--account", "Guests", "--combination", "read"});
    EXPECT_EQ(ListOf(first), "D:AI(A;OICI;FR;;;BU)(A;OICI;FR;;;BG)(A;OICIID;FA;;;BA)\n");
    EXPECT_EQ(ListOf(second), "D:PAI(A;;FR;;;BU)(A;;FR;;;BG)\n");

    Assign({first, second}, {"--account", "BUILTIN\\Users", "--rights", "Full control"});
    Assign({first}, {"--account", "Administrators", "--rights", "0xf01fe"});
    EXPECT_EQ(ListOf(first), "D:AI(D;OICI;CC;;;BA)(A;OICI;FA;;;BU)(A;OICI;FR;;;BG)(A;OICIID;FA;;;BA)\n");
    EXPECT_EQ(ListOf(second), "D:PAI(A;;FA;;;BU)(A;;FR;;;BG)\n");
}

// Beside a right from above full control as a whole adds nothing.
TEST_F(AssignTest, RightsThatWouldBeMissingAreNamed) {
    ASSERT_EQ(SetDescriptorText(top, "D:P(A;OICI;0xd01ff;;;BA)"), 0U);
    const std::string before = ListOf(first);
    const std::vector<std::string> choices[] = {{"--combination", "Allow all"},
                                                {"--rights", "1,Full control"}};
    for (std::vector<std::string> whole : choices) {
        whole.insert(whole.end(), {"--account", "Administrators"});
        EXPECT_THAT(Assign({first, second}, whole, 1), HasSubstr("would not have: Read permissions ("));
        EXPECT_EQ(ListOf(first), before);
    }
    Assign({first}, {"--account", "Administrators", "--rights", "0xf01ff"});
    EXPECT_EQ(ListOf(first),
              "D:AI(A;OICI;FR;;;BU)(A;OICI;0x120000;;;BA)(A;OICIID;CCDCLCSWRPWPDTLOCRSDWDWO;;;BA)\n");
}

TEST_F(AssignTest, WhatTheAccountHasThenIsSaid) {
    const std::vector<std::string> denyAll = {"--account", "BUILTIN\\Users", "--combination", "Deny all"};
    const std::string answer = Assign({first}, denyAll);
    EXPECT_THAT(answer, HasSubstr(first + ": changed\n  BUILTIN\\Users has no rights\nNot considered: "));
    ASSERT_EQ(SetDescriptorText(top, "D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;WD)"), 0U);
    std::vector<std::string> preview = denyAll;
    preview.emplace_back("--dry-run");
    for (const std::vector<std::string>& options : {preview, denyAll}) {
        EXPECT_THAT(
            Assign({first}, options),
            HasSubstr("  BUILTIN\\Users has:\n    through Everyone (Inherited): List folder / Read data, "
                      "Read attributes, Read extended attributes, Read permissions\n"));
    }
    EXPECT_THAT(Assign({first}, {"--account", "S-1-5-21-7-8-9-1001", "--combination", "Read"}),
                HasSubstr("the groups of S-1-5-21-7-8-9-1001 are not known here"));
}

TEST_F(AssignTest, NothingIsLostUnasked) {
    const std::vector<std::string> readers = {"--account", "Everyone", "--combination", "Read"};
    const char* const foreign = "D:PAI(OA;;CC;bf967aba-0de6-11d0-a285-00aa003049e2;;BA)(A;;FA;;;BA)";
    ASSERT_EQ(SetDescriptorText(second, foreign), 0U);
    EXPECT_THAT(Assign({first, second}, readers, 1), HasSubstr("--drop-other-entries"));
    EXPECT_EQ(ListOf(second), std::string(foreign) + "\n");
    EXPECT_THAT(ListOf(first), HasSubstr("(A;OICI;FR;;;WD)"));

    const std::string before = ListOf(first);
    EXPECT_THAT(Assign({second, first}, {"--account", "Guests", "--rights", "1"}, 1),
                HasSubstr("--drop-other-entries"));
    EXPECT_EQ(ListOf(first), before) << "what the first one refuses no other gets";
    for (const std::string& begin : {folder.Path("gone"), std::string("\\\\no\\drive")}) {
        EXPECT_THAT(Assign({begin, first, folder.Path("lost")}, {"--account", "Guests", "--rights", "1"}, 1),
                    HasSubstr(begin + ": nothing was changed"));
    }
    ASSERT_EQ(SetDescriptorText(second, "D:NO_ACCESS_CONTROL"), 0U);
    EXPECT_THAT(Assign({second, first}, {"--account", "Guests", "--rights", "1", "--replace-null-list"}, 1),
                HasSubstr("Object's access control list is null (All access is allowed)"));
    EXPECT_EQ(ListOf(first), before);

    const std::vector<std::string> wrongChoices[] = {{"--combination", "Everything"},
                                                     {"--rights", "0x10000000"},
                                                     {"--rights", "1", "--combination", "Read"},
                                                     {}};
    for (std::vector<std::string> wrong : wrongChoices) {
        wrong.insert(wrong.end(), {"--account", "Guests"});
        Assign({first}, wrong, 2);
    }
    EXPECT_EQ(ListOf(first), before);
}

}  // namespace
}  // namespace permora::test
