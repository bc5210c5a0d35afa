// Objects that were found, found again.
#include "results/result_tops.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

#include "tests/results/sample_tree.h"

namespace permora::test {
namespace {

using testing::EndsWith;

using ResultTopsTest = SampleTree;

TEST_F(ResultTopsTest, NamesAndFindsWhatStandsBelow) {
    const std::vector<ResultTop> whole = Tops({});
    const std::vector<ResultTop> two = Tops({"top", "other"});
    EXPECT_THAT(NameOfTops(whole), EndsWith(R"(\top)"));
    EXPECT_THAT(NameOfTops(two), testing::StartsWith("2 items in "));
    for (const ResultTop& each : {whole[0], two[0]}) {
        const ResultObject found = ObjectBelow(each.object, R"(sub\file)", TreeObjectKind::kFile);
        EXPECT_EQ(found.path, PathFromArgument(file.c_str()));
        const HeldResults held = HoldResults({found, each.object});
        EXPECT_EQ(held.failures.size(), 0U);
        EXPECT_EQ(held.place.items.size(), 2U);
        EXPECT_EQ(held.firstName, "file");
    }
}

// Whoever may write there could otherwise lead the program to an object outside of the tree.
TEST_F(ResultTopsTest, FollowsNoLinkThatHasTakenTheNameOfAFolder) {
    const std::vector<ResultTop> tops = Tops({"top"});
    const ResultObject inSub = ObjectBelow(tops[0].object, R"(sub\file)", TreeObjectKind::kFile);
    const ResultObject kept = tops[0].object;
    std::filesystem::rename(sub, folder.Path("moved"));
    std::filesystem::create_directory_symlink(folder.Path("moved"), sub);
    const HeldResults held = HoldResults({inSub, kept});
    ASSERT_EQ(held.failures.size(), 1U);
    EXPECT_EQ(held.failures[0].object, inSub.path);
    EXPECT_EQ(held.place.items.size(), 1U);
    EXPECT_EQ(held.firstName, "top");
}

}  // namespace
}  // namespace permora::test
