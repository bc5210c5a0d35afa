// The window beside a volume that does not answer: the driver of a real one is stopped, as a server that is
// gone.
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <iterator>

#include "framework/repeated_work.h"
#include "platform/linux/files/drives.h"
#include "resources/resource_ids.h"
#include "tests/browser/browser_fixture.h"
#include "tests/support/ntfs_volume.h"

namespace permora::test {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

std::ptrdiff_t Threads() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

class HangingVolume : public BrowserTest {
  protected:
    void SetUp() override {
        if (const std::string reason = NtfsVolume::SkipReason(); !reason.empty()) GTEST_SKIP() << reason;
        ASSERT_EQ(volume.Problem(), "");
        ASSERT_EQ(mkdir(volume.Path("sub").c_str(), 0700), 0);
        ASSERT_TRUE(host::PinDrive('N', volume.Root()));
        folder.MakeFolder("here");
    }
    void TearDown() override {
        Answer();
        EXPECT_TRUE(host::PinDrive('N', ""));
    }
    void Hang() const { EXPECT_EQ(kill(volume.Driver(), SIGSTOP), 0); }
    void Answer() const { EXPECT_EQ(kill(volume.Driver(), SIGCONT), 0); }

    // Once the window waits for the volume.
    void Meanwhile(std::function<void()> act) {
        constexpr std::chrono::milliseconds kPace(10);
        wait.Start(kPace, [this, act = std::move(act)] {
            if (Pane(0).find("Escape stops it") == std::string::npos) return;
            wait.Stop();
            act();
        });
    }
    std::vector<std::string> Rows() { return Window().Rows(BrowserView::kListId); }

    const NtfsVolume volume;
    RepeatedWork wait;
};

TEST_F(HangingVolume, WhatHangsIsGivenUpByEscapeOrForAnotherPlace) {
    Start(R"(N:\)");
    Hang();
    Meanwhile([this] {
        EXPECT_TRUE(view.Waiting().IsWaiting());
        EXPECT_TRUE(view.StopWork());
    });
    Open("sub");
    EXPECT_EQ(Pane(0), "Stopped");
    EXPECT_EQ(view.Rows().Folder(), R"(N:\)");
    EXPECT_THAT(Names(), ElementsAre("sub"));

    Meanwhile([this] {
        Window().SetText(IDC_LOCATION, R"(T:\)");
        frame.RunCommand(ID_GO_TO_LOCATION);
    });
    view.RefreshList();
    EXPECT_EQ(view.Rows().Folder(), R"(N:\)");
    EXPECT_TRUE(Window().WaitUntil([this] { return view.Rows().Folder() == R"(T:\)"; }));
    EXPECT_THAT(Names(), ElementsAre("here"));
    view.OpenFolderRow("here");
    EXPECT_EQ(view.Rows().Folder(), R"(T:\here)");

    Answer();
    view.GoToLocation(R"(N:\sub)");
    EXPECT_EQ(view.Rows().Folder(), R"(N:\sub)");
    view.GoToLocation(R"(T:\)");  // lets go of the volume
}

TEST_F(HangingVolume, NoAnswerIsToldAndTheOtherDrivesAreShown) {
    Start(R"(N:\)");
    view.SelectAll();
    Hang();
    view.Waiting().patience = std::chrono::milliseconds(500);
    ui.ExpectError("No answer from " + volume.Root());
    view.RefreshList();
    EXPECT_EQ(view.SelectedNames(), std::vector<std::string>{"sub"});
    const std::ptrdiff_t threads = Threads();
    for (int i = 0; i < 3; ++i) {
        ui.ExpectError("No answer from " + volume.Root());
        Place place;
        EXPECT_FALSE(view.HoldSelection(place));
    }
    EXPECT_LE(Threads(), threads) << "what owes an answer is asked nothing";

    view.GoUp();
    EXPECT_TRUE(view.IsShowing(PlaceKind::kDrives));
    EXPECT_THAT(Rows(), AllOf(Contains(AllOf(HasSubstr(R"(N:\)"), HasSubstr("No answer"))),
                              Contains(AllOf(HasSubstr(R"(T:\)"), HasSubstr("(Available: ")))));
    Answer();
    EXPECT_TRUE(Window().WaitUntil([this] {
        view.RefreshList();
        return ::testing::Value(Rows(), Not(Contains(HasSubstr("No answer"))));
    }));
    view.GoToLocation(R"(T:\)");
}

}  // namespace
}  // namespace permora::test
