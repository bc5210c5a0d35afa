// BrowserView: the client area of the main window. Its list shows the drives, what is in one folder, or the
// machine's shares.
//
// The folder shown is the process's current directory: rows carry bare names, and whoever works on a row
// finds it by that name. A drive's row is its root ("C:\").
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "browser/file_list.h"
#include "browser/folder_entries.h"
#include "browser/shell_items.h"
#include "framework/list_ctrl.h"
#include "framework/menu.h"
#include "platform/resources.h"

namespace permora {

class AddrBar;
class CFrameWnd;
class CStatusBar;

// What the address bar says in the place of a folder.
inline constexpr const char* kDriveListLocation = "Accessible disk drives";
inline constexpr const char* kShareListLocation = "Accessible shared resources";

// What is said where a command finds nothing selected.
inline constexpr const char* kSelectItems = "Please, select items to work with them.";
inline constexpr const char* kSelectItem = "Please, select an item to work with.";

class BrowserView : public CWnd {
  public:
    // Registers the clipboard format; ends the process when that cannot be.
    BrowserView();

    // Makes the window and its list as a child of `owner`, and shows the folder that the command line asks
    // for (StartFolderOf), or the drives. Ends the process when a window or image list cannot be made.
    void Create(CWnd& owner, unsigned int id, const std::string& commandLine);

    // ---- What is shown. None of these reports a failure; the last error is then set. ----

    // Shows the folder `path` and makes it current, with Type, Size and Modified when `detailsView` is set.
    // False when that cannot be: the list then shows what it did, nothing, or a part of the folder, and
    // `currentFolder` is unchanged.
    bool ListFolder(const std::string& path);
    // Shows the drives. `currentFolder` is the caller's to clear.
    bool ListDrives();
    // The process's current directory, full path.
    bool QueryCurrentDirectory(std::string& path) const;

    // Shows the same location again, or the shares, with the focus on the row that had it. A folder that is
    // gone leads to the nearest one above it that is not, and a message says so; any other failure is
    // reported.
    void RefreshList();

    // ---- Selection ----

    // The names of the selected rows from top to bottom. They live until ReleaseSelection or the next call.
    // Ends the process when there is no memory.
    std::span<const LPCSTR> GetSelectedNames();
    void ReleaseSelection();
    void SelectAll();
    void InvertSelection();
    // Runs the dialog of the attributes on the selected rows; drives have none.
    void EditAttributes();
    // Shows what the shell says about the topmost selected row; nothing when it is gone.
    void ShowProperties();

    // ---- Files. Failures and what is missing are told; afterwards the location is listed again. ----

    // The selected rows go to the clipboard, in the program's own format and in those of the desktop.
    void CutSelected();
    void CopySelected();
    // Copies or moves what is on the clipboard into the folder shown; what was cut is then taken off it.
    void PasteFromClipboard();
    // Whether there is something that could be pasted.
    static bool CanPaste();
    // The selected rows go to the trash.
    void DeleteSelected();
    void RenameSelected();  // the topmost
    void CreateNewFolder();

    // ---- Navigation. Failures are reported, and the location before is shown again. ----

    // `currentFolder` becomes the history's current entry; those after it are forgotten.
    void RecordLocation();
    // Back (-1) or Forward (1) in the history. Nothing happens at its ends, and no message tells a failure.
    void MoveInHistory(int step);
    void GoUp();
    // To the drives.
    void GoToRoot();
    // To what the user typed; relative paths begin at the folder shown.
    void GoToLocation(const std::string& text);
    // Opens the row that the user was at last.
    void OpenSelected();
    void OpenFolderRow(const std::string& name);
    void OpenFileRow(const std::string& name);

    // Makes the folder shown the current directory again, if there is one. False with the last error when
    // that cannot be: the current directory is then what it was, and the names of the rows mean other files
    // there. ERROR_CANT_RESOLVE_FILENAME says that links put into the path lead to another folder now.
    bool ReturnToShownFolder() const;
    // The same for a command that finds the rows by their names, which must stop at false; a box has told
    // why.
    bool MayWorkOnRows() const;

    // ---- Shares mode. `currentFolder` stays what it was, and is shown again afterwards. ----

    void EnterSharesMode();
    void LeaveSharesMode();
    // Shows the machine's shares, but for the one of its services. Failures are told, but for those of the
    // list itself; the rows before them stay.
    bool ListShares();
    // Asks, and ends the sharing of the selected rows up to the first failure, which is told. Lists again,
    // whatever the answer.
    void RemoveSelectedShares();

    // ---- Presentation ----

    void SetViewMode(ListView mode);
    // The settings' view mode (0 icons, 1 small icons, 2 list, 3 details; others change nothing) and icons;
    // lists again.
    void ApplyViewSettings(std::uint32_t viewMode, bool ownIcons);
    // Own icons or the shell's, from the next listing on, with the check mark in the frame's menu.
    void SetOwnIcons(bool ownIcons);
    void SortByColumn(int column);
    // Leaves the tip of a row in `infoText`; false when there is none.
    bool BuildInfoText(const std::string& name);

    static constexpr unsigned int kListId = 0;  // the list has no number of its own

    CMenu contextMenu;  // pop-up 0: with a selection, 1: without
    CListCtrl list;
    CImageList largeImages;
    CImageList smallImages;
    CStatusBar* statusBar = nullptr;  // the frame's, once it has one
    AddrBar* addressBar = nullptr;    // the frame's, once it has one
    std::string infoText;
    unsigned int clipboardFormat;
    std::string currentFolder;  // as the system reports it; empty: the drives
    bool isDriveRoot = false;   // the folder has no parent
    bool driveListShown = true;
    bool sharesMode = false;
    bool detailsView = false;
    bool useOwnIcons = true;
    std::vector<std::string> history{std::string()};  // locations visited; empty: the drives
    int historyIndex = 0;                             // the one shown
    int itemCount = 0;
    UniqueHeap selectionHeap;  // of the last GetSelectedNames

    // Hears of each view mode that becomes current, as the settings write it.
    std::function<void(std::uint32_t viewMode)> viewModeChosen;

  protected:
    void OnSize(Size client) override;
    void OnSetFocus() override;
    const MessageMap& GetMessageMap() const override;

  private:
    void OpenStartFolder(const std::string& commandLine);
    CFrameWnd* Frame() const;
    void RunCommand(unsigned int id);
    void EnableContextCommands(CMenu& menu) const;

    // Listing.
    static constexpr int kMessagePane = 0;
    static constexpr int kCountPane = 1;
    bool FillFolder();
    bool FillPass(EntryKind wanted, int& row);
    bool AddFolderRow(int row, const WIN32_FIND_DATAA& found);
    bool AddDriveRow(int drive, const std::string& root);
    void ShowState(const char* text);
    void ShowItemCount(int count);
    void ShowLocation(const std::string& text);
    void PaintStatusBar();

    // Shares.
    static const MessageMap& SharesModeMap(const MessageMap& base);
    void CreateNewShare();
    bool AddShareRow(int row, LPWSTR name);
    void RemoveShares();
    bool FindSharedFolder(const std::string& name, std::string& path) const;

    // Files.
    bool FindShownObject(const std::string& name, std::string& path) const;
    std::string PathOfRow(const std::string& name) const;
    void CopyToClipboard(TransferKind kind);
    void PutOnClipboard(TransferKind kind, std::span<const LPCSTR> names);
    void DeleteFiles(std::span<const LPCSTR> names);

    // Navigation.
    bool ListAgain();
    void FocusAgain(const std::string& name, int row);
    int RowNamed(const std::string& name) const;  // -1: none
    bool ShowLocationAgain();
    bool ShowNearestParent();
    void ShowDrives();
    bool TryFolder(const std::string& path);
    void ReportLastError() const;

    // Presentation.
    void ChangeView(ListView mode);
    bool RebuildImages(std::span<const unsigned int> iconIds);
    bool InitFolderImages();
    bool InitDriveImages();
    void AddShellIcons(const std::string& name);
    void FillDetails(const std::string& name, int row, const WIN32_FIND_DATAA& found);
    CIcon OwnIcon(unsigned int id);
    bool BuildEntryInfo(const std::string& name);
    void BuildDriveInfo(const std::string& root);
    CMenu ViewMenu() const;

    // Notifications of the list and commands.
    void OnDoubleClick(Notification& notification);
    void OnKeyDown(Notification& notification);
    void OnColumnClick(Notification& notification);
    void OnRightClick(Notification& notification);
    void OnInfoTip(Notification& notification);
    void OnViewMode(Notification& notification);

    std::map<unsigned int, CIcon> ownIconsLoaded;
    ShellIcons shellIcons;
    std::chrono::steady_clock::time_point statusPainted;
};

}  // namespace permora
