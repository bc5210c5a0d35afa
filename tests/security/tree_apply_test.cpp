#include "security/tree_apply.h"

#include <array>
#include <filesystem>
#include <string>

#include "gtest/gtest.h"
#include "platform/api/errors.h"
#include "tests/support/access_lists.h"
#include "tests/support/recording_observer.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

TEST(TreeApply, WhatIsNoFolderIsToldAndAStoppedWalkLeavesTheOthersToo) {
    constexpr const char* kOwnList = "D:PAI(A;;FA;;;WD)";
    constexpr const char* kNoLists = R"(C:\proc\self\fd)";
    const test::TemporaryFolder folder;
    for (const std::string name : {"one", "two"}) {
        const DWORD error = test::SetDescriptorText(folder.MakeFolder(name), "D:P(A;OICI;FA;;;BA)");
        if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
        ASSERT_EQ(test::SetDescriptorText(folder.MakeFile(name + "/file"), kOwnList), ERROR_SUCCESS);
    }
    folder.MakeFile("file");
    std::filesystem::create_directory_symlink("two", folder.Path("link"));
    std::filesystem::current_path(folder.Path());
    test::RecordingObserver observer;
    observer.limit = 0;
    TreeCounts counts;
    EXPECT_EQ(ApplyToTrees(nullptr, std::array{"gone", "file", "link", kNoLists, "one", "two"},
                           TreeListMode::kWrite, observer, counts),
              TreeApplyResult::kStopped);
    EXPECT_EQ(observer.passedOver, (decltype(observer.passedOver){{"gone", ERROR_FILE_NOT_FOUND},
                                                                  {"file", ERROR_DIRECTORY},
                                                                  {"link", ERROR_CANT_RESOLVE_FILENAME},
                                                                  {kNoLists, ERROR_NOT_SUPPORTED}}));
    EXPECT_EQ(counts.passedOver, 4U);
    EXPECT_EQ(counts.changed, 0U);
    for (const char* name : {"one/file", "two/file"})
        EXPECT_EQ(test::DaclText(folder.Path(name)), kOwnList);
}

}  // namespace
}  // namespace permora
