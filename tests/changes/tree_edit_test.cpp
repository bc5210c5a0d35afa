// What happens to trees while they are edited.
#include "changes/tree_edit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <vector>

#include "changes/account_edits.h"
#include "platform/api/errors.h"
#include "tests/support/access_lists.h"
#include "tests/support/immutable.h"
#include "tests/support/temporary_folder.h"

namespace permora::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Notes what it is told.
class NotingHost : public TreeEditHost {
  public:
    bool Begin(std::string_view /*path*/) override { return !isStopped; }
    bool IsStopped() const override { return isStopped; }
    void Preview(const std::string& path, bool /*isFolder*/, const nt::SecurityDescriptor& /*before*/,
                 const nt::SecurityDescriptor& /*after*/) override {
        notes.push_back("preview " + path);
    }
    void Fail(const std::string& path, NotEdited /*fault*/, DWORD error) override {
        notes.push_back("failed " + path + " " + std::to_string(error));
    }
    void Remark(const std::string& path, EditRemark remark) override {
        notes.push_back("remark " + path + " " + std::to_string(static_cast<int>(remark)));
    }

    std::vector<std::string> notes;
    bool isStopped = false;
};

// Another program writes between the reading and the writing.
class Meddler : public NoRecord {
  public:
    Meddler(std::string path, std::string sddl, int howOften)
        : meddled(std::move(path)), list(std::move(sddl)), times(howOften) {}
    DWORD Record(std::uint64_t /*top*/, std::span<const DescriptorChange> /*batch*/) override {
        if (times-- > 0)
            EXPECT_EQ(
                SetDescriptorText(meddled, list + "(A;;FR;;;S-1-5-21-1-2-3-" + std::to_string(times) + ")"),
                0U);
        return ERROR_SUCCESS;
    }

  private:
    const std::string meddled;
    const std::string list;
    int times;
};

class Stopper : public NoRecord {
  public:
    explicit Stopper(NotingHost& stopped) : host(stopped) {}
    DWORD Record(std::uint64_t /*top*/, std::span<const DescriptorChange> /*batch*/) override {
        host.isStopped = true;
        return ERROR_SUCCESS;
    }

  private:
    NotingHost& host;
};

class TreeEditTest : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "needs root";
        ASSERT_EQ(SetDescriptorText(top, "D:P(A;OICI;FA;;;BA)"), 0U);
        ASSERT_EQ(SetDescriptorText(sub, "D:(A;OICI;FR;;;BG)"), 0U);
        for (const std::string& path : {deep, file})
            ASSERT_EQ(SetDescriptorText(path, "D:"), 0U);
        ASSERT_EQ(SetDescriptorText(other, "D:P(A;;FR;;;BG)"), 0U);
        ASSERT_TRUE(exchange.Add(nt::Sid(5, {32, 546}), nt::Sid(5, {32, 545})));
    }
    DWORD Edit(ChangeRecorder& recorder) {
        HeldObject held = Held(top);
        ReplaceEdit edit(exchange, ReplaceEdit::Manner::kReplace);
        counts = {};
        return EditTree(held, edit, {}, host, recorder, counts);
    }
    std::string Counts() const {
        return std::to_string(counts.changed) + ' ' + std::to_string(counts.unchanged) + ' ' +
               std::to_string(counts.failed);
    }

    const TemporaryFolder folder;
    const std::string top = folder.MakeFolder("top");
    const std::string sub = folder.MakeFolder("top/sub");
    const std::string deep = folder.MakeFolder("top/sub/deep");
    const std::string file = folder.MakeFile("top/sub/deep/file");
    const std::string other = folder.MakeFile("top/sub/other");
    nt::AccountExchange exchange;
    NotingHost host;
    TreeEditCounts counts;
};

TEST_F(TreeEditTest, WhatIsInAFolderThatCannotBeWrittenInheritsWhatItHas) {
    const Immutable immutable(sub);
    if (!immutable) GTEST_SKIP() << "no immutable files here";
    EXPECT_EQ(Edit(Unrecorded()), ERROR_SUCCESS);
    EXPECT_THAT(host.notes, ElementsAre("failed sub " + std::to_string(ERROR_ACCESS_DENIED)));
    EXPECT_EQ(Counts(), "1 3 1");
    EXPECT_EQ(DaclText(sub), "D:AI(A;OICI;FR;;;BG)(A;OICIID;FA;;;BA)");
    EXPECT_EQ(DaclText(file), "D:AI(A;ID;FR;;;BG)(A;ID;FA;;;BA)");
    EXPECT_EQ(DaclText(other), "D:PAI(A;;FR;;;BU)");
}

TEST_F(TreeEditTest, WhatAnotherProgramChangesMeanwhileIsEditedAnew) {
    Meddler once(sub, "D:(A;OICI;FX;;;BG)", 1);
    EXPECT_EQ(Edit(once), ERROR_SUCCESS);
    EXPECT_THAT(host.notes, IsEmpty());
    EXPECT_EQ(DaclText(sub), "D:AI(A;OICI;FX;;;BU)(A;;FR;;;S-1-5-21-1-2-3-0)(A;OICIID;FA;;;BA)");
    EXPECT_EQ(DaclText(file), "D:AI(A;ID;FX;;;BU)(A;ID;FA;;;BA)");
    EXPECT_EQ(DaclText(other), "D:PAI(A;;FR;;;BU)");

    ASSERT_EQ(SetDescriptorText(other, "D:P(A;;FR;;;BG)"), 0U);
    Meddler always(other, "D:P(A;;FX;;;BG)", 100);
    EXPECT_EQ(Edit(always), ERROR_SUCCESS);
    EXPECT_THAT(host.notes, ElementsAre("failed sub\\other " + std::to_string(ERROR_REVISION_MISMATCH)));
}

TEST_F(TreeEditTest, AStopIsHeededBetweenTwoWrites) {
    const std::string before = DaclText(sub) + DaclText(file) + DaclText(other);
    Stopper stopper(host);
    EXPECT_EQ(Edit(stopper), ERROR_OPERATION_ABORTED);
    EXPECT_EQ(DaclText(sub) + DaclText(file) + DaclText(other), before);
    EXPECT_EQ(counts.changed, 0U);
}

TEST_F(TreeEditTest, NothingIsWrittenThatCouldNotBeRecorded) {
    const std::string before = DaclText(sub) + DaclText(file) + DaclText(other);
    class : public NoRecord {
        DWORD Record(std::uint64_t /*top*/, std::span<const DescriptorChange> /*batch*/) override {
            return ERROR_DISK_FULL;
        }
    } full;
    EXPECT_EQ(Edit(full), ERROR_DISK_FULL);
    EXPECT_EQ(DaclText(sub) + DaclText(file) + DaclText(other), before);
}

}  // namespace
}  // namespace permora::test
