// CMainFrame: the program's main window, with its bars, its list and the settings.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "app/help_window.h"
#include "app/history_commands.h"
#include "app/item_windows.h"
#include "app/settings_record.h"
#include "app/settings_store.h"
#include "app/survey_commands.h"
#include "browser/address_bar.h"
#include "browser/browser_view.h"
#include "framework/bars.h"
#include "framework/frame_window.h"
#include "framework/repeated_work.h"
#include "history/change_session.h"
#include "platform/place.h"
#include "properties/properties_service.h"
#include "security/object_security.h"

namespace permora {

class CMainFrame : public CFrameWnd, private ResultsHost {
  public:
    // `startLine` is a command line, whose folder is shown at first (StartFolderOf).
    explicit CMainFrame(std::string startLine) : commandLine(std::move(startLine)) {}

    // Puts the window where the settings say and shows it.
    void RestorePlacement();
    // To be called then: reports that the folder of the command line gave no answer.
    void TellOfStartFolder() { view.TellOfStartFolder(); }
    // Writes the settings. A failure is shown in a box.
    void KeepSettings();

    // Runs the dialog by which folders are shared where the system has no wizard for that. The list then has
    // the new share.
    void ShareFolder();

    // Shows a page of the help in the program's own window. False: it is not there.
    bool ShowHelpPage(const std::string& place);

    // Tells once of the last change that was cut off, and offers to take it back.
    void TellOfInterruption() { history.TellOfInterruption(); }

    // Each command is offered to the view first.
    bool OnCmdMsg(Notification& notification) override;

    const ProgramSettings& Settings() const { return settings; }

  protected:
    // Ends the process when the settings cannot be read, as when the program is not installed for this user.
    bool OnCreate() override;
    void OnClose() override;    // keeps the settings
    void OnDestroy() override;  // closes the windows of results and of help
    bool StopWork() override { return view.StopWork(); }
    void OnSize(Size client) override;
    const MessageMap& GetMessageMap() const override;

  private:
    // Settings. The first two return 0 or a system error code.
    DWORD ReadSettings();
    DWORD SaveSettings();
    void LoadOrMakeSettings();
    DWORD TellOwnFolder();
    void ApplySettings();
    void UpdateExplorerVerb();
    void LoadBrowserChoices();
    void KeepBrowserChoices();

    bool CreateBars();
    void OfferAdministrator();
    void ShowWhatIsMissing();
    void LoadToolBarImages();

    // Commands.
    void GoBack();
    void GoForward();
    void GoToLocation();
    void GoToRoot();
    void ToggleSharesMode();
    bool LeaveSharesMode();
    void ShowSharesMode();
    void ToggleOwnIcons();
    void EditSettings();
    void OpenSecurityEditor();
    void StartSecureDeletion();
    bool MayDeleteSelection(const char* caption) const;
    void StartWizard();
    void UndoLastChange();
    void ShowHistory();
    void Find();
    void Report();
    void RestartAsAdministrator();
    void OnUpdateUndo(Notification& notification);
    void OnUpdateSurvey(Notification& notification);
    void EditItemAt(const std::string& path);
    void EditResults(CWnd& window, const std::vector<ResultObject>& objects) override;
    void ShowInFolder(const ResultObject& object) override;
    Outcome HoldItemAt(const std::string& path, Place& place);
    bool Remember(const std::string& volume, const Place& place, RememberedPlace& remembered);
    bool RememberItems(const std::string& volume, const Place& place, RememberedPlace& remembered);
    bool RememberSelection(const Place& place, RememberedPlace& remembered);
    void OnUpdateFileCommand(Notification& notification);
    void OnUpdateSharesMode(Notification& notification);

    const std::string commandLine;
    CImageList toolBarImages;
    CStatusBar statusBarWnd;
    CToolBar toolBar;
    CReBar reBar;
    AddrBar addressBarWnd;
    BrowserView view;
    ProgramSettings settings;
    Size sheetSize;  // of the security editor; empty: its own
    ChangeSession changes{History::UsualPath(), LoadHistoryLimits()};
    ItemWindows items{settings, sheetSize, changes};
    RepeatedWork stateTimer;
    HistoryCommands history{*this, [this] { view.RefreshList(); }};
    SurveyCommands survey{*this, view, *this};
    std::unique_ptr<CHelpWindow> help;  // made when it is first asked for
    bool offersAdministrator = false;
    std::string missingText;  // in the status bar; empty: nothing is missing
    PropertiesService properties{*this, view.Waiting(),
                                 [this](const std::string& path) { EditItemAt(path); }};
};

}  // namespace permora
