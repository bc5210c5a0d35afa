// Objects found far down and on the way back up.
#include "platform/below_finder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/api/errors.h"
#include "tests/support/access_lists.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

std::size_t OpenDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

// Goes down through as many levels as paths of the host allow, with a file beside each folder that is come to
// on the way back.
TEST(BelowFinder, FindsWhatStandsThereInTheOrderOfATree) {
    constexpr std::size_t kLevels = 1000;
    const TemporaryFolder folder;
    std::string hostPath = folder.MakeFolder("top");
    const HeldObject top = Held(hostPath);
    for (std::size_t i = 0; i < kLevels; ++i) {
        std::ofstream(hostPath + "/z");
        hostPath += "/f";
        ASSERT_EQ(mkdir(hostPath.c_str(), 0777), 0);
    }
    BelowFinder finder(top);
    const std::size_t before = OpenDescriptors();
    const auto isFound = [&](const std::string& path) {
        HeldObject expected;
        HeldObject found;
        return top.HoldBelow(path, expected) == ERROR_SUCCESS && finder.Hold(path, found) == ERROR_SUCCESS &&
               found.FileNumber() == expected.FileNumber();
    };
    std::string path = "f";
    for (std::size_t i = 1; i < kLevels; ++i, path += "\\f")
        ASSERT_TRUE(isFound(path)) << i;
    EXPECT_LT(OpenDescriptors() - before, 150U);
    for (std::size_t i = kLevels; i > 1; --i) {
        path.resize(path.size() - 1);
        ASSERT_TRUE(isFound(path + 'z')) << i;
        path.resize(path.size() - 1);
    }
    EXPECT_TRUE(isFound("z"));
    EXPECT_TRUE(isFound("f\\f\\z"));
    HeldObject none;
    for (const char* missing : {"f\\ff\\z", "fz"})
        EXPECT_EQ(finder.Hold(missing, none), top.HoldBelow(missing, none)) << missing;
}

}  // namespace
}  // namespace permora::test
