// Searches of the window on real files, worked as a user works them (find_test.sh).
#include <gtest/gtest.h>

#include <string>

#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/project_folders.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

class FindTest : public ::testing::TestWithParam<const char*> {};

TEST_P(FindTest, ShowsWhatFitsAndWorksOnIt) {
    const TemporaryFolder folder;
    const std::string shown = folder.MakeFolder("shown");
    folder.MakeFile("shown/other");
    if (SetDescriptorText(folder.MakeFolder("shown/Alpha"), "D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BG)") ==
        ERROR_NOT_SUPPORTED)
        GTEST_SKIP() << "the temporary folder holds no access lists";
    ASSERT_EQ(SetDescriptorText(folder.MakeFile("shown/Alpha/inner"), "D:"), 0U);
    const CommandResult run =
        RunCommand({"bash", InProject("tests/end_to_end/find_test.sh"), ProgramFolder(),
                    PictureFolder(std::string("find-") + GetParam()), GetParam(), shown});
    EXPECT_EQ(run.exitCode, 0) << run.output;
}

INSTANTIATE_TEST_SUITE_P(Looks, FindTest, ::testing::Values("light", "dark"),
                         [](const auto& look) { return look.param; });

}  // namespace
}  // namespace permora::test
