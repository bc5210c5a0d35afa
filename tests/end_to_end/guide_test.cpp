// The tasks of the guide by keyboard alone and by mouse alone (guide_test.sh), which come to the same.
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>

#include <filesystem>
#include <set>
#include <string>

#include "tests/support/access_lists.h"
#include "tests/support/command.h"
#include "tests/support/project_folders.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

class GuideTest : public ::testing::TestWithParam<const char*> {};

// Each object below the folder with its owner on this machine and its list.
std::string ObjectsBelow(const std::string& root) {
    std::set<std::string> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root))
        paths.insert(entry.path());
    std::string text;
    for (const std::string& path : paths) {
        struct stat status {};
        const passwd* owner = lstat(path.c_str(), &status) == 0 ? getpwuid(status.st_uid) : nullptr;
        text += path.substr(root.size() + 1) + ": " + (owner != nullptr ? owner->pw_name : "?") + ' ' +
                DaclText(path) + '\n';
    }
    return text;
}

TEST_P(GuideTest, EveryTaskByOneHand) {
    const TemporaryFolder folder;
    const std::string shown = folder.MakeFolder("shown");
    const std::string alpha = folder.MakeFolder("shown/Alpha");
    if (SetDescriptorText(shown, "D:P(A;OICI;FA;;;BA)") == ERROR_NOT_SUPPORTED)
        GTEST_SKIP() << "the temporary folder holds no access lists";
    ASSERT_EQ(SetDescriptorText(alpha, "D:P(A;OICI;FA;;;BA)(A;OICI;FR;;;BG)"), 0U);
    for (const char* file : {"shown/Alpha/inner", "shown/draft", "shown/letter"})
        ASSERT_EQ(SetDescriptorText(folder.MakeFile(file), "D:"), 0U);
    const CommandResult run =
        RunCommand({"bash", InProject("tests/end_to_end/guide_test.sh"), ProgramFolder(),
                    PictureFolder(std::string("guide-") + GetParam()), GetParam(), shown});
    ASSERT_EQ(run.exitCode, 0) << run.output;
    EXPECT_EQ(ObjectsBelow(shown),
              "Alpha: root D:PAI(A;OICI;FA;;;BA)(A;OICI;FR;;;BG)\n"
              "Alpha/New: root D:AI(A;OICIID;FA;;;BA)(A;OICIID;FR;;;BG)\n"
              "Alpha/copy: root D:AI(A;ID;FA;;;BA)(A;ID;FR;;;BG)\n"
              "letter: daemon D:AI(A;ID;FA;;;BA)\n");
}

INSTANTIATE_TEST_SUITE_P(Hands, GuideTest, ::testing::Values("keyboard", "mouse"),
                         [](const auto& hands) { return hands.param; });

}  // namespace
}  // namespace permora::test
