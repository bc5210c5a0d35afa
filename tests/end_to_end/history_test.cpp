// The history and undo of the window on real files, worked as a user works them (history_test.sh).
#include <gtest/gtest.h>

#include <string>

#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/project_folders.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

class HistoryTest : public ::testing::TestWithParam<const char*> {};

TEST_P(HistoryTest, TakesChangesBack) {
    const TemporaryFolder folder;
    const std::string shown = folder.MakeFolder("shown");
    if (SetDescriptorText(folder.MakeFolder("shown/Alpha"), "D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;WD)") ==
        ERROR_NOT_SUPPORTED)
        GTEST_SKIP() << "the temporary folder holds no access lists";
    folder.MakeFile("shown/Alpha/inner");
    ASSERT_EQ(SetDescriptorText(folder.MakeFile("shown/letter"), "D:P(A;;FA;;;BA)(A;;FR;;;BU)"), 0U);
    const std::string many = folder.MakeFolder("many");
    ASSERT_EQ(SetDescriptorText(many, "D:P(A;OICI;FA;;;BA)"), 0U);
    for (int i = 0; i < 20'000; ++i)
        folder.MakeFile("many/" + std::to_string(i));
    const CommandResult run =
        RunCommand({"bash", InProject("tests/end_to_end/history_test.sh"), ProgramFolder(),
                    PictureFolder(std::string("history-") + GetParam()), GetParam(), shown, many});
    EXPECT_EQ(run.exitCode, 0) << run.output;
}

INSTANTIATE_TEST_SUITE_P(Looks, HistoryTest, ::testing::Values("light", "dark"),
                         [](const auto& look) { return look.param; });

}  // namespace
}  // namespace permora::test
