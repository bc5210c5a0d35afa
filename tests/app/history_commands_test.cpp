// Undo and History in the main window, on real files.
#include "app/history_commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "app/main_app.h"
#include "app/settings_store.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "platform/linux/files/drives.h"
#include "resources/resource_ids.h"
#include "tests/app/system_fakes.h"
#include "tests/history/recorded_changes.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::DaclText;
using test::UiDriver;
using test::WindowDriver;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* kBefore = "D:PAI(A;;FR;;;WD)";
constexpr const char* kAfter = "D:PAI(A;;FA;;;BA)";
constexpr UINT kQuestion = MB_YESNO | MB_ICONQUESTION;

// The program on a folder with two files.
class HistoryCommandsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        for (const char* name : {"a", "b"}) {
            files.push_back(data.MakeFile(name));
            const DWORD error = test::SetDescriptorText(files.back(), kBefore);
            if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
            ASSERT_EQ(error, ERROR_SUCCESS);
        }
        ASSERT_EQ(StoreProgramFolder(SettingsOwner::kUser, R"(C:\Tools)"), ERROR_SUCCESS);
        ASSERT_TRUE(host::PinDrive('T', data.Path()));
        system.commandLine = R"("permora" "T:\")";
    }
    ~HistoryCommandsTest() override { host::PinDrive('T', ""); }

    // A program of its own for each start.
    void Start() {
        if (app) app->mainWindow->DestroyWindow();
        app.reset();
        app = std::make_unique<CMainApp>();
        ASSERT_TRUE(app->InitInstance());
    }
    void Change() { test::ChangeLists(History::UsualPath(), ChangeKind::kPermissions, files, kAfter); }
    void CutOffChange() { test::CutOffChange(History::UsualPath(), files, kAfter); }
    void ExpectQuestion(int answer) {
        ui.ExpectMessageBox(StartsWith("Take back this change?"), "Undo", kQuestion, answer);
    }
    void ExpectUndo() {
        ui.ExpectDialog(IDD_UNDO);
        ui.ExpectInformation("2 objects have what was there before the change.");
    }
    void ExpectLists(const char* sddl) {
        for (const std::string& file : files)
            EXPECT_EQ(DaclText(file), sddl) << file;
    }

    UiDriver ui;
    test::SystemFakes system;
    const test::TemporaryFolder state;  // with the history
    const test::ScopedVariable ownHistory{"XDG_STATE_HOME", state.Path()};
    const test::TemporaryFolder data;
    std::vector<std::string> files;
    std::unique_ptr<CMainApp> app;
};

TEST_F(HistoryCommandsTest, TheMenuNamesTheChangeAndTheKeyTakesItBack) {
    Start();
    WindowDriver window = UiDriver::MainWindow();
    EXPECT_EQ(window.ReadMenu(ID_EDIT_UNDO).text, "Undo\tCtrl+Z");
    EXPECT_FALSE(window.ReadMenu(ID_EDIT_UNDO).isEnabled);
    window.Press("Ctrl+Z");  // nothing happens
    Change();                // by another program
    EXPECT_EQ(window.ReadMenu(ID_EDIT_UNDO).text, "Undo permissions of 2 items\tCtrl+Z");
    EXPECT_TRUE(window.ReadMenu(ID_EDIT_UNDO).isEnabled);
    ExpectQuestion(IDNO);
    window.ChooseMenu(ID_EDIT_UNDO);
    ExpectLists(kAfter);
    ExpectQuestion(IDYES);
    ExpectUndo();
    window.Press("Ctrl+Z");
    ExpectLists(kBefore);
    EXPECT_FALSE(window.ReadMenu(ID_EDIT_UNDO).isEnabled);
}

TEST_F(HistoryCommandsTest, TheKeyBelongsToTheAddressFieldWhileItIsEdited) {
    Start();
    Change();
    WindowDriver window = UiDriver::MainWindow();
    const std::string location = window.Text(IDC_LOCATION);
    window.Type(IDC_LOCATION, "elsewhere");
    window.Press("Ctrl+Z");
    EXPECT_EQ(window.Text(IDC_LOCATION), location);
    ExpectLists(kAfter);
}

TEST_F(HistoryCommandsTest, TheHistoryTakesChangesBackAndTheListIsShownAnew) {
    Start();
    Change();
    data.MakeFile("later");
    WindowDriver window = UiDriver::MainWindow();
    EXPECT_EQ(window.Rows(BrowserView::kListId).size(), 2U);
    ui.ExpectDialog(IDD_HISTORY, [&](WindowDriver& dialog) {
        ExpectQuestion(IDYES);
        ExpectUndo();
        dialog.Click(IDC_UNDO_CHANGE);
        dialog.Press("Esc");
    });
    window.ChooseMenu(ID_HISTORY);
    ExpectLists(kBefore);
    EXPECT_EQ(window.Rows(BrowserView::kListId).size(), 3U);
}

TEST_F(HistoryCommandsTest, AChangeThatWasCutOffIsToldOnceAndTakenBack) {
    CutOffChange();
    CutOffChange();
    const auto text =
        AllOf(StartsWith("The program ended in the middle of "), HasSubstr("2 objects may have been changed"),
              HasSubstr("1 change before it was cut off, too"));
    ui.ExpectMessageBox(text, "Interrupted change", MB_YESNO | MB_ICONWARNING, IDNO);
    Start();
    ExpectLists(kAfter);
    Start();  // it is not told again
    CutOffChange();
    ui.ExpectMessageBox(StartsWith("The program ended in the middle of "), "Interrupted change",
                        MB_YESNO | MB_ICONWARNING, IDYES);
    ui.ExpectDialog(IDD_UNDO);
    ui.ExpectInformation(HasSubstr("2 objects have what was there before the change"));
    Start();
    Start();
}

}  // namespace
}  // namespace permora
