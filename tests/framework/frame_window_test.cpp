// The frame window: where commands go, how their states are shown, keys, layout, placement and closing.
#include "framework/frame_window.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTimer>

#include "framework/dialog.h"
#include "framework/qt/widget.h"
#include "framework/screen_placement.h"
#include "framework/styles.h"
#include "tests/framework/test_frame.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(Frame, CommandsAreChosenFromMenuAndToolbarAndByKey) {
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

TEST(Frame, PromptsStandInTheStatusBarWhileAnEntryIsPointedAt) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    EXPECT_EQ(frame.statusBar.GetPaneText(0), "Ready");
    EXPECT_EQ(frame.statusBar.GetPaneText(1), "Total items: ");
    QMenu* security = frame.OpenMenu("&Security");
    QTest::keyClick(security, Qt::Key_Down);
    if (frame.statusBar.GetPaneText(0) == "Ready") QTest::keyClick(security, Qt::Key_Down);
    EXPECT_EQ(frame.statusBar.GetPaneText(0), "Opens Security Editor");
    QTest::keyClick(security, Qt::Key_Return);
    EXPECT_EQ(frame.statusBar.GetPaneText(0), "Ready");
    EXPECT_TRUE(test::ServeEventsUntil([&] { return !frame.log.empty(); }));
    EXPECT_THAT(frame.log, ElementsAre("permissions"));
}

TEST(Frame, KeysActUnlessAModalDialogOrAnEditFieldHasThem) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    frame.PressKey(Qt::Key_P, Qt::AltModifier);
    frame.PressKey(Qt::Key_C, Qt::ControlModifier);
    EXPECT_THAT(frame.log, ElementsAre("permissions"));
    EXPECT_THAT(frame.view.log, ElementsAre("view copy"));

    frame.addressBar.GetDlgItem(IDC_LOCATION)->SetFocus();
    frame.PressKey(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(frame.view.log.size(), 1U);
    frame.PressKey(Qt::Key_P, Qt::AltModifier);
    EXPECT_EQ(frame.log.size(), 2U);

    frame.onPermissions = [&] {
        QTimer::singleShot(0, [&] {
            EXPECT_TRUE(test::ServeEventsUntil(
                [] { return QApplication::activeWindow() == QApplication::activeModalWidget(); }));
            frame.PressKey(Qt::Key_P, Qt::AltModifier);
            frame.RunCommand(ID_PERMISSIONS);
            frame.PostClose();
            frame.PressKey(Qt::Key_Escape);
        });
        CDialog(IDD_RENAME, &frame).DoModal();
    };
    frame.RunCommand(ID_PERMISSIONS);
    EXPECT_EQ(frame.log.size(), 3U);
    EXPECT_TRUE(frame.HasWindow());
}

TEST(Frame, EscapeFirstStopsWhatGoesOnButAChosenExitDoesNot) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    frame.isWorking = true;
    frame.PressKey(Qt::Key_Escape);
    EXPECT_FALSE(frame.isWorking);
    QCoreApplication::processEvents();
    EXPECT_TRUE(frame.HasWindow());
    frame.isWorking = true;
    UiDriver::MainWindow().ChooseMenu(ID_APP_EXIT);
    EXPECT_TRUE(test::ServeEventsUntil([&] { return !frame.HasWindow(); }));
    EXPECT_TRUE(frame.isWorking);
}

TEST(Frame, TheViewFillsWhatTheBarsLeave) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    const auto expectFilled = [&frame](int above, int below) {
        const Rect client = frame.GetClientRect();
        EXPECT_EQ(frame.view.GetClientRect(), (Rect{0, 0, client.Width(), client.Height() - above - below}));
    };
    QCoreApplication::processEvents();  // the bars know their sizes once they are shown
    const int top = frame.reBar.GetClientRect().Height();
    const int bottom = frame.statusBar.GetClientRect().Height();
    EXPECT_GT(top, 16);
    EXPECT_GT(bottom, 10);
    expectFilled(top, bottom);
    frame.MoveWindow({0, 0, 500, 400});
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

struct ScreenCase {
    Rect wanted;
    Rect placed;
};

TEST(Frame, ItIsPlacedWhereAScreenIs) {
    const std::vector<Rect> screens{{0, 0, 1000, 800}, {1000, 0, 2000, 600}};
    constexpr int kFar = 0x7FFFFFFF;
    for (const ScreenCase& each : {
             ScreenCase{{10, 20, 510, 420}, {10, 20, 510, 420}},
             {{1900, 100, 2300, 500}, {1600, 100, 2000, 500}},
             {{1100, 700, 1500, 900}, {600, 600, 1000, 800}},  // on none: the first
             {{5000, 5000, 5400, 5300}, {600, 500, 1000, 800}},
             {{0, 0, 4000, 3000}, {0, 0, 1000, 800}},
             {{100, 100, 100, 100}, {100, 100, 300, 250}},
             {{-kFar, -kFar, kFar, kFar}, {0, 0, 1000, 800}},
             {{kFar, kFar, -kFar, -kFar}, {800, 650, 1000, 800}},
         }) {
        const Rect placed = PutOnScreen(each.wanted, screens);
        EXPECT_EQ(placed, each.placed) << each.wanted.left << "," << each.wanted.top << ": " << placed.left
                                       << "," << placed.top << "," << placed.right << "," << placed.bottom;
    }
    EXPECT_EQ(PutOnScreen({1, 2, 3, 4}, {}), (Rect{1, 2, 3, 4}));
}

TEST(Frame, MaximisedItKnowsWhereItStoodBefore) {
    for (const bool isByUser : {false, true}) {
        TestFrame frame;
        ASSERT_TRUE(frame.Show());
        const Rect before = frame.GetWindowRect();
        isByUser ? frame.Top()->showMaximized() : frame.SetPlacement({before, ShowState::kMaximised});
        EXPECT_TRUE(test::ServeEventsUntil([&] { return frame.GetWindowRect() != before; }));
        EXPECT_EQ(frame.GetPlacement().showState, ShowState::kMaximised);
        EXPECT_EQ(frame.GetPlacement().normalRect, before) << (isByUser ? "by the user" : "when shown");
    }
}

TEST(Frame, TheFrameThatTheDesktopDrawsIsOnTheScreenToo) {
    for (const bool startsMaximised : {false, true}) {
        TestFrame frame;
        ASSERT_TRUE(frame.Show());
        const QRect screen = frame.Top()->screen()->availableGeometry();
        ASSERT_NE(frame.Top()->frameGeometry(), frame.Top()->geometry()) << "no frame here";
        frame.SetPlacement({qt::FromQt(screen.adjusted(-50, -50, 50, 50)),
                            startsMaximised ? ShowState::kMaximised : ShowState::kNormal});
        if (startsMaximised) frame.Top()->showNormal();
        UiDriver::MainWindow().WaitUntil([&] { return screen.contains(frame.Top()->frameGeometry()); });
        EXPECT_GT(frame.Top()->height(), screen.height() * 3 / 4);
    }
}

// Whether the frame was left alone by an Escape that is pressed, and held on, after it closed a dialog. Not
// every repetition looks like one. False also when the machine was too busy to press it in time.
bool IsLeftAloneByALateEscape() {
    constexpr int kLessThanAMoment = 400;
    TestFrame frame;
    EXPECT_TRUE(frame.Show());
    UiDriver ui;
    ui.ExpectDialog(IDD_RENAME, [](WindowDriver& dialog) { dialog.Press("Esc"); });
    CDialog(IDD_RENAME, &frame).DoModal();
    frame.PressKey(Qt::Key_Escape);
    QTest::qWait(kLessThanAMoment);
    if (!frame.log.empty()) return false;
    QKeyEvent held(QEvent::ShortcutOverride, Qt::Key_Escape, Qt::NoModifier, QString(), true);
    QApplication::sendEvent(QApplication::focusWidget(), &held);
    QTest::qWait(kLessThanAMoment);
    frame.PressKey(Qt::Key_Escape);
    QCoreApplication::processEvents();
    if (!frame.log.empty()) return false;
    QTest::qWait(2 * kLessThanAMoment);
    frame.PressKey(Qt::Key_Escape);
    EXPECT_TRUE(test::ServeEventsUntil([&] { return !frame.HasWindow(); }));
    return true;
}

TEST(Frame, AnEscapeThatWasMeantForAClosedWindowDoesNothing) {
    constexpr int kTries = 10;
    int tries = 1;
    while (tries <= kTries && !IsLeftAloneByALateEscape())
        ++tries;
    EXPECT_LE(tries, kTries);
}

TEST(Frame, ClosingIsTheFramesDecision) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    frame.closesByItself = false;
    EXPECT_FALSE(frame.Top()->close());
    EXPECT_THAT(frame.log, IsEmpty());  // not within the toolkit's own event
    QCoreApplication::processEvents();
    EXPECT_THAT(frame.log, ElementsAre("close"));
    EXPECT_TRUE(frame.HasWindow());

    frame.closesByItself = true;
    frame.PressKey(Qt::Key_Escape);
    EXPECT_TRUE(test::ServeEventsUntil([&] { return !frame.HasWindow(); }));
    EXPECT_FALSE(frame.view.HasWindow());
    EXPECT_TRUE(frame.Show());  // the object may have another window

    frame.log.clear();
    UiDriver ui;
    ui.ExpectMessageBox("of no window", "", MB_OK, [&](WindowDriver& box) {
        frame.PostClose();
        QCoreApplication::processEvents();
        frame.RunCommand(ID_PERMISSIONS);
        box.Press("Return");
    });
    MessageBoxA(nullptr, "of no window", "", MB_OK);
    EXPECT_THAT(frame.log, IsEmpty()) << "nothing happens behind a message box";
    EXPECT_TRUE(frame.HasWindow());
}

}  // namespace
}  // namespace permora
