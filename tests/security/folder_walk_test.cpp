// On real files: the trees of selected items, and another try at what has failed.
#include "security/folder_walk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/api/errors.h"
#include "security/object_security.h"
#include "tests/support/access_lists.h"
#include "tests/support/places.h"
#include "tests/support/temporary_folder.h"

namespace permora {
namespace {

using test::DaclText;
using test::SetDescriptorText;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class FolderWalk : public ::testing::Test {
  protected:
    void SetUp() override {
        const DWORD error = SetDescriptorText(folder.Path(), "D:P(A;OICI;FA;;;BA)");
        if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
        for (const char* name : {"top", "top/sub"})
            std::filesystem::create_directory(folder.Path(name));
        child = folder.MakeFile("top/sub/child");
        ASSERT_EQ(SetDescriptorText(child, kOwnList), ERROR_SUCCESS);
        std::filesystem::current_path(folder.Path());
        items = RememberPlace(test::InCurrentFolder({"top"})).items;
    }

    // As Apply with "Replace..." does it. `problem` is what each walk below a folder ends with at once.
    void Reset(const std::vector<ObjectPlace>& places, const std::function<DWORD()>& problem = {}) {
        const UniqueLocal<void> descriptor = test::DescriptorOf(kNewList);
        PACL dacl = nullptr;
        BOOL isPresent = FALSE;
        BOOL isDefaulted = FALSE;
        ASSERT_TRUE(GetSecurityDescriptorDacl(descriptor.get(), &isPresent, &dacl, &isDefaulted));
        ChangeRecorder& recorder = Unrecorded();
        WriteListToItems(items, places, DaclInheritance::kProtected, {dacl, dacl}, nullptr, recorder,
                         results);
        const UniqueLocal<void> nothing = test::DescriptorOf("D:");
        PACL empty = nullptr;
        ASSERT_TRUE(GetSecurityDescriptorDacl(nothing.get(), &isPresent, &empty, &isDefaulted));
        const auto below = [&](const HeldObject& held, TreeObserver& observer) {
            if (const DWORD error = problem ? problem() : DWORD{ERROR_SUCCESS}; error != ERROR_SUCCESS)
                return error;
            TreeCounts counts;
            return held.SetListsBelow(empty, TreeListMode::kWrite, recorder, observer, counts);
        };
        const auto object = [&](const HeldObject& held) {
            FailuresBelow failures;
            return held.WriteSecurity(DaclWriteInformation(DaclInheritance::kFromParent), {.dacl = empty},
                                      nullptr, recorder, failures);
        };
        WalkFolders(
            items, places, recorder, [](const char* /*name*/) { return true; },
            {.below = below, .object = object}, results);
    }
    std::size_t Failed() const { return results.Count(ResultState::kFailed); }
    std::vector<ObjectPlace> All() const { return PlacesOf(items, Contents::kToo); }
    static DWORD Busy() { return ERROR_BUSY; }

    static constexpr const char* kOwnList = "D:PAI(A;;FR;;;BU)";
    static constexpr const char* kNewList = "D:P(A;OICI;FA;;;BG)";
    static constexpr const char* kReset = "D:AI(A;ID;FA;;;BG)";

    const test::TemporaryFolder folder;
    std::string child;
    std::vector<RememberedObject> items;
    ChangeResults results;
};

TEST_F(FolderWalk, AnItemThatComesBackIsTriedAgainWithItsContents) {
    for (const bool isReplaced : {false, true}) {
        std::filesystem::rename("top", "elsewhere");
        if (isReplaced) std::filesystem::create_directory("top");
        results = {};
        Reset(All());
        EXPECT_EQ(Failed(), 1U);

        if (isReplaced) std::filesystem::remove("top");
        std::filesystem::rename("elsewhere", "top");
        ASSERT_EQ(SetDescriptorText(child, kOwnList), ERROR_SUCCESS);
        Reset(results.TakeFailed());
        EXPECT_EQ(Failed(), 0U);
        EXPECT_EQ(DaclText(child), kReset);
        EXPECT_THAT(results.TakeFailed(), IsEmpty());
    }
}

TEST_F(FolderWalk, ContentsThatAreGoneStayAFailure) {
    Reset(All(), Busy);
    EXPECT_EQ(Failed(), 1U);
    std::filesystem::rename("top", "elsewhere");
    Reset(results.TakeFailed());
    EXPECT_EQ(Failed(), 1U);
    std::filesystem::rename("elsewhere", "top");
    Reset(results.TakeFailed());
    EXPECT_EQ(Failed(), 0U);
    EXPECT_EQ(DaclText(child), kReset);
}

TEST_F(FolderWalk, WhatHasTakenThePlaceOfAFailureIsLeftAlone) {
    const auto failAtChild = [](const HeldObject& /*folder*/, TreeObserver& observer) {
        observer.PassOver("sub\\child", ERROR_BUSY);
        return DWORD{ERROR_SUCCESS};
    };
    WalkFolders(
        items, All(), Unrecorded(), [](const char* /*name*/) { return true; }, {failAtChild, {}}, results);
    EXPECT_EQ(Failed(), 1U);

    std::filesystem::rename(child, "elsewhere");
    folder.MakeFile("top/sub/child");
    ASSERT_EQ(SetDescriptorText(child, kOwnList), ERROR_SUCCESS);
    Reset(results.TakeFailed());
    ASSERT_EQ(Failed(), 1U);
    EXPECT_EQ(results.Row(0).outcome.step, Step::kFindAgain);
    EXPECT_EQ(DaclText(child), kOwnList);

    std::filesystem::rename("elsewhere", child);
    Reset(results.TakeFailed());
    EXPECT_EQ(Failed(), 0U);
    EXPECT_EQ(DaclText(child), "D:AI");
}

// A walk that has failed was not at everything below.
TEST_F(FolderWalk, NothingCountsAsDoneBelowAFolderThatHasFailed) {
    const std::vector<ObjectPlace> failed = {{0, "sub"}, {0, "sub\\child"}};
    Reset(failed, Busy);
    EXPECT_EQ(Failed(), 1U);
    EXPECT_EQ(DaclText(child), "D:AI") << "it was tried by itself, and nothing is handed down here";
    ASSERT_THAT(results.Listed(ResultState::kDone), SizeIs(1));
    EXPECT_EQ(results.Listed(ResultState::kDone).front().place.below, "sub\\child");
}

}  // namespace
}  // namespace permora
