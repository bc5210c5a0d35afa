// The main window while it shows the machine's shares.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "app/main_app.h"
#include "app/settings_store.h"
#include "browser/drive_rows.h"
#include "browser/share_rows.h"
#include "framework/command_routing.h"
#include "platform/api/errors.h"
#include "platform/linux/files/drives.h"
#include "platform/system_message.h"
#include "resources/resource_ids.h"
#include "tests/app/share_fakes.h"
#include "tests/app/shell_fakes.h"
#include "tests/app/system_fakes.h"
#include "tests/support/ui_driver.h"

namespace permora {
namespace {

using test::UiDriver;
using test::WindowDriver;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr unsigned int kShareRows = BrowserView::kListId;
constexpr const char* kServedFolder = R"(T:\)";

// The program on a folder with the folder "sub", on a machine with shares.
class SharesMode : public ::testing::Test {
  protected:
    SharesMode() {
        data.MakeFolder("sub");
        EXPECT_EQ(StoreProgramFolder(SettingsOwner::kUser, R"(C:\Tools)"), ERROR_SUCCESS);
        EXPECT_TRUE(host::PinDrive('T', data.Path()));
        system.commandLine = R"("permora" "T:\")";
        machine.shares = {{"IPC$", ""}, {"C$", R"(C:\)"}, {"docs", R"(D:\docs)"}, {"plans", R"(D:\plans)"}};
        EXPECT_TRUE(app.InitInstance());
    }
    ~SharesMode() override {
        app.mainWindow->DestroyWindow();
        host::PinDrive('T', "");
    }

    CMainFrame& Frame() { return dynamic_cast<CMainFrame&>(*app.mainWindow); }
    void Run(unsigned int command) { Frame().RunCommand(command); }
    // Also where the window shows the command as disabled.
    void Send(unsigned int command) {
        Notification notification;
        notification.id = command;
        EXPECT_TRUE(Frame().OnCmdMsg(notification)) << command;
    }
    static WindowDriver Window() { return UiDriver::MainWindow(); }
    static std::vector<std::string> Rows() { return Window().Rows(kShareRows); }

    static void ExpectSharesShown(bool shown) {
        WindowDriver window = Window();
        window.WaitUntil([&] { return window.IsChecked(ID_SHOW_SHARES) == shown; });
        EXPECT_EQ(window.ReadMenu(ID_SHOW_SHARES).isChecked, shown);
        EXPECT_EQ(window.ReadMenu(ID_NEW_FOLDER).text, shown ? "&New Share..." : "&New Folder...");
        EXPECT_EQ(window.Headers(kShareRows)[1], shown ? "Path" : "Type");
        EXPECT_EQ(window.Text(IDC_LOCATION) == "Accessible shared resources", shown);
    }
    void ExpectQuestion(int answer) {
        ui.ExpectMessageBox("Are you sure want to delete specified shared resource", "Deletion",
                            MB_YESNO | MB_ICONQUESTION, answer);
    }

    UiDriver ui;
    test::SystemFakes system;
    test::ShellFakes shell;
    test::ShareFakes machine;
    test::TemporaryFolder data;
    CMainApp app;
};

TEST_F(SharesMode, ShowsEveryShareButThatOfTheMachinesServices) {
    machine.shares.push_back({"ipc$", R"(D:\ipc)"});
    machine.shares.push_back({"odd", R"(D:\odd)", ERROR_ACCESS_DENIED});
    Run(ID_SHOW_SHARES);
    ExpectSharesShown(true);
    EXPECT_THAT(Rows(), ElementsAre(HasSubstr(R"(C$ | C:\)"), HasSubstr(R"(docs | D:\docs)"),
                                    HasSubstr(R"(plans | D:\plans)"), HasSubstr(R"(ipc$ | D:\ipc)"),
                                    ::testing::Not(HasSubstr(R"(D:\odd)"))));
    EXPECT_EQ(Window().StatusText(1), "Total items: 5");
    for (const int id : {ID_EDIT_COPY, ID_EDIT_CUT, ID_EDIT_PASTE, ID_GO_BACK, ID_GO_FORWARD, ID_GO_UP,
                         ID_ATTRIBUTES, ID_SECURE_DELETION, ID_WIZARD, ID_RENAME})
        EXPECT_FALSE(AskCommandState(Frame(), static_cast<unsigned int>(id), false).enabled) << id;
    for (const int id : {ID_DELETE, ID_NEW_FOLDER, ID_PERMISSIONS, ID_REFRESH, ID_GO_TO_ROOT})
        EXPECT_TRUE(AskCommandState(Frame(), static_cast<unsigned int>(id), false).enabled) << id;

    machine.shares.resize(1);
    Window().Press("F5");
    EXPECT_THAT(Rows(), IsEmpty());
    EXPECT_EQ(Window().StatusText(1), "Total items: 0");

    Run(ID_SHOW_SHARES);
    ExpectSharesShown(false);
    EXPECT_EQ(Window().Text(IDC_LOCATION), kServedFolder);
    EXPECT_THAT(Rows(), ElementsAre(HasSubstr("sub")));
}

TEST_F(SharesMode, TellsWhySharesCannotBeListed) {
    machine.listError = ERROR_ACCESS_DENIED;
    ui.ExpectError("Error: cannot enumerate shared resources: " + GetSystemMessageText(ERROR_ACCESS_DENIED));
    Run(ID_SHOW_SHARES);
    ExpectSharesShown(true);
    EXPECT_EQ(Rows().size(), 3U) << "those before the failure";
}

TEST_F(SharesMode, PropertiesOpenTheEditorOnTheSharedFolder) {
    machine.shares = {{"data", R"(T:\sub)"}, {"odd", R"(T:\sub)", ERROR_ACCESS_DENIED}};
    Run(ID_GO_TO_ROOT);
    Run(ID_SHOW_SHARES);
    const auto before = std::filesystem::current_path();
    Window().SelectRow(kShareRows, 0);
    ui.ExpectDialog(IDD_FOLDER_PROPERTIES, [&](WindowDriver& properties) {
        ui.ExpectSheet("Security Editor - sub", [&](WindowDriver& sheet) {
            EXPECT_TRUE(sheet.IsEnabled(IDC_INHERIT_FROM_PARENT)) << "it is no drive";
            sheet.Press("Esc");
        });
        properties.Click(IDC_PROPERTY_PERMISSIONS);
        properties.Press("Esc");
    });
    Run(ID_PROPERTIES);
    EXPECT_EQ(std::filesystem::current_path(), before);
    Window().SelectRow(kShareRows, 1);
    ui.ExpectError(GetSystemMessageText(ERROR_ACCESS_DENIED));
    Run(ID_PROPERTIES);
}

TEST_F(SharesMode, RemovesTheSelectedSharesUpToTheFirstFailure) {
    Run(ID_SHOW_SHARES);
    ui.ExpectInformation("Please, select items to work with them.");
    Run(ID_DELETE);

    Window().SelectRows(kShareRows, {0, 1, 2});
    ExpectQuestion(IDNO);
    machine.shares.push_back({"new", R"(D:\new)"});
    Run(ID_DELETE);
    EXPECT_EQ(Rows().size(), 4U) << "nothing was removed, and the list is new";

    machine.shares[2].removeError = NERR_NetNameNotFound;
    Window().SelectRows(kShareRows, {0, 1, 2});
    ExpectQuestion(IDYES);
    ui.ExpectError("Error: one or more shared resources coud not be removed: " +
                   GetSystemMessageText(NERR_NetNameNotFound));
    Window().Press("Del");
    EXPECT_THAT(Rows(), ElementsAre(HasSubstr("docs"), HasSubstr("plans"), HasSubstr("new")));
}

TEST_F(SharesMode, EndsBeforeTheUserGoesElsewhere) {
    const struct {
        unsigned int command;
        std::string location;
    } cases[] = {
        {ID_GO_BACK, kDriveListLocation},
        {ID_GO_FORWARD, kServedFolder},
        {ID_GO_TO_LOCATION, R"(T:\sub)"},
        {ID_GO_TO_ROOT, kDriveListLocation},
    };
    for (const auto& [command, location] : cases) {
        SCOPED_TRACE(command);
        Run(ID_SHOW_SHARES);
        ExpectSharesShown(true);
        if (command == ID_GO_TO_LOCATION) Window().SetText(IDC_LOCATION, location);
        Send(command);
        ExpectSharesShown(false);
        EXPECT_EQ(Window().Text(IDC_LOCATION), location);
    }
}

TEST_F(SharesMode, GoingToTheSharesShowsThemAnew) {
    Run(ID_SHOW_SHARES);
    machine.shares.resize(2);
    Send(ID_GO_TO_LOCATION);  // with what the field says by itself
    ExpectSharesShown(true);
    EXPECT_EQ(Rows().size(), 1U);
    machine.shares.resize(1);
    Window().SetText(IDC_LOCATION, kShareListLocation);
    Window().Press("Return");
    ExpectSharesShown(true);
    EXPECT_THAT(Rows(), IsEmpty());

    Run(ID_SHOW_SHARES);
    Window().SetText(IDC_LOCATION, kShareListLocation);
    ui.ExpectError(GetSystemMessageText(ERROR_FILE_NOT_FOUND));
    Window().Press("Return");
    EXPECT_FALSE(Window().IsChecked(ID_SHOW_SHARES)) << "elsewhere it is a path like any other";
}

TEST_F(SharesMode, StartsTheSystemsWizardForANewShare) {
    Run(ID_SHOW_SHARES);
    Run(ID_NEW_FOLDER);
    EXPECT_EQ(shell.requests, std::vector<std::string>{"open shrpubw"});
    shell.refused = {"open shrpubw"};
    ui.ExpectError("Cannot open \"Create a share folder wizard\"");
    Run(ID_NEW_FOLDER);
}

TEST_F(SharesMode, HasANewShareWhenItsDialogHasClosed) {
    const auto share = [this](const char* name) {
        ui.ExpectDialog(IDD_NEW_SHARE, [name](WindowDriver& dialog) {
            dialog.SetText(IDC_SHARE_FOLDER, R"(T:\sub)");
            dialog.SetText(IDC_SHARE_NAME, name);
            dialog.Press(name[0] != '\0' ? "Return" : "Esc");
        });
        Frame().ShareFolder();
    };
    Run(ID_SHOW_SHARES);
    share("new");
    EXPECT_THAT(Rows(), ::testing::Contains(HasSubstr(R"(new | T:\sub)")));
    EXPECT_EQ(Window().StatusText(1), "Total items: 4");
    machine.shares.resize(2);
    share("");
    EXPECT_EQ(Rows().size(), 4U) << "nothing was shared";
    Run(ID_SHOW_SHARES);
    share("another");
    EXPECT_THAT(Rows(), ElementsAre(HasSubstr("sub"))) << "files are listed";
}

// The folder shown has gone, and nobody needs it.
TEST_F(SharesMode, OpensTheShareSheetOnTheSelection) {
    Run(ID_SHOW_SHARES);
    std::filesystem::remove_all(data.Path("sub"));
    const auto before = std::filesystem::current_path();
    Window().SelectRow(kShareRows, 1);
    machine.shares.clear();
    ui.ExpectError(GetSystemMessageText(NERR_NetNameNotFound));
    ui.ExpectSheet("Security Editor - docs", [](WindowDriver& sheet) {
        EXPECT_THAT(sheet.Tabs(), ElementsAre("Permissions"));
        EXPECT_FALSE(sheet.IsEnabled(IDC_ADD_ENTRY)) << "the share could not be read";
        sheet.Press("Esc");
    });
    Run(ID_PERMISSIONS);
    EXPECT_EQ(std::filesystem::current_path(), before);
}

}  // namespace
}  // namespace permora
