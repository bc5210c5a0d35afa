// verify: the faults of lists, and mending them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>

#include <filesystem>

#include "tests/cli/cli_program.h"
#include "tests/support/access_lists.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/tree_state.h"

namespace permora::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

class VerifyTest : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = CannotHoldListsReason(folder.Path()); !reason.empty())
            GTEST_SKIP() << reason;
        for (const char* name : {"top/sub/file", "top/odd", "top/other/moved"})
            folder.MakeFile(name);
        ASSERT_EQ(SetDescriptorText(top, "O:BAG:BAD:P(A;OICI;FA;;;BA)"), 0U);
        ASSERT_EQ(SetDescriptorText(sub, "D:(A;OICI;FR;;;BG)"), 0U);
        ASSERT_EQ(SetDescriptorText(folder.Path("top/odd"), "D:(A;;FR;;;BG)(D;;FW;;;BU)(A;;FR;;;SY)"), 0U);
        std::filesystem::create_directory(folder.Path("top/other/deep"));
        ASSERT_EQ(SetDescriptorText(folder.Path("top/other"), "D:(A;OICI;FR;;;BU)"), 0U);
        std::filesystem::rename(folder.Path("top/other"), folder.Path("top/sub/moved"));
    }

    void Damage() const { ASSERT_EQ(setxattr(sub.c_str(), "security.NTACL", "damaged", 7, 0), 0); }

    const TemporaryFolder folder;
    const TemporaryFolder state{FolderPlace::kMemory};
    const ScopedVariable stateHome{"XDG_STATE_HOME", state.Path()};
    const std::string top = folder.MakeFolder("top");
    const std::string sub = folder.MakeFolder("top/sub");
    const std::string other = folder.MakeFolder("top/other");
};

TEST_F(VerifyTest, FaultsAreNamedMendedAndCanBeTakenBack) {
    const TreeState before = StateOfTree(top);
    const CommandResult found = RunCli({"verify", top});
    EXPECT_EQ(found.exitCode, 1);
    EXPECT_EQ(found.output, top + "/odd: has its entries in an unusual order\n" + sub +
                                "/moved: has other inherited entries than its folder hands down\n"
                                "verified: 7, with faults: 2\n");

    const CommandResult tried = RunCli({"verify", top, "--repair", "--dry-run"});
    EXPECT_EQ(tried.exitCode, 1);
    EXPECT_THAT(tried.output, AllOf(HasSubstr("odd before:\n"), HasSubstr("odd after:\n"),
                                    HasSubstr("with faults: 2, would repair: 2\n")));
    EXPECT_EQ(DifferenceOf(before, StateOfTree(top)), "");

    const CommandResult mended = RunCli({"verify", top, "--repair"});
    EXPECT_EQ(mended.exitCode, 0) << mended.output;
    EXPECT_THAT(mended.output, HasSubstr("with faults: 2, repaired: 2\n"));
    EXPECT_EQ(DaclText(folder.Path("top/odd")), "D:AI(D;;FW;;;BU)(A;;FR;;;BG)(A;;FR;;;SY)(A;ID;FA;;;BA)");
    EXPECT_THAT(DaclText(folder.Path("top/sub/moved/deep")),
                EndsWith("(A;OICIID;FR;;;BU)(A;OICIID;FR;;;BG)(A;OICIID;FA;;;BA)"));
    EXPECT_EQ(RunCli({"verify", top}).output, "verified: 7, with faults: 0\n");
    EXPECT_EQ(RunCli({"verify", top}).exitCode, 0);

    EXPECT_EQ(RunCli({"undo", "--yes"}).exitCode, 0);
    EXPECT_EQ(DifferenceOf(before, StateOfTree(top)), "");
}

// What a damaged descriptor meant is nobody's to guess.
TEST_F(VerifyTest, ADamagedDescriptorStaysUnlessItIsToBeReplaced) {
    Damage();
    const CommandResult kept = RunCli({"verify", top, "--repair"});
    EXPECT_EQ(kept.exitCode, 1);
    EXPECT_THAT(kept.output, AllOf(HasSubstr(sub + ": has a damaged descriptor\n"),
                                   HasSubstr(sub + ": not repaired: its descriptor is damaged")));
    EXPECT_EQ(SddlOf(sub).find("D:"), std::string::npos);

    EXPECT_THAT(RunCli({"verify", top, "--repair", "--replace-damaged", "--dry-run"}).output,
                HasSubstr(sub + ": would get what its folder hands down\n"));
    const CommandResult replaced = RunCli({"verify", top, "--repair", "--replace-damaged"});
    EXPECT_EQ(replaced.exitCode, 0) << replaced.output;
    EXPECT_EQ(DaclText(sub), "D:AI(A;OICIID;FA;;;BA)");
    EXPECT_THAT(DaclText(folder.Path("top/sub/file")), EndsWith("(A;;FR;;;WD)(A;ID;FA;;;BA)"));
    EXPECT_EQ(RunCli({"verify", top}).exitCode, 0);
}

// Damaged bytes come back to who insists, where what took their place is still there.
TEST_F(VerifyTest, AReplacedDescriptorComesBackByForceAlone) {
    Damage();
    const TreeState before = StateOfTree(top);
    ASSERT_EQ(RunCli({"verify", top, "--repair", "--replace-damaged"}).exitCode, 0);
    EXPECT_THAT(RunCli({"undo", "--dry-run"}).output, HasSubstr("left alone: 1\n"));
    const CommandResult refused = RunCli({"undo", "--yes"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_THAT(refused.output, AllOf(HasSubstr("\\sub: left alone: a damaged descriptor was there before"),
                                      HasSubstr("--force brings damaged descriptors back too")));
    EXPECT_EQ(DaclText(sub), "D:AI(A;OICIID;FA;;;BA)");

    EXPECT_EQ(RunCli({"undo", "1", "--yes", "--force"}).exitCode, 0);
    EXPECT_EQ(DifferenceOf(before, StateOfTree(top)), "");
    // And the other way round.
    EXPECT_EQ(RunCli({"undo", "3", "--yes"}).exitCode, 1);
    EXPECT_EQ(RunCli({"undo", "3", "--yes", "--force"}).exitCode, 0);
    EXPECT_EQ(DaclText(sub), "D:AI(A;OICIID;FA;;;BA)");

    ASSERT_EQ(SetDescriptorText(sub, "D:P(A;;FA;;;SY)"), 0U);
    const CommandResult changed = RunCli({"undo", "1", "--yes", "--force"});
    EXPECT_EQ(changed.exitCode, 1);
    EXPECT_THAT(changed.output, HasSubstr("\\sub: left alone: it was changed since"));
    EXPECT_EQ(DaclText(sub), "D:PAI(A;;FA;;;SY)");
}

TEST_F(VerifyTest, WithoutAFolderThatHandsDownTheModeCountsAgain) {
    const std::string lone = folder.MakeFile("lone");
    ASSERT_EQ(setxattr(lone.c_str(), "security.NTACL", "damaged", 7, 0), 0);
    EXPECT_EQ(RunCli({"verify", lone, "--repair", "--replace-damaged"}).exitCode, 0);
    EXPECT_EQ(getxattr(lone.c_str(), "security.NTACL", nullptr, 0), -1);
    for (const std::vector<std::string>& wrong : std::vector<std::vector<std::string>>{
             {"verify"}, {"verify", top, "--dry-run"}, {"verify", top, "--replace-damaged"}})
        EXPECT_EQ(RunCli(wrong).exitCode, 2);
}

}  // namespace
}  // namespace permora::test
