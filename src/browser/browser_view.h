// BrowserView: the client area of the main window. Its list shows the rows of one source: the drives, the
// contents of a folder, or the machine's shares.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "browser/browser_history.h"
#include "browser/file_commands.h"
#include "browser/folder_rows.h"
#include "browser/folder_tree.h"
#include "browser/row_images.h"
#include "browser/security_columns.h"
#include "framework/list_ctrl.h"
#include "framework/menu.h"
#include "framework/patient_work.h"
#include "framework/splitter.h"
#include "security/volume_asking.h"

namespace permora {

class AddrBar;
class CFrameWnd;
class CStatusBar;

// Whether a question got no answer, or was given up before.
inline bool IsUnanswered(const Outcome& outcome) {
    return outcome.code == ERROR_CANCELLED || outcome.code == ERROR_TIMEOUT;
}

// The message of a command for which nothing is selected.
inline constexpr const char* kSelectItems = "Please, select items to work with them.";

class BrowserView : public CWnd, private TreeOwner {
  public:
    static constexpr unsigned int kListId = 0;  // the list has no number of its own
    static constexpr int kUsualTreeWidth = 200;

    // Registers the clipboard format; ends the process when that cannot be.
    BrowserView();

    // Makes the window and its list as a child of `owner`, and shows the folder of the command line
    // (StartFolderOf), or the drives. Ends the process when a window or image list cannot be made.
    void Create(CWnd& owner, unsigned int id, const std::string& commandLine);
    // Reports that the folder of the command line gave no answer, once the window is shown.
    void TellOfStartFolder() { Tell(std::exchange(startOutcome, {})); }
    // The frame's bars, once it has them. The address bar shows the location from now on.
    void AttachBars(AddrBar& address, CStatusBar& status);
    // `chosen` is called with each view mode that becomes current, as the settings store it.
    void SetViewModeObserver(std::function<void(std::uint32_t viewMode)> chosen);

    // The location shown.
    const RowSource& Rows() const { return *SharedRows(); }
    // For questions, which may outlive it.
    std::shared_ptr<const RowSource> SharedRows() const { return aside ? aside : location; }
    bool IsShowing(PlaceKind kind) const { return Rows().Kind() == kind; }
    const BrowserHistory& History() const { return history; }
    CListCtrl& List() { return list; }

    // Shows the same location again, with the focus on the row that had it and the same rows selected. If the
    // folder is gone, shows the nearest one above it and a message. Any other failure is reported.
    void RefreshList() override;
    // The same after objects were made, which are selected. If the list shows none of them, the selection
    // stays. False: the list is not shown again.
    bool RefreshList(const std::vector<std::string>& made);

    // The names of the selected rows, from top to bottom.
    std::vector<std::string> SelectedNames() const;
    // The selection as a place to work on. On false, nothing is selected or the folder shown cannot be worked
    // on, which has been reported.
    bool HoldSelection(Place& place);
    void SelectAll();
    void InvertSelection();

    // Navigation. Failures are reported, and the location before is shown again.

    // Nothing happens at the ends of the history, and no message reports a failure.
    void MoveInHistory(HistoryStep step);
    void GoUp() override;
    void GoToRoot();  // to the drives
    // To the typed path; relative paths begin at the folder shown.
    void GoToLocation(const std::string& text);
    // Shows the folder of the object with that full path, and selects the object. If the list does not show
    // it, a message says so.
    void ShowItem(const std::string& path);
    // Opens the row that the user was at last.
    void OpenSelected();
    void OpenFolderRow(const std::string& name);

    // Shows the shares in the place of the location. False, and nothing changes, when they are not answered.
    bool ShowShares();
    // Shows the location again, or another one when that cannot be shown. False: the shares are still shown,
    // since the user gave this up.
    bool LeaveShares();

    // Questions that a volume may never answer. The window lives meanwhile, and the user may give them up:
    // the outcome is then ERROR_CANCELLED, and ERROR_TIMEOUT where there is no answer (PatientWork::Do).
    // Outputs are untouched unless it is done.
    //
    // `question` owns all that it uses.
    Outcome Ask(const std::string& volume, VolumeTask question);
    template <class Answer>
    Outcome AskFor(const std::string& volume, Answer& answer, VolumeFinder<Answer> question) {
        const auto ask = [&](VolumeTask task) { return Ask(volume, std::move(task)); };
        return FindByAsking(ask, answer, std::move(question));
    }
    // RowSource::Verify, Hold and FindPath of the location shown.
    Outcome VerifyRows();
    Outcome HoldRows(const std::vector<std::string>& names, Place& place);
    Outcome FindPath(const std::string& name, std::string& path);
    // Reports the outcome of a question: in the status bar if the user gave it up, else in a box.
    void Tell(const Outcome& outcome);
    // For commands: gives up what the window waits for, and runs `next` afterwards. False, when it waits for
    // nothing: `next` does not run.
    bool GiveUpFor(std::function<void()> next) { return wait.GiveUp(std::move(next)); }
    PatientWork& Waiting() { return wait; }

    void SetViewMode(ListView mode);
    // The settings' view mode (0 icons, 1 small icons, 2 list, 3 details; others change nothing) and icons;
    // lists again.
    void ApplyViewSettings(std::uint32_t viewMode, RowIcons icons);
    // From the next listing on, with the check mark in the frame's menu.
    void SetIcons(RowIcons icons);
    void SortByColumn(int column);
    // Gives up what the window waits for, or the reading for a sorting by security; the order stays. False:
    // nothing goes on.
    bool StopWork();

    // A command gives up what the window waits for, and runs then.
    bool OnCmdMsg(Notification& notification) override;

    // The columns about security (SecurityColumns::Choose), with their check marks in the frame's menu.
    void ChooseSecurityColumns(std::uint32_t columns);
    std::uint32_t ChosenSecurityColumns() const { return security.Chosen(); }
    // From the next listing on, with the check mark in the frame's menu.
    void SetDotNames(DotNames names);
    DotNames GetDotNames() const { return dotNames; }
    // The tree of folders at the side, with the check mark in the frame's menu. `width` is in logical pixels;
    // a narrow window shows less of it, or nothing.
    void ShowFolderTree(bool shows, int width);
    bool ShowsFolderTree() const { return folderTree != nullptr; }
    int TreeWidth() const { return treeWidth; }
    // `edit` opens the security editor on a folder of the tree, by its full path.
    void SetFolderEditor(std::function<void(const std::string& path)> edit) { editFolder = std::move(edit); }
    // `chosen` is called after the user has chosen one of these.
    void SetChoiceObserver(std::function<void()> chosen) { choiceMade = std::move(chosen); }

  protected:
    void OnSize(Size client) override;
    void OnSetFocus() override;
    const MessageMap& GetMessageMap() const override;

  private:
    struct Listing;

    void OpenStartFolder(const std::string& commandLine);
    bool StopReadingSecurity();
    CFrameWnd* Frame() const;
    CMenu ViewMenu() const;
    void EnableContextCommands(CMenu& menu) const;
    void ChangeView(ListView mode);

    // The tree at the side.
    void LayOutPanes();
    void SetTreeWidth(int width);
    bool ShowPlace(const TreePlace& place) override;
    void LeaveTree() override { list.SetFocus(); }
    void WidenTree(int pixels) override;
    void EditFolder(const std::string& path) override;
    void OnFolderTree();

    // Listing.
    Outcome Read(const std::shared_ptr<RowSource>& source, std::shared_ptr<Listing>& listing);
    Outcome Fill(const RowSource& source, Listing& listing);
    bool AddRow(const Row& row);
    Outcome Show(std::shared_ptr<RowSource> source, const std::function<void()>& beforeFilling = {});
    Outcome ListAgain(const std::function<void()>& beforeFilling = {});
    void MakeCurrent();
    void ArrangeColumns(const RowSource& source);
    void FocusAgain(const std::string& name, int row);
    int RowNamed(const std::string& name) const;  // -1: none
    void SelectOnly(int row);
    bool SelectNames(const std::vector<std::string>& names);  // false: there are none of them
    void ShowState(const char* text);
    void ShowItemCount(const RowSource& source, int count);
    void ShowLocation(const RowSource& source);
    void PaintStatusBar();

    // Navigation.
    void ShowLocationAgain();
    bool ShowNearestParent();
    bool GoTo(std::shared_ptr<RowSource> source);
    bool IsGone(const std::string& folder);
    void LeaveSilentFolder(const std::string& folder);

    // Notifications of the list and commands.
    void OnDoubleClick(Notification& notification);
    void OnKeyDown(Notification& notification);
    void OnColumnClick(Notification& notification);
    void OnRightClick(Notification& notification);
    void OnInfoTip(Notification& notification);
    void OnViewMode(Notification& notification);
    void OnHeaderMenu(Notification& notification);
    void OnSecurityColumn(Notification& notification);
    void OnDotNames();
    void SortRows(int column);
    void OnFileCommand(Notification& notification);

    CMenu contextMenu;  // pop-up 0: with a selection, 1: without
    CListCtrl list;
    std::size_t moreColumns = 0;  // of the source shown
    SecurityColumns security{list};
    int awaitedColumn = 0;  // by which the rows are sorted once their security is read
    RowImages images;
    CStatusBar* statusBar = nullptr;
    AddrBar* addressBar = nullptr;
    // Questions that were given up may still use them.
    std::shared_ptr<RowSource> location;  // the drives or a folder, which the history knows
    std::shared_ptr<RowSource> aside;     // shown in its place: the shares; null: nothing
    PatientWork wait;
    BrowserHistory history;
    FileCommands commands{*this};
    std::unique_ptr<FolderTree> folderTree;  // null: not shown
    CSplitter splitter;
    int treeWidth = kUsualTreeWidth;
    std::function<void(const std::string& path)> editFolder;
    RowIcons rowIcons = RowIcons::kOwn;
    DotNames dotNames = DotNames::kLeftOut;
    std::function<void(std::uint32_t viewMode)> viewModeChosen;
    std::function<void()> choiceMade = [] {};
    Outcome startOutcome;
};

}  // namespace permora
