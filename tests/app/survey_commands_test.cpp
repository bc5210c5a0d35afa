// Find and Report in the main window, and the windows of their results, on real files.
#include "app/survey_commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "app/main_app.h"
#include "app/settings_store.h"
#include "platform/api/errors.h"
#include "platform/api/messages.h"
#include "platform/linux/files/drives.h"
#include "resources/resource_ids.h"
#include "tests/app/system_fakes.h"
#include "tests/support/access_lists.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr unsigned int kFound = CResultsFrame::kFirstListId;
constexpr const char* kGuests = "S-1-5-32-546";

// The program on a folder with "sub", in which a file is.
class SurveyCommandsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const std::string sub = data.MakeFolder("sub");
        const DWORD error = test::SetDescriptorText(sub, "O:BAD:P(A;OICI;FA;;;BA)(D;OICI;SD;;;BG)");
        if (error == ERROR_NOT_SUPPORTED) GTEST_SKIP() << "the temporary folder holds no access lists";
        ASSERT_EQ(error, ERROR_SUCCESS);
        ASSERT_EQ(test::SetDescriptorText(data.MakeFile("sub/letter"), "O:BAD:P(A;;FA;;;BG)"), ERROR_SUCCESS);
        data.MakeFile("other");
        ASSERT_EQ(StoreProgramFolder(SettingsOwner::kUser, R"(C:\Tools)"), ERROR_SUCCESS);
        ASSERT_TRUE(host::PinDrive('T', data.Path()));
        system.commandLine = R"("permora" "T:\")";
        app = std::make_unique<CMainApp>();
        ASSERT_TRUE(app->InitInstance());
    }
    ~SurveyCommandsTest() override { host::PinDrive('T', ""); }

    static WindowDriver Main() { return UiDriver::WindowTitled("Permora"); }
    // The window of results, once its worker has ended.
    WindowDriver Find(const UiDriver::Script& choose) {
        ui.ExpectDialog(IDD_FIND, [&](WindowDriver& dialog) {
            choose(dialog);
            dialog.Click(IDOK);
        });
        Main().ChooseMenu(ID_FIND);
        WindowDriver window = UiDriver::WindowTitled(StartsWith("Find - "));
        EXPECT_TRUE(window.WaitUntil([&] { return !window.IsEnabled(ID_STOP_RESULTS); }));
        return window;
    }
    WindowDriver FindGuests() {
        return Find([](WindowDriver& dialog) { dialog.SetText(IDC_FIND_ACCOUNT, kGuests); });
    }

    UiDriver ui;
    test::SystemFakes system;
    const test::TemporaryFolder state;  // with the history
    const test::ScopedVariable ownHistory{"XDG_STATE_HOME", state.Path()};
    const test::TemporaryFolder data;
    std::unique_ptr<CMainApp> app;
};

TEST_F(SurveyCommandsTest, FindShowsWhatFitsAndOpensTheEditorOnIt) {
    WindowDriver window = FindGuests();
    EXPECT_EQ(window.Title(), R"(Find - BUILTIN\Guests in T:\)");
    EXPECT_THAT(window.Rows(kFound),
                ElementsAre(StartsWith(R"(sub | T:\ | Folder | Deny Delete ()"),
                            StartsWith(R"(letter | T:\sub | File | Allow Full control | BUILTIN)")));
    ui.ExpectSheet("Security Editor - letter", [](WindowDriver& sheet) { sheet.Press("Esc"); });
    window.DoubleClickRow(kFound, 1);
    ui.ExpectDialog(IDD_SELECTION_NOTICE, [](WindowDriver& notice) { notice.Click(IDOK); });
    ui.ExpectSheet("Security Editor - sub", [](WindowDriver& sheet) { sheet.Press("Esc"); });
    window.Press("Ctrl+A");
    window.Press("Return");

    window.SelectRow(kFound, 1);
    window.ChooseMenu(ID_SHOW_IN_FOLDER);
    EXPECT_EQ(Main().Text(IDC_LOCATION), R"(T:\sub)");
    EXPECT_THAT(Main().SelectedRows(BrowserView::kListId),
                ElementsAre(Main().FindRow(BrowserView::kListId, "letter")));

    // The window goes with the main window.
    app->mainWindow->DestroyWindow();
    EXPECT_FALSE(window.IsOpen());
}

TEST_F(SurveyCommandsTest, AnObjectThatIsGoneIsToldOf) {
    WindowDriver window = FindGuests();
    std::filesystem::remove(data.Path("sub/letter"));
    ui.ExpectError(StartsWith(R"(T:\sub\letter: )"));
    window.DoubleClickRow(kFound, 1);
    ui.ExpectError(StartsWith(R"(T:\sub\letter: )"));
    ui.ExpectSheet("Security Editor - sub", [](WindowDriver& sheet) { sheet.Press("Esc"); });
    window.Press("Ctrl+A");
    window.Press("Return");
}

TEST_F(SurveyCommandsTest, TheDialogChecksTheAccountAndWhatIsChosen) {
    WindowDriver main = Main();
    main.SelectRow(BrowserView::kListId, main.FindRow(BrowserView::kListId, "sub"));
    WindowDriver window = Find([&](WindowDriver& dialog) {
        EXPECT_TRUE(dialog.IsChecked(IDC_FIND_IN_SELECTION));
        ui.ExpectError("The name of the account is empty.");
        dialog.Click(IDOK);
        ui.ExpectError(StartsWith("nobody of that name: "));
        dialog.SetText(IDC_FIND_ACCOUNT, "nobody of that name");
        dialog.Click(IDOK);
        dialog.Click(IDC_FIND_OWNERS);
        for (const unsigned int id : {unsigned{IDC_FIND_RIGHTS}, unsigned{IDC_FIND_EFFECT}})
            EXPECT_FALSE(dialog.IsEnabled(id)) << id;
        dialog.Click(IDC_FIND_ENTRIES);
        dialog.SetText(IDC_FIND_ACCOUNT, kGuests);
        dialog.ToggleRowCheck(IDC_FIND_RIGHTS, dialog.FindRow(IDC_FIND_RIGHTS, "Delete"));
        dialog.SelectItem(IDC_FIND_EFFECT, "Allow");
        dialog.SelectItem(IDC_FIND_ORIGIN, "Not inherited");
    });
    EXPECT_THAT(window.Rows(kFound), ElementsAre(HasSubstr("letter")));
    window.ClickCloseBox();
    EXPECT_TRUE(window.WaitUntil([&] { return !window.IsOpen(); }));

    window = Find([](WindowDriver& dialog) {
        dialog.Click(IDC_FIND_GONE_ACCOUNTS);
        EXPECT_FALSE(dialog.IsEnabled(IDC_FIND_ACCOUNT));
        dialog.Click(IDC_FIND_IN_FOLDER);
    });
    EXPECT_EQ(window.Title(), R"(Find - accounts that no longer exist in T:\)");
    EXPECT_THAT(window.Rows(kFound), SizeIs(0));
}

TEST_F(SurveyCommandsTest, ReportBeginsWithTheShapeOfWhatIsSelected) {
    Main().SelectRow(BrowserView::kListId, Main().FindRow(BrowserView::kListId, "sub"));
    ui.ExpectDialog(IDD_REPORT, [](WindowDriver& dialog) { dialog.Click(IDOK); });
    Main().ChooseMenu(ID_REPORT);
    WindowDriver window = UiDriver::WindowTitled(R"(Report - T:\sub)");
    EXPECT_TRUE(window.WaitUntil([&] { return !window.IsEnabled(ID_STOP_RESULTS); }));
    EXPECT_THAT(window.Rows(kFound),
                ElementsAre(AllOf(StartsWith(R"(T:\sub | protected; owner BUILTIN\Admin)"),
                                  HasSubstr("; - BUILTIN\\Guests: Delete | 1 | 0 |"))));
    EXPECT_THAT(window.Rows(kFound + 1), SizeIs(2));
}

// There is no tree to look at where shares are shown, nor among drives of which none is selected.
TEST_F(SurveyCommandsTest, FindIsOfferedWhereThereIsATree) {
    EXPECT_TRUE(Main().ReadMenu(ID_FIND).isEnabled);
    Main().ChooseMenu(ID_GO_TO_ROOT);
    EXPECT_FALSE(Main().ReadMenu(ID_FIND).isEnabled);
}

}  // namespace
}  // namespace permora
