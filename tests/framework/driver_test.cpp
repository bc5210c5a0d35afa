// The driver of the user interface tests must notice what a test did not declare, and never hang.
#include "tests/support/ui_driver.h"

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <thread>

#include "framework/dialog.h"
#include "framework/list_ctrl.h"
#include "resources/resource_ids.h"
#include "tests/framework/test_frame.h"

namespace permora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::UiDriver;
using testing::WindowDriver;

constexpr UINT kQuestion = MB_YESNO | MB_ICONQUESTION;

int Ask() {
    return MessageBoxA(nullptr, "Really?", "Permora Information", kQuestion);
}

TEST(UiDriver, FailsForWindowsThatWereNotDeclaredAndAnswersThemSafely) {
    UiDriver ui;
    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(Ask(), IDNO), "undeclared message box");
    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(CDialog(IDD_RENAME).DoModal(), IDCANCEL), "undeclared dialog");
    ui.ExpectDialog(IDD_RENAME, [](WindowDriver& dialog) {
        EXPECT_NONFATAL_FAILURE(EXPECT_EQ(Ask(), IDNO), "Really?");
        dialog.Press("Esc");
    });
    EXPECT_EQ(CDialog(IDD_RENAME).DoModal(), IDCANCEL);
}

TEST(UiDriver, FailsForAnotherWindowThanTheDeclaredOne) {
    UiDriver ui;
    ui.ExpectMessageBox("Sure?", "Permora Information", kQuestion, IDYES);
    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(Ask(), IDNO), "declared next: message box");
    EXPECT_EQ(MessageBoxA(nullptr, "Sure?", "Permora Information", kQuestion), IDYES);
}

TEST(UiDriver, FailsForWindowsThatDoNotComeOrDoNotGo) {
    const auto declareOnly = [] { UiDriver().ExpectDialog(IDD_RENAME); };
    EXPECT_NONFATAL_FAILURE(declareOnly(), "did not come: dialog");
    UiDriver ui;
    ui.SetPatience(std::chrono::milliseconds(50));
    ui.ExpectDialog(IDD_RENAME);
    EXPECT_NONFATAL_FAILURE(EXPECT_EQ(CDialog(IDD_RENAME).DoModal(), IDCANCEL), "still open");
}

TEST(UiDriver, TakesWhatAScriptDeclaresBeforeWhatWasDeclaredEarlier) {
    UiDriver ui;
    ui.ExpectDialog(IDD_RENAME, [&](WindowDriver& outer) {
        ui.ExpectDialog(IDD_NEW_FOLDER, [](WindowDriver& inner) { inner.Press("Esc"); });
        EXPECT_EQ(CDialog(IDD_NEW_FOLDER).DoModal(), IDCANCEL);
        outer.Click(IDOK);
    });
    ui.ExpectMessageBox(HasSubstr("all"), "Permora Information", kQuestion, IDYES);
    EXPECT_EQ(CDialog(IDD_RENAME).DoModal(), IDOK);
    EXPECT_EQ(Ask(), IDYES);
}

TEST(UiDriver, ServesWorkers) {
    UiDriver ui;
    ui.ExpectMessageBox("Really?", "Permora Information", kQuestion, IDYES);
    int answer = 0;
    std::thread worker([&] { answer = Ask(); });
    ui.WaitForWindows();
    worker.join();
    EXPECT_EQ(answer, IDYES);
}

TEST(UiDriver, FailsForClicksThatNoUserCouldMake) {
    UiDriver ui;
    ui.ExpectDialog(IDD_RENAME, [](WindowDriver& dialog) {
        EXPECT_NONFATAL_FAILURE(dialog.Click(9999), "no such control: 9999");
        dialog.Click(IDOK);
    });
    EXPECT_EQ(CDialog(IDD_RENAME).DoModal(), IDOK);
}

TEST(UiDriver, WorksWithFrames) {
    TestFrame frame;
    ASSERT_TRUE(frame.Show());
    UiDriver ui;
    WindowDriver window = UiDriver::MainWindow();
    frame.onPermissions = [&] { EXPECT_EQ(Ask(), IDYES); };
    for (int way = 0; way < 3; ++way) {
        ui.ExpectMessageBox("Really?", "Permora Information", kQuestion, IDYES);
        if (way == 0) window.ChooseMenu(ID_PERMISSIONS);
        if (way == 1) window.Click(ID_PERMISSIONS);
        if (way == 2) window.Press("Alt+P");
    }
    EXPECT_THAT(frame.log, ElementsAre("permissions", "permissions", "permissions"));
    frame.isCopyAllowed = false;
    EXPECT_FALSE(window.ReadMenu(ID_EDIT_COPY).isEnabled);
    EXPECT_NONFATAL_FAILURE(window.ChooseMenu(ID_EDIT_COPY), "disabled");
    EXPECT_TRUE(window.ReadMenu(ID_VIEW_TOOLBAR).isChecked);
    EXPECT_EQ(window.StatusText(0), "Ready");
}

}  // namespace
}  // namespace permora
