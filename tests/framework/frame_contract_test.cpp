// What every back end's frame does: where commands go, how their states are shown, keys, layout, placement
// and closing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "framework/dialog.h"
#include "framework/styles.h"
#include "tests/framework/test_frame.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(FrameContract, CommandsAreChosenFromMenuAndToolbarAndByKey) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    WindowDriver window = UiDriver::MainWindow();
    window.ChooseMenu(ID_PERMISSIONS);
    window.Click(ID_PERMISSIONS);
    window.Press("Alt+P");
    EXPECT_THAT(frame.log, ElementsAre("permissions", "permissions", "permissions"));
    frame.isCopyAllowed = false;
    EXPECT_FALSE(window.ReadMenu(ID_EDIT_COPY).isEnabled);
    window.Press("Ctrl+C");
    EXPECT_THAT(frame.view.log, IsEmpty());
    EXPECT_FALSE(window.ReadMenu(ID_EDIT_PASTE).isEnabled) << "nobody's";
    EXPECT_TRUE(window.ReadMenu(ID_VIEW_TOOLBAR).isChecked);
}

TEST(FrameContract, KeysActUnlessADialogOrAnEditFieldHasThem) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    WindowDriver window = UiDriver::MainWindow();
    window.Press("Ctrl+C");
    EXPECT_THAT(frame.view.log, ElementsAre("view copy"));
    frame.addressBar.GetDlgItem(IDC_LOCATION)->SetFocus();
    window.Press("Ctrl+C");
    EXPECT_EQ(frame.view.log.size(), 1U);
    window.Press("Alt+P");
    EXPECT_EQ(frame.log.size(), 1U);

    UiDriver ui;
    ui.ExpectDialog(IDD_RENAME, [&](WindowDriver& dialog) {
        dialog.Press("Alt+P");
        frame.RunCommand(ID_PERMISSIONS);
        frame.PostClose();
        dialog.Press("Esc");
    });
    CDialog(IDD_RENAME, &frame).DoModal();
    EXPECT_EQ(frame.log.size(), 1U);
    EXPECT_TRUE(frame.HasWindow());
}

TEST(FrameContract, EscapeFirstStopsWhatGoesOnButAChosenExitDoesNot) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    frame.isWorking = true;
    UiDriver::MainWindow().Press("Esc");
    EXPECT_FALSE(frame.isWorking);
    EXPECT_TRUE(frame.HasWindow());
    frame.isWorking = true;
    UiDriver::MainWindow().ChooseMenu(ID_APP_EXIT);
    EXPECT_TRUE(test::ServeEventsUntil([&] { return !frame.HasWindow(); }));
    EXPECT_TRUE(frame.isWorking);
}

TEST(FrameContract, AnEscapeRightAfterADialogHasClosedWasMeantForThat) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    UiDriver ui;
    ui.ExpectDialog(IDD_RENAME, [](WindowDriver& dialog) { dialog.Press("Esc"); });
    CDialog(IDD_RENAME, &frame).DoModal();
    UiDriver::MainWindow().Press("Esc");
    EXPECT_THAT(frame.log, IsEmpty());
}

TEST(FrameContract, TheViewFillsWhatTheBarsLeave) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    const auto expectFilled = [&frame](int above, int below) {
        EXPECT_TRUE(test::ServeEventsUntil([&] {
            const Rect client = frame.GetClientRect();
            return frame.view.GetClientRect() == Rect{0, 0, client.Width(), client.Height() - above - below};
        })) << frame.view.GetClientRect().Height()
            << " of " << frame.GetClientRect().Height() << " without " << above << " and " << below;
    };
    // The bars know their sizes once they are shown.
    EXPECT_TRUE(test::ServeEventsUntil([&] { return frame.reBar.GetClientRect().Height() > 16; }));
    const int top = frame.reBar.GetClientRect().Height();
    const int bottom = frame.statusBar.GetClientRect().Height();
    EXPECT_GT(bottom, 10);
    expectFilled(top, bottom);
    frame.MoveWindow({0, 0, 600, 400});
    expectFilled(top, bottom);
    frame.RunCommand(ID_VIEW_STATUS_BAR);
    EXPECT_EQ(frame.statusBar.GetStyle() & WS_VISIBLE, 0U);
    expectFilled(top, 0);

    const int addressLeft = frame.addressBar.GetWindowRect().left;
    frame.RunCommand(ID_VIEW_TOOLBAR);
    EXPECT_EQ(frame.toolBar.GetStyle() & WS_VISIBLE, 0U);
    EXPECT_LT(frame.addressBar.GetWindowRect().left, addressLeft);
    frame.RunCommand(ID_VIEW_TOOLBAR);
    EXPECT_EQ(frame.addressBar.GetWindowRect().left, addressLeft);
}

TEST(FrameContract, MaximisedItKnowsWhereItStoodBefore) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    const Rect before = frame.GetWindowRect();
    frame.SetPlacement({before, ShowState::kMaximised});
    EXPECT_TRUE(test::ServeEventsUntil([&] { return frame.GetWindowRect() != before; }));
    EXPECT_EQ(frame.GetPlacement().showState, ShowState::kMaximised);
    EXPECT_EQ(frame.GetPlacement().normalRect, before);
}

TEST(FrameContract, ClosingIsTheFramesDecision) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    frame.closesByItself = false;
    UiDriver::MainWindow().ClickCloseBox();
    EXPECT_TRUE(test::ServeEventsUntil([&] { return !frame.log.empty(); }));
    EXPECT_THAT(frame.log, ElementsAre("close"));
    EXPECT_TRUE(frame.HasWindow());

    frame.closesByItself = true;
    UiDriver::MainWindow().Press("Esc");
    EXPECT_TRUE(test::ServeEventsUntil([&] { return !frame.HasWindow(); }));
    EXPECT_FALSE(frame.view.HasWindow());
    EXPECT_TRUE(frame.Show());  // the object may have another window

    frame.log.clear();
    UiDriver ui;
    ui.ExpectMessageBox("of no window", "", MB_OK, [&](WindowDriver& box) {
        bool isServed = false;
        frame.PostClose();
        PostToUiThread([&] { isServed = true; });  // after that
        box.WaitUntil([&] { return isServed; });
        frame.RunCommand(ID_PERMISSIONS);
        box.Press("Return");
    });
    MessageBoxA(nullptr, "of no window", "", MB_OK);
    EXPECT_THAT(frame.log, IsEmpty()) << "nothing happens behind a message box";
    EXPECT_TRUE(frame.HasWindow());
}

TEST(FrameContract, PromptsTellWhatAnEntryAndAButtonDo) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    WindowDriver window = UiDriver::MainWindow();
    EXPECT_EQ(window.StatusText(0), "Ready");
    EXPECT_EQ(window.StatusText(1), "Total items: ");
    frame.ShowPrompt(ID_PERMISSIONS);
    EXPECT_EQ(window.StatusText(0), "Opens Security Editor");
    // A text of the program is news; the prompt has been read.
    frame.statusBar.SetPaneText(0, "Processing...");
    EXPECT_EQ(window.StatusText(0), "Processing...");
}

TEST(FrameContract, TheKeyboardReachesEveryButton) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    WindowDriver window = UiDriver::MainWindow();
    window.WaitUntil(
        [&] { return !window.IsEnabled(ID_GO_BACK); });  // states follow when nothing else is to do
    frame.addressBar.GetDlgItem(IDC_LOCATION)->SetFocus();
    window.Press("Shift+Tab");
    EXPECT_EQ(window.StatusText(0), "Opens Security Editor") << "the first button that can be used";
    window.Press("Right");
    window.Press("Return");
    window.Press("Left");
    window.Press("Space");
    EXPECT_THAT(frame.view.log, ElementsAre("view copy"));
    EXPECT_THAT(frame.log, ElementsAre("permissions"));
    window.Press("Tab");
    EXPECT_TRUE(window.HasFocus(IDC_LOCATION));
    EXPECT_EQ(window.StatusText(0), "Ready");
}

TEST(FrameContract, AMenuPopsUpWithWhatTheFrameHandles) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    const CMenu security = frame.GetMenu().GetSubMenu(3);
    UiDriver ui;
    ui.ExpectMenu([](WindowDriver& menu) {
        EXPECT_THAT(menu.GreyedCommands(), ::testing::Not(::testing::Contains(ID_PERMISSIONS)));
        EXPECT_THAT(menu.GreyedCommands(), ::testing::Contains(ID_SECURE_DELETION));
    });
    EXPECT_EQ(security.TrackPopup({100, 100}, frame.view), 0U);
    ui.ExpectMenu(ID_PERMISSIONS);
    EXPECT_EQ(security.TrackPopup({100, 100}, frame.view), unsigned{ID_PERMISSIONS});
}

}  // namespace
}  // namespace permora
