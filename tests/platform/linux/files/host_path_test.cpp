#include "platform/host_path.h"

#include <unistd.h>

#include "tests/platform/linux/files/files_fixture.h"

namespace permora::host {
namespace {

using HostPath = OnDriveT;

TEST_F(HostPath, ArgumentsOfBothKindsBecomeAbsolutePathsOfTheSameObjects) {
    ASSERT_EQ(chdir(folder.MakeFolder("sub").c_str()), 0);
    const std::pair<std::string, std::string> kCases[] = {
        {"C:\\x\\..", "C:\\x\\.."},  // already a path: as it is
        {"d:x", "d:x"},
        {"\\x", "\\x"},
        {"", ""},
        {"/", "C:\\"},
        {"//usr/./lib/../bin", "C:\\usr\\bin"},
        {"/../x", "C:\\x"},
        {"/usr/bin/", "C:\\usr\\bin\\"},  // the host's way to ask for what a link leads to
        {"/usr/bin/.", "C:\\usr\\bin\\"},
        {"x", "T:\\sub\\x"},
        {".", "T:\\sub"},
        {"..", "T:\\"},
        {"./C:\\x", "T:\\sub\\C\uF03A\uF05Cx"},
        {"a\\b/c. ", "T:\\sub\\a\uF05Cb\\c.\uF020"},
        {folder.Path(), "T:\\"},
        {folder.Path("a/b"), "T:\\a\\b"},
    };
    for (const auto& [argument, path] : kCases)
        EXPECT_EQ(PathFromArgument(argument.c_str()), path) << argument;
    const std::pair<std::string, std::optional<std::string>> kBelow[] = {
        {"x", "x"},
        {"./a//b\\c/../d/", "a\\d"},
        {"x/..", ""},
        {".", ""},
        {"./C:\\x", "C\uF03A\uF05Cx"},
        {"..", std::nullopt},
        {"a/../../b", std::nullopt},
        {"/x", std::nullopt},
        {"\\x", std::nullopt},
        {"d:x", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [argument, path] : kBelow)
        EXPECT_EQ(PathBelowCurrent(argument.c_str()), path) << argument;
    const struct {
        const char* argument;
        const char* below;
        const char* path;
    } kForOthers[] = {
        {"x/", "", "x/"},
        {"x/", "a\uF05Cb\\c.\uF020", "x/a\\b/c. "},
        {"/x", "\uF0FF", "/x/\xFF"},
        {"C:\\", "a\\b\uF020", "C:\\a\\b\uF020"},
    };
    for (const auto& [argument, rest, path] : kForOthers)
        EXPECT_EQ(PathBelowArgument(argument, rest), path) << argument;
    const std::pair<const char*, std::string> kOnHost[] = {{"T:\\", folder.Path()},
                                                           {"t:\\a\\b\uF05C", folder.Path("a/b\\")},
                                                           {"C:\\", "/"},
                                                           {"Q:\\a", ""},
                                                           {"T:\\a\uF02F", ""}};
    for (const auto& [path, onHost] : kOnHost)
        EXPECT_EQ(HostPathFromPath(path), onHost) << path;
    // A neighbour whose name only begins like the drive's root.
    EXPECT_NE(PathFromArgument((folder.Path() + "x").c_str()).front(), 'T');
}

TEST_F(HostPath, NothingIsRelativeToADeletedFolder) {
    ASSERT_EQ(chdir(folder.MakeFolder("gone").c_str()), 0);
    ASSERT_EQ(rmdir(folder.Path("gone").c_str()), 0);
    EXPECT_EQ(PathFromArgument("x"), "");
    EXPECT_EQ(PathFromArgument("/x"), "C:\\x");
}

}  // namespace
}  // namespace permora::host
