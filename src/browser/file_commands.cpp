#include "browser/file_commands.h"

#include <memory>
#include <utility>

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
namespace {

VolumeTask FolderMaker(std::shared_ptr<const RowSource> rows, const std::string& typed) {
    return [rows = std::move(rows), path = PathFromTyped(typed)](PatientWork::Running& running) {
        const DWORD error = rows->MakeCurrent();
        if (error != ERROR_SUCCESS || running.isGivenUp) return Outcome{error};
        return Outcome{CreateDirectoryA(path.c_str(), nullptr) != FALSE ? DWORD{ERROR_SUCCESS}
                                                                        : GetLastError()};
    };
}

}  // namespace

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
    view.Tell(outcome);
    return outcome.IsDone();
}

bool FileCommands::MayWorkOnFolder() const {
    return Accept(view.VerifyRows());
}

void FileCommands::PutOnClipboard(TransferKind kind) {
    std::vector<std::string> names;
    if (!view.IsShowing(PlaceKind::kFolder) || !TakeSelection(names) || !MayWorkOnFolder()) return;
    PutFilesOnClipboard(view, kind, view.Rows().Folder(), names);
}

void FileCommands::Paste() {
    if (view.IsShowing(PlaceKind::kFolder))
        PasteFiles(
            view, view.Rows().Folder(), [this] { return MayWorkOnFolder(); },
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
    if (!Accept(view.FindPath("", folder))) return;
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
    bool isFile = false;
    const auto ask = [rows = view.SharedRows(), name](bool& found, PatientWork::Running&) {
        std::string path;
        Outcome outcome = rows->FindPath(name, path);
        if (outcome.IsDone()) found = (GetFileAttributesA(path.c_str()) & FILE_ATTRIBUTE_DIRECTORY) == 0;
        return outcome;
    };
    if (Accept(view.AskFor<bool>(view.Rows().Volume(), isFile, ask))) {
        CRenameDlg dialog(&view);
        dialog.isFile = isFile;
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
        made = dialog.folderName;
        if (!Accept(view.Ask(view.Rows().Volume(), FolderMaker(view.SharedRows(), made)))) return;
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
    if (names.empty() || !view.IsShowing(PlaceKind::kFolder) || !Accept(view.HoldRows(names, place))) return;
    DWORD first = 0;
    const std::string volume = view.Rows().Volume();
    const auto read = [place](DWORD& found, PatientWork::Running&) {
        return Outcome{ReadFirstAttributes(place, found)};
    };
    if (!AcceptAttributes("Retrieving file attributes", view.AskFor<DWORD>(volume, first, read))) return;
    CAttributesDlg dialog(names.front(), first, &view);
    if (dialog.DoModal() != IDOK) return;
    const auto assign = [place, boxes = dialog.boxes,
                         before = BoxesOf(first)](PatientWork::Running& running) {
        const auto goOn = [&running] {
            ++running.done;
            return !running.isGivenUp;
        };
        return Outcome{AssignAttributes(place, boxes, before, goOn)};
    };
    AcceptAttributes("Attributes assignment", view.Ask(volume, assign));
}

bool FileCommands::AcceptAttributes(const char* step, const Outcome& outcome) const {
    if (outcome.IsDone() || IsUnanswered(outcome)) return Accept(outcome);
    ShowErrorWithSystemText(view.GetSafeHwnd(), step, outcome.code);
    return false;
}

void FileCommands::ShowProperties() {
    std::string name;
    std::string path;
    if (view.List().GetItemCount() == 0 || !TakeTopmost(name) || !Accept(view.FindPath(name, path))) return;
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
        if (!Accept(view.FindPath(name, path))) return;
        const bool isLast = &name == &names.back();
        text += HostPathFromPath(path) + (isLast ? "" : "\n");
    }
    CopyTextOrTell(view, text);
}

}  // namespace permora
