// The editor on a volume that does not answer: the driver of a real one is stopped, as a server that is gone.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <memory>

#include "platform/volume_question.h"
#include "resources/resource_ids.h"
#include "tests/editor/editor_fixture.h"
#include "tests/support/ntfs_volume.h"

namespace permora::test {
namespace {

class SilentVolume : public ::testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
        ASSERT_EQ(volume.Problem(), "");
        ASSERT_EQ(mkdir(volume.Path("report").c_str(), 0700), 0);
        auto root = std::make_shared<FolderHandle>();
        ASSERT_EQ(FolderHandle::Open(PathFromArgument((volume.Root() + '/').c_str()), *root), ERROR_SUCCESS);
        place = RememberPlace({PlaceKind::kFolder, root, {"report"}});
        place.volume = VolumeOfPath(PathFromArgument(volume.Root().c_str()));
    }
    void TearDown() override { Answer(); }

    // From now on it answers nothing, and owes an answer, so that nobody waits for long.
    void FallSilent() {
        EXPECT_EQ(kill(volume.Driver(), SIGSTOP), 0);
        VolumeQuestion question;
        const auto ask = [path = volume.Path("report")] {
            struct stat status {};
            static_cast<void>(stat(path.c_str(), &status));
        };
        EXPECT_EQ(question.Ask(place.volume, ask), ERROR_SUCCESS);
    }
    void Answer() const { EXPECT_EQ(kill(volume.Driver(), SIGCONT), 0); }

    void Edit(const UiDriver::Script& script) {
        ui.ExpectSheet("Security Editor - report", script);
        EditSecurity(nullptr, place, "report", changes, {});
    }

    const NtfsVolume volume;
    RememberedPlace place;
    ChangeSession changes{History::UsualPath(), {}};
    UiDriver ui;
};

TEST_F(SilentVolume, PagesTellThatThereIsNoAnswerAndCanBeLeft) {
    FallSilent();
    ui.ExpectError("No answer from " + volume.Root());
    Edit([this](WindowDriver& window) {
        EXPECT_FALSE(window.IsEnabled(IDC_ACCESS_LIST));
        ui.ExpectError("No answer from " + volume.Root());
        window.SwitchToTab("Owner");
        EXPECT_EQ(window.Text(IDC_OWNER_NAME), "");
        window.Click(SheetButton::kOk);
    });
    Answer();
    Edit([](WindowDriver& window) {
        EXPECT_TRUE(window.WaitUntil([&] { return window.IsEnabled(IDC_ADD_ENTRY); }));
        window.SwitchToTab("Owner");
        EXPECT_NE(window.Text(IDC_OWNER_NAME), "");
        window.Click(SheetButton::kOk);
    });
}

}  // namespace
}  // namespace permora::test
