// A report in the window, worked as a user works it (report_test.sh).
#include <gtest/gtest.h>

#include <string>

#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/project_folders.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

class ReportTest : public ::testing::TestWithParam<const char*> {};

TEST_P(ReportTest, IsLookedThroughAndSaved) {
    const TemporaryFolder folder;
    const std::string shown = folder.MakeFolder("shown");
    const std::pair<const char*, const char*> folders[] = {
        {"shown", "O:BAG:BAD:PAI(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)"},
        {"shown/Payroll", "O:BAG:BAD:PAI(A;OICI;FA;;;BA)(A;OICI;0x1301bf;;;S-1-5-21-9-9-9-1001)"},
        {"shown/Payroll/2026", "O:BAG:BAD:AI(D;OICI;0x100116;;;BG)"},
        {"shown/Projects", "O:BAG:BAD:AI"},
        {"shown/Projects/Public", "O:SYG:BAD:AI(A;OICI;0x1301bf;;;WD)"},
    };
    for (const auto& [name, list] : folders) {
        if (name != folders[0].first) folder.MakeFolder(name);
        const DWORD error = SetDescriptorText(folder.Path(name), list);
        if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
        ASSERT_EQ(error, 0U);
        for (const char* file : {"/a", "/b"})
            ASSERT_EQ(SetDescriptorText(folder.MakeFile(std::string(name) + file), "O:BAG:BAD:AI"), 0U);
    }
    ASSERT_EQ(SetDescriptorText(folder.Path("shown/Projects/a"), "O:BAG:BAD:AI(A;;FR;;;BG)"), 0U);
    const CommandResult run = RunCommand({"bash", InProject("tests/end_to_end/report_test.sh"),
                                          ProgramFolder(), PictureFolder(std::string("report-") + GetParam()),
                                          GetParam(), shown, folder.MakeFolder("saved")});
    EXPECT_EQ(run.exitCode, 0) << run.output;
}

INSTANTIATE_TEST_SUITE_P(Looks, ReportTest, ::testing::Values("light", "dark"),
                         [](const auto& look) { return look.param; });

}  // namespace
}  // namespace permora::test
