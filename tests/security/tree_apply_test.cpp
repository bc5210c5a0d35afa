#include "security/tree_apply.h"

#include <filesystem>
#include <string>
#include <vector>

#include "gmock/gmock.h"
#include "gtest/gtest.h"
#include "platform/api/errors.h"
#include "platform/host_path.h"
#include "security/message_boxes.h"
#include "tests/support/access_lists.h"
#include "tests/support/recording_observer.h"
#include "tests/support/recording_presenter.h"
#include "tests/support/temporary_folder.h"

namespace {

// Services that fail on demand (CMakeLists.txt).
bool isMemoryOut = false;
bool areListsRefused = false;

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker demands these names
extern "C" {

HLOCAL __real_LocalAlloc(UINT flags, SIZE_T bytes);
HLOCAL __wrap_LocalAlloc(UINT flags, SIZE_T bytes) {
    return isMemoryOut ? nullptr : __real_LocalAlloc(flags, bytes);
}

BOOL __real_InitializeAcl(PACL acl, DWORD size, DWORD revision);
BOOL __wrap_InitializeAcl(PACL acl, DWORD size, DWORD revision) {
    return areListsRefused ? FALSE : __real_InitializeAcl(acl, size, revision);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)

namespace permora {
namespace {

using test::DaclText;
using test::SetDescriptorText;
using testing::RecordingPresenter;

class TreeApply : public ::testing::Test {
  protected:
    // Folders "one" and "two" hand an entry down; the file in each has a protected list of its own.
    void SetUp() override {
        for (const std::string name : {"one", "two"}) {
            const DWORD error = SetDescriptorText(folder.MakeFolder(name), "D:P(A;OICI;FA;;;BA)");
            if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
            ASSERT_EQ(error, ERROR_SUCCESS);
            ASSERT_EQ(SetDescriptorText(folder.MakeFile(name + "/in " + name), kOwnList), ERROR_SUCCESS);
        }
        folder.MakeFile("file");
        std::filesystem::create_directory_symlink("two", folder.Path("link"));
        std::filesystem::current_path(folder.Path());
    }

    TreeApplyResult Apply(const std::vector<const char*>& names) {
        return ApplyToTrees(nullptr, names, TreeListMode::kWrite, observer, counts);
    }

    static constexpr const char* kOwnList = "D:PAI(A;;FA;;;WD)";
    static constexpr const char* kInheritedList = "D:AI(A;ID;FA;;;BA)";

    const test::TemporaryFolder folder;
    RecordingPresenter presenter;
    test::RecordingObserver observer;
    TreeCounts counts;
};

TEST_F(TreeApply, WalksFoldersAndPassesOverEveryOtherName) {
    EXPECT_EQ(Apply({"file", "one", "missing", "link", "two"}), TreeApplyResult::kDone);
    EXPECT_THAT(observer.begun, ::testing::ElementsAre("in one", "in two"));
    EXPECT_THAT(observer.passedOver,
                ::testing::ElementsAre(::testing::Pair("file", ERROR_DIRECTORY),
                                       ::testing::Pair("missing", ERROR_FILE_NOT_FOUND),
                                       ::testing::Pair("link", ERROR_CANT_RESOLVE_FILENAME)));
    EXPECT_EQ(counts.changed, 2U);
    EXPECT_EQ(counts.passedOver, 3U);
    EXPECT_EQ(DaclText(folder.Path("one/in one")), kInheritedList);
    EXPECT_EQ(DaclText(folder.Path("two/in two")), kInheritedList);
    EXPECT_EQ(std::filesystem::current_path(), folder.Path());
}

TEST_F(TreeApply, AStoppedWalkLeavesTheOtherFoldersToo) {
    observer.limit = 0;
    EXPECT_EQ(Apply({"one", "two"}), TreeApplyResult::kStopped);
    EXPECT_EQ(counts.changed + counts.passedOver, 0U);
    EXPECT_EQ(DaclText(folder.Path("one/in one")), kOwnList);
    EXPECT_EQ(DaclText(folder.Path("two/in two")), kOwnList);
}

TEST_F(TreeApply, EndsTheProcessWithoutMemoryForTheList) {
    SetMessagePresenter(nullptr);
    isMemoryOut = true;
    EXPECT_EXIT(Apply({"one"}), ::testing::ExitedWithCode(0), "Error: cannot allocate buffer");
    isMemoryOut = false;
}

TEST_F(TreeApply, NothingIsTouchedWhenTheListCannotBeInitialised) {
    areListsRefused = true;
    EXPECT_EQ(Apply({"one"}), TreeApplyResult::kCannotStart);
    areListsRefused = false;
    EXPECT_THAT(presenter.TakeBoxes(),
                ::testing::ElementsAre(testing::RecordedBox{
                    kErrorCaption, "Error: cannot initialize object's access control list", MB_ICONERROR}));
    EXPECT_TRUE(observer.begun.empty());
}

}  // namespace
}  // namespace permora
