// The main window from its start to its end, and its stored settings.
#include "app/main_frame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "app/main_app.h"
#include "app/settings_store.h"
#include "browser/drive_rows.h"
#include "framework/command_routing.h"
#include "framework/frame_native.h"
#include "framework/menu_items.h"
#include "framework/styles.h"
#include "framework/window_access.h"
#include "platform/api/errors.h"
#include "platform/linux/files/drives.h"
#include "platform/message_presenter.h"
#include "platform/system_message.h"
#include "resources/resource_ids.h"
#include "tests/app/system_fakes.h"
#include "tests/support/fake_domain.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using ::testing::ElementsAre;
using ::testing::ExitedWithCode;
using ::testing::HasSubstr;

constexpr const char* kProgramFolder = R"(C:\Tools)";
constexpr unsigned int kList = BrowserView::kListId;

// The program on a folder with the folder "sub" and the file "file".
class MainFrame : public ::testing::Test {
  protected:
    MainFrame() {
        data.MakeFolder("sub");
        data.MakeFile("file");
        EXPECT_EQ(StoreProgramFolder(SettingsOwner::kUser, kProgramFolder), ERROR_SUCCESS);
        EXPECT_TRUE(host::PinDrive('T', data.Path()));
        system.commandLine = R"("permora" "T:\")";
    }
    ~MainFrame() override {
        if (app.mainWindow != nullptr) app.mainWindow->DestroyWindow();
        host::PinDrive('T', "");
    }

    void Start() { ASSERT_TRUE(app.InitInstance()); }
    CMainFrame& Frame() { return dynamic_cast<CMainFrame&>(*app.mainWindow); }
    void Run(unsigned int command) { Frame().RunCommand(command); }
    std::vector<std::string> Rows() { return test::UiDriver::MainWindow().Rows(kList); }
    // Shows a folder, selects the file in it, and moves a folder above it away.
    void SelectFileAndMoveItsFolder() {
        data.MakeFolder("sub/inner");
        data.MakeFile("sub/inner/file");
        Start();
        auto window = test::UiDriver::MainWindow();
        window.SetText(IDC_LOCATION, R"(T:\sub\inner)");
        window.Press("Return");
        window.SelectRow(kList, 0);
        std::filesystem::rename(data.Path("sub"), data.Path("moved"));
    }
    static ProgramSettings Stored() {
        ProgramSettings record;
        EXPECT_EQ(LoadSettings(record), ERROR_SUCCESS);
        return record;
    }
    // Ends the program as the user does.
    void Close() {
        auto window = test::UiDriver::MainWindow();
        Run(ID_APP_EXIT);
        window.WaitUntil([&] { return !app.mainWindow->HasWindow(); });
    }

    test::UiDriver ui;
    test::SystemFakes system;
    test::TemporaryFolder data;
    CMainApp app;
};

TEST_F(MainFrame, AFirstStartMakesTheSettings) {
    Start();
    EXPECT_EQ(Stored().block, SettingsBlock());
    EXPECT_EQ(ProgramFolder(Frame().Settings()), kProgramFolder);
    EXPECT_THAT(Rows(), ElementsAre(HasSubstr("sub"), HasSubstr("file")));
    EXPECT_EQ(test::UiDriver::MainWindow().Text(IDC_LOCATION), R"(T:\)");
    const Rect screen = ScreenAreas().front();
    EXPECT_GT(Frame().GetWindowRect().Width(), screen.Width() / 2) << "with room for the address";
}

TEST_F(MainFrame, SaysInItsStatusBarThatTheDomainDoesNotAnswer) {
    constexpr int kMessagePane = 0;
    test::FakeDomain domain;
    Start();
    auto window = test::UiDriver::MainWindow();
    const auto shows = [&](const std::string& text) {
        return window.WaitUntil([&] { return window.StatusText(kMessagePane) == text; });
    };
    EXPECT_TRUE(shows("Ready"));
    domain.SetState(DomainAvailability::kOffline);
    const std::string offline = "The domain EXAMPLE does not answer: accounts are shown by their SIDs";
    EXPECT_TRUE(shows(offline));
    Run(ID_REFRESH);
    EXPECT_TRUE(shows(offline)) << "after a listing has said \"Ready\"";
    domain.SetState(DomainAvailability::kOnline);
    EXPECT_TRUE(shows("Ready"));
}

TEST_F(MainFrame, WithoutAnInstallationItSaysSoAndEnds) {
    const auto start = [this] {
        setenv("XDG_CONFIG_HOME", data.MakeFolder("nowhere").c_str(), 1);
        thePresenters.messages = nullptr;  // boxes go to standard error
        app.InitInstance();
    };
    EXPECT_EXIT(start(), ExitedWithCode(0), "Reading settings: ");
}

TEST_F(MainFrame, WithoutAnInstallationItTellsItselfTheFolderThatItsHelpIsIn) {
    setenv("XDG_CONFIG_HOME", data.MakeFolder("nowhere").c_str(), 1);
    data.MakeFolder("own");
    data.MakeFile("own/ZELHELP.chm");
    system.programPath = R"(T:\own\permora)";
    Start();
    EXPECT_EQ(ProgramFolder(Frame().Settings()), R"(T:\own)");
    EXPECT_EQ(ProgramFolder(Stored()), R"(T:\own)");
    EXPECT_EQ(Stored().block, SettingsBlock());
}

TEST_F(MainFrame, DefaultsThatCannotBeStoredDoNotStopTheStart) {
    system.commandLine = R"("permora")";
    system.writeError = ERROR_DISK_FULL;
    ui.ExpectMessageBox("saving settings: " + GetSystemMessageText(ERROR_DISK_FULL), "Permora Error",
                        MB_ICONERROR, IDOK);
    data.MakeFile("ZELHELP.chm");
    system.programPath = R"(T:\permora)";
    Start();
    EXPECT_EQ(Frame().Settings().block, SettingsBlock());
    EXPECT_EQ(ProgramFolder(Frame().Settings()), "T:") << "where the help is";
    EXPECT_EQ(test::UiDriver::MainWindow().Text(IDC_LOCATION), kDriveListLocation);
}

// But for Undo, since there is nothing to undo.
TEST_F(MainFrame, EveryCommandOfTheMenuCanBeChosen) {
    Start();
    const std::function<void(const CMenu::Items&)> expectEnabled = [&](const CMenu::Items& items) {
        for (const MenuItem& item : items.entries)
            if (item.popup != nullptr)
                expectEnabled(*item.popup);
            else if (!item.IsSeparator())
                EXPECT_EQ(AskCommandState(Frame(), item.id, false).enabled, item.id != ID_EDIT_UNDO)
                    << item.text;
    };
    expectEnabled(*Frame().GetMenu().Shared());
}

TEST_F(MainFrame, OwnIconsAreASettingWithACheckMark) {
    Start();
    const auto isChecked = [] { return test::UiDriver::MainWindow().ReadMenu(ID_VIEW_OWN_ICONS).isChecked; };
    EXPECT_TRUE(isChecked());
    data.MakeFile("later");
    Run(ID_VIEW_OWN_ICONS);
    EXPECT_EQ(Rows().size(), 3U);
    EXPECT_FALSE(isChecked());
    EXPECT_EQ(Frame().Settings().block.useOwnIcons, 0);
    Run(ID_VIEW_SMALL_ICONS);
    Close();
    EXPECT_EQ(Stored().block.useOwnIcons, 0);
    EXPECT_EQ(Stored().block.viewMode, 1U);
}

TEST_F(MainFrame, TheSettingsDialogActsAtOnce) {
    Start();
    ui.ExpectDialog(IDD_SETTINGS, [](test::WindowDriver& dialog) {
        EXPECT_TRUE(dialog.IsChecked(IDC_SETTINGS_ICONS));
        dialog.Click(IDC_SETTINGS_DETAILS);
        dialog.Click(IDC_SETTINGS_INTERMEDIATE_INFO);
        EXPECT_TRUE(dialog.IsChecked(IDC_SETTINGS_ASK_BEFORE_LOSSES));
        dialog.Click(IDC_SETTINGS_ASK_BEFORE_LOSSES);
        dialog.Click(IDOK);
    });
    Run(ID_SETTINGS);
    EXPECT_FALSE(LoadAskBeforeLosses());
    EXPECT_THAT(Rows(), ElementsAre(::testing::StartsWith("sub | "),
                                    ::testing::MatchesRegex("file \\| .* Bytes \\| .*")));
    EXPECT_EQ(Stored().block.viewMode, 3U);
    EXPECT_EQ(Stored().block.showIntermediateInfo, 0);

    ui.ExpectDialog(IDD_SETTINGS, [](test::WindowDriver& dialog) { dialog.Click(IDOK); });
    ui.ExpectError("Error: saving settings: " + GetSystemMessageText(ERROR_ACCESS_DENIED));
    system.writeError = ERROR_ACCESS_DENIED;
    Run(ID_SETTINGS);
}

TEST_F(MainFrame, AVerbThatCannotBeWrittenIsReported) {
    ASSERT_EQ(StoreSettings(ProgramSettings()), ERROR_SUCCESS);
    system.majorVersion = 5;
    system.writeError = ERROR_ACCESS_DENIED;
    ui.ExpectError("Error: adding items to explorer menu: " + GetSystemMessageText(ERROR_ACCESS_DENIED));
    Start();
}

TEST_F(MainFrame, SettingsThatCannotBeKeptDoNotHoldTheWindowOpen) {
    Start();
    system.writeError = ERROR_DISK_FULL;
    ui.ExpectError("saving settings: " + GetSystemMessageText(ERROR_DISK_FULL));
    Close();
    EXPECT_FALSE(app.mainWindow->HasWindow());
}

struct PlaceCase {
    const char* name;
    Rect stored;
    bool isKept;
};

TEST_F(MainFrame, StandsWhereItStoodUnlessNobodyCouldSeeIt) {
    for (const PlaceCase& each : {
             PlaceCase{"on the screen", {40, 50, 640, 450}, true},
             {"inverted", {640, 450, 40, 50}, false},
             {"far away", {30000, 30000, 30600, 30400}, false},
             {"numbers out of any range", {-2147483647, 0, 2147483647, 10}, false},
         }) {
        ProgramSettings record;
        record.windowRect = each.stored;
        ASSERT_EQ(StoreSettings(record), ERROR_SUCCESS);
        Start();
        const Rect place = Frame().GetWindowRect();
        EXPECT_EQ(place == each.stored, each.isKept) << each.name;
        EXPECT_TRUE(IsUsableWindow(place) && place.left >= 0 && place.left < 2000) << each.name;
        Close();
        EXPECT_EQ(Stored().windowRect, place) << each.name;
    }
}

// The first control of `Kind` in a window and its children that can be seen.
template <class Kind>
const Kind* FindShown(const CWnd& window) {
    for (const CWnd* child : WindowAccess::Children(window)) {
        if ((child->GetStyle() & WS_VISIBLE) == 0) continue;
        if (const auto* found = dynamic_cast<const Kind*>(child)) return found;
        if (const auto* found = FindShown<Kind>(*child)) return found;
    }
    return nullptr;
}

TEST_F(MainFrame, ANarrowWindowKeepsTheAddressAndItsButtonInSight) {
    Start();
    for (const int width : {1000, 420, 300}) {
        SCOPED_TRACE(width);
        Frame().MoveWindow({20, 30, 20 + width, 430});
        const auto* edit = FindShown<CEdit>(Frame());
        const auto* button = FindShown<CBitmapButton>(Frame());
        ASSERT_TRUE(edit != nullptr && button != nullptr);
        const Rect field = edit->GetWindowRect();
        const Rect go = button->GetWindowRect();
        EXPECT_GE(field.Width(), 60);
        EXPECT_EQ(go.left, field.right + 5);
        EXPECT_EQ(go.left, FindShown<CStatusBar>(Frame())->GetWindowRect().right - 47);
    }
}

TEST_F(MainFrame, AMaximisedWindowKeepsTheRectangleThatItHadBefore) {
    ProgramSettings record;
    record.windowRect = {40, 50, 640, 450};
    record.showCommand = kShowMaximised;
    ASSERT_EQ(StoreSettings(record), ERROR_SUCCESS);
    Start();
    EXPECT_EQ(Frame().GetPlacement().showState, ShowState::kMaximised);
    Close();
    EXPECT_EQ(Stored().windowRect, record.windowRect);
    EXPECT_EQ(Stored().showCommand, kShowMaximised);
}

TEST_F(MainFrame, TheSecurityEditorOpensOnTheSelection) {
    Start();
    ui.ExpectInformation("Please, select items to work with them.");
    Run(ID_PERMISSIONS);

    auto window = test::UiDriver::MainWindow();
    const auto openOnBoth = [&] {
        window.SelectRows(kList, {0, 1});
        ui.ExpectSheet("Security Editor - sub", [](test::WindowDriver& sheet) {
            EXPECT_THAT(sheet.Tabs(), ElementsAre("Permissions", "Owner", "Effective Permissions"));
            sheet.Press("Esc");
        });
        Run(ID_PERMISSIONS);
    };
    ui.ExpectDialog(IDD_SELECTION_NOTICE, [](test::WindowDriver& notice) {
        notice.Click(IDC_DO_NOT_SHOW_AGAIN);
        notice.Click(IDOK);
    });
    openOnBoth();
    openOnBoth();  // the notice is not shown again
    EXPECT_EQ(Frame().Settings().block.showIntermediateInfo, 0);
}

TEST_F(MainFrame, PropertiesAreThoseOfTheTopmostRowAndOpenTheEditor) {
    Start();
    ui.ExpectInformation("Please, select an item to work with.");
    Run(ID_PROPERTIES);
    auto window = test::UiDriver::MainWindow();
    window.SelectRows(kList, {0, 1});
    ui.ExpectDialog(IDD_FOLDER_PROPERTIES, [this](test::WindowDriver& properties) {
        EXPECT_EQ(properties.Title(), "Properties - sub");
        ui.ExpectSheet("Security Editor - sub",
                       [](test::WindowDriver& sheet) { sheet.Click(test::SheetButton::kCancel); });
        properties.Click(IDC_PROPERTY_PERMISSIONS);
        properties.Click(IDCANCEL);
    });
    Run(ID_PROPERTIES);
    std::filesystem::remove(data.Path("sub"));
    Run(ID_PROPERTIES);  // there is nothing to show

    Run(ID_GO_TO_ROOT);
    window.SelectRow(kList, 0);
    ui.ExpectDialog(IDD_DRIVE_PROPERTIES, [](test::WindowDriver& properties) { properties.Press("Esc"); });
    Run(ID_PROPERTIES);
}

TEST_F(MainFrame, SecureDeletionAsksAndShowsWhatIsLeft) {
    Start();
    constexpr const char* kCaption = "Secure deletion";
    const auto expectQuestion = [&](int answer) {
        ui.ExpectMessageBox(
            "You will not be able to restore information.\nAre you sure you want to delete the selected "
            "items?",
            kCaption, MB_YESNO | MB_ICONQUESTION, answer);
    };
    ui.ExpectInformation("Please, select items to work with them.");
    Run(ID_SECURE_DELETION);

    auto window = test::UiDriver::MainWindow();
    window.SelectRow(kList, 0);
    expectQuestion(IDNO);
    Run(ID_SECURE_DELETION);
    EXPECT_EQ(Rows().size(), 2U);
    expectQuestion(IDYES);
    ui.ExpectDialog(IDD_SECURE_DELETION);
    Run(ID_SECURE_DELETION);
    EXPECT_THAT(Rows(), ElementsAre(HasSubstr("file")));

    ui.ExpectDialog(IDD_SETTINGS, [](test::WindowDriver& dialog) {
        dialog.Click(IDC_SETTINGS_ASK_BEFORE_DELETION);
        dialog.Click(IDOK);
    });
    Run(ID_SETTINGS);
    window.SelectRow(kList, 0);
    ui.ExpectDialog(IDD_SECURE_DELETION);
    window.Press("Ctrl+Del");
    EXPECT_THAT(Rows(), ElementsAre());

    Run(ID_GO_TO_ROOT);
    window.SelectRow(kList, 0);
    ui.ExpectMessageBox("Cannot remove disk drive.", kCaption, MB_OK | MB_ICONWARNING, IDOK);
    Run(ID_SECURE_DELETION);
}

TEST_F(MainFrame, WhatGetsTheNameWhileTheQuestionStandsIsNotDeleted) {
    Start();
    auto window = test::UiDriver::MainWindow();
    window.SelectRow(kList, 0);
    std::filesystem::create_directory(data.Path("important"));
    ui.ExpectMessageBox(::testing::_, "Secure deletion", MB_YESNO | MB_ICONQUESTION,
                        [this](test::WindowDriver& question) {
                            std::filesystem::rename(data.Path("sub"), data.Path("sub 2"));
                            std::filesystem::rename(data.Path("important"), data.Path("sub"));
                            question.Press("Alt+Y");
                        });
    ui.ExpectDialog(IDD_SECURE_DELETION);
    ui.ExpectError("Its name leads to something else by now: " + GetSystemMessageText(ERROR_FILE_INVALID) +
                   "\nsub");
    Run(ID_SECURE_DELETION);
    EXPECT_TRUE(std::filesystem::exists(data.Path("sub")));
}

TEST_F(MainFrame, TheWizardWorksOnTheSelectionAndTheListShowsWhatIsLeft) {
    Start();
    ui.ExpectInformation("Please, select items to work with them.");
    Run(ID_WIZARD);
    auto window = test::UiDriver::MainWindow();
    window.SelectRow(kList, 1);
    ui.ExpectSheet("Security Wizard", [&](test::WindowDriver& sheet) {
        sheet.Click(IDC_TASK_DELETION);
        ui.ExpectMessageBox("Are you sure want to delete selected items?", "Secure deletion",
                            MB_YESNO | MB_ICONQUESTION, IDYES);
        sheet.Click(test::SheetButton::kNext);
        sheet.WaitUntil([&] { return sheet.IsEnabled(test::SheetButton::kFinish); });
        sheet.Click(test::SheetButton::kFinish);
    });
    window.Press("Alt+W");
    EXPECT_THAT(Rows(), ElementsAre(HasSubstr("sub")));

    Run(ID_GO_TO_ROOT);
    window.SelectRow(kList, 0);
    ui.ExpectSheet("Security Wizard", [&](test::WindowDriver& sheet) {
        sheet.Click(IDC_TASK_DELETION);
        ui.ExpectMessageBox(HasSubstr("can not delete disk drives"), "Security Wizard", MB_OK, IDOK);
        sheet.Click(test::SheetButton::kNext);
        sheet.Press("Esc");
    });
    Run(ID_WIZARD);
    EXPECT_EQ(window.Text(IDC_LOCATION), kDriveListLocation);
}

// Others put a link to a folder with files of the same names in the place of the folder shown.
TEST_F(MainFrame, CommandsNeverFollowLinksToAnotherFolder) {
    data.MakeFolder("other");
    data.MakeFolder("other/inner");
    data.MakeFile("other/inner/file");
    SelectFileAndMoveItsFolder();
    std::filesystem::create_directory_symlink(data.Path("other"), data.Path("sub"));
    ui.ExpectError(GetSystemMessageText(ERROR_CANT_RESOLVE_FILENAME));
    Run(ID_PERMISSIONS);
    for (const unsigned int command : {unsigned{ID_ATTRIBUTES}, unsigned{ID_PROPERTIES}}) {
        ui.ExpectError(GetSystemMessageText(ERROR_CANT_RESOLVE_FILENAME));
        Run(command);
    }
    EXPECT_EQ(std::filesystem::current_path(), data.Path("moved/inner"));
    std::filesystem::current_path(data.Path());
    ui.ExpectError(GetSystemMessageText(ERROR_CANT_RESOLVE_FILENAME));
    Run(ID_WIZARD);
    std::filesystem::current_path(data.Path());
    ui.ExpectError(GetSystemMessageText(ERROR_CANT_RESOLVE_FILENAME));
    Run(ID_SECURE_DELETION);
    EXPECT_TRUE(std::filesystem::exists(data.Path("other/inner/file")));
    EXPECT_TRUE(std::filesystem::exists(data.Path("moved/inner/file")));
}

TEST_F(MainFrame, CommandsNeverTakeTheirNamesFromAnotherFolder) {
    SelectFileAndMoveItsFolder();
    std::filesystem::current_path(data.Path());
    for (const unsigned int command : {unsigned{ID_PERMISSIONS}, unsigned{ID_ATTRIBUTES}}) {
        ui.ExpectError(GetSystemMessageText(ERROR_PATH_NOT_FOUND));
        Run(command);
    }
    ui.ExpectError(GetSystemMessageText(ERROR_PATH_NOT_FOUND));
    ui.ExpectInformation(HasSubstr("does not exist any more"));
    Run(ID_SECURE_DELETION);
    EXPECT_TRUE(std::filesystem::exists(data.Path("file")));
    EXPECT_TRUE(std::filesystem::exists(data.Path("moved/inner/file")));
}

}  // namespace
}  // namespace permora
