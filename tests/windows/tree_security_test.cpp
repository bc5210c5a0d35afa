#include "platform/tree_security.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <array>

#include "platform/nt/sid.h"
#include "platform/raw_security.h"
#include "tests/support/recording_observer.h"
#include "tests/windows/test_folder.h"

namespace permora::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

class TreeSecurity : public testing::Test {
  protected:
    void SetUp() override {
        tree.MakeFolder("sub");
        tree.MakeFile("sub\\file");
        tree.MakeFile("Ünïcödé 日本");
    }

    DWORD Reset(const std::string& path, TreeListMode mode = TreeListMode::kWrite) {
        counts = {};
        std::array<DWORD, 2> empty{};
        auto* list = reinterpret_cast<PACL>(empty.data());
        InitializeAcl(list, sizeof empty, ACL_REVISION);
        return Held(path).SetListsBelow(list, mode, Unrecorded(), observer, counts);
    }

    const TestFolder tree;
    RecordingObserver observer;
    TreeCounts counts;
};

TEST_F(TreeSecurity, EverythingIsReachedOnce) {
    EXPECT_EQ(Reset(tree.Path()), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(observer.begun, UnorderedElementsAre("sub", "file", "Ünïcödé 日本"));
    EXPECT_THAT(observer.passedOver, IsEmpty());
    EXPECT_EQ(counts.changed + counts.unchanged, 3U);
}

TEST_F(TreeSecurity, TheFolderItselfIsWhatCannotBeWalked) {
    EXPECT_EQ(Reset(tree.Path("sub\\file")), DWORD{ERROR_DIRECTORY});
    observer.limit = 1;
    EXPECT_EQ(Reset(tree.Path()), DWORD{ERROR_OPERATION_ABORTED});
    EXPECT_EQ(Held(tree.Path()).SetListsBelow(nullptr, TreeListMode::kWrite, Unrecorded(), observer, counts),
              DWORD{ERROR_INVALID_ACL});
    EXPECT_EQ(Held(tree.Path())
                  .SetOwnersBelow(nullptr, LinkedFiles::kChange, TreeListMode::kWrite, Unrecorded(), observer,
                                  counts),
              DWORD{ERROR_INVALID_SID});
}

TEST_F(TreeSecurity, CountingWritesNothing) {
    const std::string before = DescriptorText(tree.Path("sub\\file"), DACL_SECURITY_INFORMATION);
    EXPECT_EQ(Reset(tree.Path(), TreeListMode::kCountOnly), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(counts.changed + counts.unchanged, 3U);
    EXPECT_EQ(DescriptorText(tree.Path("sub\\file"), DACL_SECURITY_INFORMATION), before);
}

// A folder deeper than the system's calls with paths reach without a switch.
TEST_F(TreeSecurity, DepthIsNoLimit) {
    std::string deep = "deep";
    tree.MakeFolder(deep);
    for (int depth = 0; depth < 30; ++depth) {
        deep += "\\a name of some length";
        tree.MakeFolder(deep);
    }
    EXPECT_EQ(Reset(tree.Path()), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(observer.passedOver, IsEmpty());
    EXPECT_EQ(counts.changed + counts.unchanged, 34U);
}

TEST_F(TreeSecurity, AFileWithFurtherNamesKeepsItsOwner) {
    ASSERT_TRUE(CreateHardLinkA(tree.Path("sub\\second").c_str(), tree.Path("sub\\file").c_str(), nullptr));
    const nt::Sid nobody(5, {21, 1, 2, 3, 1001});
    EXPECT_EQ(Held(tree.Path("sub"))
                  .SetOwnersBelow(RawSid(nobody), LinkedFiles::kPassOver, TreeListMode::kWrite, Unrecorded(),
                                  observer, counts),
              DWORD{ERROR_SUCCESS});
    EXPECT_THAT(observer.passedOver,
                UnorderedElementsAre(Pair("file", kHasFurtherNames), Pair("second", kHasFurtherNames)));
    EXPECT_EQ(counts.changed, 0U);
}

TEST_F(TreeSecurity, EachObjectGetsWhatItsFolderHandsDown) {
    ASSERT_EQ(SetListText(tree.Path(), "D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;CI;FR;;;WD)(A;OIIO;GA;;;CO)"),
              DWORD{ERROR_SUCCESS});
    ASSERT_EQ(SetListText(tree.Path("sub"), "D:P(A;;FA;;;BA)"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Reset(tree.Path()), DWORD{ERROR_SUCCESS});
    EXPECT_THAT(observer.passedOver, IsEmpty());
    EXPECT_EQ(DescriptorText(tree.Path("sub"), DACL_SECURITY_INFORMATION),
              "D:AI(A;OICIID;FA;;;SY)(A;OICIID;FA;;;BA)(A;CIID;FR;;;WD)(A;OIIOID;GA;;;CO)");
    const std::string file = DescriptorText(tree.Path("sub\\file"), DACL_SECURITY_INFORMATION);
    EXPECT_THAT(file, testing::StartsWith("D:AI(A;ID;FA;;;SY)(A;ID;FA;;;BA)(A;ID;FA;;;"));
    EXPECT_EQ(Reset(tree.Path()), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(counts.unchanged, 3U);
}

TEST_F(TreeSecurity, AJunctionIsNotFollowed) {
    const TestFolder outside;
    outside.MakeFile("file");
    const std::string before = DescriptorText(outside.Path("file"), DACL_SECURITY_INFORMATION);
    ASSERT_EQ(tree.MakeJunction("junction", outside.Path()), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Reset(tree.Path()), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(counts.changed + counts.unchanged, 4U);
    EXPECT_EQ(DescriptorText(outside.Path("file"), DACL_SECURITY_INFORMATION), before);
    EXPECT_EQ(Reset(tree.Path("junction")), DWORD{ERROR_CANT_RESOLVE_FILENAME});
    RemoveDirectoryA(tree.Path("junction").c_str());
}

}  // namespace
}  // namespace permora::test
