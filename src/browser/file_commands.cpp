#include "browser/file_commands.h"

#include "browser/attributes_dialog.h"
#include "browser/browser_view.h"
#include "browser/file_clipboard.h"
#include "browser/new_folder_dialog.h"
#include "browser/rename_dialog.h"
#include "browser/share_rows.h"
#include "browser/shell_items.h"
#include "platform/api/files.h"
#include "platform/api/messages.h"
#include "platform/api/shell.h"
#include "platform/host_path.h"
#include "resources/resource_ids.h"
#include "security/message_boxes.h"
#include "security/text_conversion.h"

namespace permora {

void FileCommands::Run(unsigned int command) {
    switch (command) {
        case ID_EDIT_CUT:
            return PutOnClipboard(TransferKind::kMove);
        case ID_EDIT_COPY:
            return PutOnClipboard(TransferKind::kCopy);
        case ID_EDIT_PASTE:
            return Paste();
        case ID_DELETE:
            return Delete();
        case ID_RENAME:
            return Rename();
        case ID_NEW_FOLDER:
            return CreateNew();
        case ID_ATTRIBUTES:
            return EditAttributes();
        case ID_PROPERTIES:
            return ShowProperties();
        case ID_COPY_HOST_PATH:
            return CopyHostPaths();
        default:
            return;
    }
}

bool FileCommands::TakeSelection(std::vector<std::string>& names) const {
    names = view.SelectedNames();
    if (names.empty()) ShowInfoBox(view.GetSafeHwnd(), kSelectItems);
    return !names.empty();
}

bool FileCommands::TakeTopmost(std::string& name) const {
    const std::vector<std::string> names = view.SelectedNames();
    if (names.empty())
        ShowInfoBox(view.GetSafeHwnd(), "Please, select an item to work with.");
    else
        name = names.front();
    return !names.empty();
}

bool FileCommands::Accept(const Outcome& outcome) const {
    ShowOutcome(view.GetSafeHwnd(), outcome);
    return outcome.IsDone();
}

bool FileCommands::MayWorkOnFolder() const {
    return Accept({view.Rows().Verify()});
}

void FileCommands::PutOnClipboard(TransferKind kind) {
    std::vector<std::string> names;
    if (!view.IsShowing(PlaceKind::kFolder) || !TakeSelection(names) || !MayWorkOnFolder()) return;
    PutFilesOnClipboard(view, kind, view.Rows().Folder(), names);
}

void FileCommands::Paste() {
    if (view.IsShowing(PlaceKind::kFolder))
        PasteFiles(view, view.Rows(),
                   [this](const std::vector<std::string>& names) { view.RefreshList(names); });
}

void FileCommands::Delete() {
    std::vector<std::string> names;
    if (!TakeSelection(names) || view.IsShowing(PlaceKind::kDrives)) return;
    if (view.IsShowing(PlaceKind::kShares))
        DeleteShares(names);
    else
        DeleteFiles(names);
    view.RefreshList();
}

void FileCommands::DeleteFiles(const std::vector<std::string>& names) const {
    std::string folder;  // with its separator
    if (!Accept(view.Rows().FindPath("", folder))) return;
    RunFileOperation(view.GetSafeHwnd(), FO_DELETE, FileListOf(folder, names).c_str(), "");
}

// On a failure, this share and all below it in the list stay shared.
void FileCommands::DeleteShares(const std::vector<std::string>& names) const {
    if (MessageBoxA(view.GetSafeHwnd(), "Are you sure want to delete specified shared resource", "Deletion",
                    MB_YESNO | MB_ICONQUESTION) == IDYES)
        Accept(RemoveShares(names));
}

void FileCommands::Rename() {
    std::string name;
    std::string renamed;
    if (!view.IsShowing(PlaceKind::kFolder) || !TakeTopmost(name)) return;
    if (MayWorkOnFolder()) {
        CRenameDlg dialog(&view);
        dialog.folder = view.Rows().Folder();
        dialog.oldName = name;
        dialog.mayRename = [this] { return MayWorkOnFolder(); };
        dialog.DoModal();
        renamed = dialog.newName;
    }
    view.RefreshList({renamed});
}

void FileCommands::CreateNew() {
    if (view.IsShowing(PlaceKind::kShares))
        CreateNewShare();
    else if (view.IsShowing(PlaceKind::kFolder))
        CreateNewFolder();
    else
        ShowInfoBox(view.GetSafeHwnd(),
                    "Please, enter the disk volume where you would like to create new folder.");
}

void FileCommands::CreateNewFolder() {
    std::string made;
    if (MayWorkOnFolder()) {
        CNewFolderDlg dialog(&view);
        if (dialog.DoModal() != IDOK) return;
        if (!Accept({view.Rows().MakeCurrent()})) return;
        if (CreateDirectoryA(PathFromTyped(dialog.folderName).c_str(), nullptr) == FALSE) {
            ShowLastErrorBox(view.GetSafeHwnd());
            return;
        }
        made = dialog.folderName;
    }
    view.RefreshList({made});
}

// The system's own wizard may still be open when this returns. Then the user must refresh the list.
void FileCommands::CreateNewShare() const {
    HWND owner = view.GetParent()->GetSafeHwnd();
    if (!OpenByShell(owner, "shrpubw")) ShowErrorBox(owner, "Cannot open \"Create a share folder wizard\"");
}

void FileCommands::EditAttributes() {
    if (view.IsShowing(PlaceKind::kDrives)) {
        ShowInfoBox(view.GetSafeHwnd(), "Cannot set attributes for disk drive.");
        return;
    }
    Place place;
    const std::vector<std::string> names = view.SelectedNames();
    if (names.empty() || !view.IsShowing(PlaceKind::kFolder) || !Accept(view.Rows().Hold(names, place)))
        return;
    CAttributesDlg(place, &view).DoModal();
}

void FileCommands::ShowProperties() {
    std::string name;
    std::string path;
    if (view.List().GetItemCount() == 0 || !TakeTopmost(name) || !Accept(view.Rows().FindPath(name, path)))
        return;
    std::basic_string<WCHAR> widePath;
    SHObjectProperties(view.GetSafeHwnd(), SHOP_FILEPATH, AnsiToWide(path, widePath), nullptr);
}

// One a line. Without a selection, the folder shown is meant.
void FileCommands::CopyHostPaths() {
    std::vector<std::string> names = view.SelectedNames();
    if (names.empty() && view.IsShowing(PlaceKind::kFolder)) names.emplace_back();
    if (names.empty()) return ShowInfoBox(view.GetSafeHwnd(), kSelectItems);
    std::string text;
    for (const std::string& name : names) {
        std::string path;
        if (!Accept(view.Rows().FindPath(name, path))) return;
        const bool isLast = &name == &names.back();
        text += HostPathFromPath(path) + (isLast ? "" : "\n");
    }
    CopyTextOrTell(view, text);
}

}  // namespace permora
