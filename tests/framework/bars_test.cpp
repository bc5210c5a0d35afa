// Toolbar, dialog bar, rebar and status bar of a frame, under mouse and keyboard.
#include "framework/bars.h"

#include <gtest/gtest.h>

#include <QHelpEvent>
#include <QLineEdit>
#include <QToolTip>

#include "tests/framework/test_frame_qt.h"

namespace permora {
namespace {

class Bars : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(frame.Show()); }

    QtTestFrame frame;
};

TEST_F(Bars, TipsAndPromptsTellWhatAButtonDoes) {
    QToolButton* button = frame.Button(ID_PERMISSIONS);
    for (const bool isEnabled : {false, true}) {
        frame.toolBar.EnableToolTips(isEnabled);
        QHelpEvent event(QEvent::ToolTip, QPoint(2, 2), button->mapToGlobal(QPoint(2, 2)));
        QApplication::sendEvent(button, &event);
        EXPECT_EQ(QToolTip::text(), QString::fromLatin1(isEnabled ? "Permissions" : ""));
    }
    QToolTip::hideText();
    QEnterEvent enter(QPointF(2, 2), QPointF(2, 2), QPointF(2, 2));
    QApplication::sendEvent(button, &enter);
    EXPECT_EQ(frame.statusBar.GetPaneText(0), "Opens Security Editor");
    // A text of the program is news; the prompt has been read.
    frame.statusBar.SetPaneText(0, "Processing...");
    EXPECT_EQ(frame.statusBar.GetPaneText(0), "Processing...");
    QApplication::sendEvent(button, &enter);
    EXPECT_EQ(frame.statusBar.GetPaneText(0), "Opens Security Editor");
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(button, &leave);
    EXPECT_EQ(frame.statusBar.GetPaneText(0), "Processing...");
}

TEST_F(Bars, AnEditFieldKeepsTheKeyThatWouldDeleteFiles) {
    auto* edit = frame.Top()->findChild<QLineEdit*>();
    edit->setFocus();
    edit->setText(QStringLiteral("one two"));
    edit->setCursorPosition(0);
    frame.PressKey(Qt::Key_Delete, Qt::ControlModifier);
    EXPECT_EQ(edit->text(), QStringLiteral("two"));
}

TEST_F(Bars, AGripperMovesTheEdgeBetweenTwoBars) {
    QWidget* reBar = reinterpret_cast<QWidget*>(frame.reBar.GetSafeHwnd());
    const Rect before = frame.addressBar.GetWindowRect();
    const QPoint gripper = reBar->mapFromGlobal(QPoint(before.left - 4, (before.top + before.bottom) / 2));
    QTest::mousePress(reBar, Qt::LeftButton, Qt::NoModifier, gripper);
    QTest::mouseMove(reBar, gripper - QPoint(100, 0));
    QTest::mouseRelease(reBar, Qt::LeftButton, Qt::NoModifier, gripper - QPoint(100, 0));
    const Rect after = frame.addressBar.GetWindowRect();
    EXPECT_NEAR(after.left, before.left - 100, 6);
    EXPECT_EQ(after.right, before.right);
}

TEST_F(Bars, TheMarkOfHiddenButtonsIsSeenOnADarkBackground) {
    QWidget* toolBar = reinterpret_cast<QWidget*>(frame.toolBar.GetSafeHwnd());
    toolBar->setPalette(QPalette(QColor(40, 40, 40)));
    toolBar->resize(60, toolBar->height());
    auto* mark = toolBar->findChild<QToolButton*>(QStringLiteral("qt_toolbar_ext_button"));
    ASSERT_TRUE(test::ServeEventsUntil([mark] { return mark->isVisible(); }));
    const QImage picture = mark->grab().toImage();
    int lightest = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            lightest = std::max(lightest, picture.pixelColor(x, y).lightness());
    EXPECT_GT(lightest, 200);
}

}  // namespace
}  // namespace permora
