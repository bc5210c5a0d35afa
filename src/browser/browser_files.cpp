// Commands that work on files: the clipboard, and the shell's file operations.
#include <algorithm>
#include <string_view>
#include <utility>

#include "browser/browser_view.h"
#include "browser/clipboard_block.h"
#include "browser/desktop_files.h"
#include "browser/list_presentation.h"
#include "browser/new_folder_dialog.h"
#include "browser/rename_dialog.h"
#include "browser/shell_items.h"
#include "framework/clipboard.h"
#include "platform/api/files.h"
#include "platform/api/messages.h"
#include "platform/api/shell.h"
#include "platform/host_path.h"
#include "security/message_boxes.h"

namespace permora {
namespace {

constexpr const char* kClipboardClosed = "Error: cannot open the clipboard.";
constexpr const char* kClipboardSilent =
    "Error: the program that the clipboard's contents are from does not answer.";

// Has room for `bytes`; ends the process when there is no memory.
UniqueLocal<char> AllocateOrEnd(HWND owner, std::size_t bytes) {
    UniqueLocal<char> block(static_cast<char*>(LocalAlloc(LMEM_FIXED, bytes)));
    if (!block) ShowFatalLastErrorBox(owner);
    return block;
}

std::span<const std::uint8_t> BytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// Beside the program's own format, for other programs of the desktop.
bool OfferToDesktop(Clipboard& clipboard, const DesktopFileTexts& texts) {
    const std::pair<const char*, const std::string&> offers[] = {
        {kUriListFormatName, texts.uriList},
        {kGnomeFilesFormatName, texts.gnomeFiles},
        {kKdeCutFormatName, texts.kdeCut},
    };
    return std::ranges::all_of(offers, [&clipboard](const auto& offer) {
        return clipboard.SetData(RegisterClipboardFormat(offer.first), BytesOf(offer.second));
    });
}

struct ClipboardContents {
    unsigned int format = 0;
    std::vector<std::uint8_t> bytes;
    std::vector<std::uint8_t> kdeCut;  // beside a list of addresses

    bool operator==(const ClipboardContents&) const = default;
};

// What is there in the first format that is; else `contents` is unchanged. Empty bytes where there is more
// than is taken.
ClipboardAnswer AskForContents(const Clipboard& clipboard, ClipboardContents& contents) {
    if (clipboard.AwaitFormats() == ClipboardAnswer::kSilence) return ClipboardAnswer::kSilence;
    for (const char* name : {kClipboardFormatName, kGnomeFilesFormatName, kUriListFormatName}) {
        ClipboardContents found;
        found.format = RegisterClipboardFormat(name);
        if (!Clipboard::IsFormatAvailable(found.format)) continue;
        if (clipboard.GetData(found.format, found.bytes) == ClipboardAnswer::kSilence ||
            (name == kUriListFormatName && clipboard.GetData(RegisterClipboardFormat(kKdeCutFormatName),
                                                             found.kdeCut) == ClipboardAnswer::kSilence))
            return ClipboardAnswer::kSilence;
        contents = std::move(found);
        return ClipboardAnswer::kGiven;
    }
    return ClipboardAnswer::kNothing;
}

const char* ReadContents(const ClipboardContents& contents, FileTransfer& transfer) {
    if (contents.format == RegisterClipboardFormat(kClipboardFormatName))
        return ReadClipboardBlock(contents.bytes, transfer);
    if (contents.format == RegisterClipboardFormat(kGnomeFilesFormatName))
        return ReadGnomeFiles(contents.bytes, transfer);
    return ReadUriList(contents.bytes, contents.kdeCut, transfer);
}

void Transfer(HWND owner, const FileTransfer& transfer, const std::string& folder) {
    const UINT function = transfer.kind == TransferKind::kCopy ? FO_COPY : FO_MOVE;
    if (transfer.isWide)
        RunFileOperation(owner, function, transfer.wideList.c_str(), folder);
    else
        RunFileOperation(owner, function, transfer.list.c_str(), folder);
}

}  // namespace

bool BrowserView::CanPaste() {
    for (const char* name : {kClipboardFormatName, kGnomeFilesFormatName, kUriListFormatName})
        if (Clipboard::IsFormatAvailable(RegisterClipboardFormat(name))) return true;
    return false;
}

bool BrowserView::MayWorkOnRows() const {
    if (ReturnToShownFolder()) return true;
    ShowLastErrorBox(GetSafeHwnd());
    return false;
}

void BrowserView::CutSelected() {
    CopyToClipboard(TransferKind::kMove);
}

void BrowserView::CopySelected() {
    CopyToClipboard(TransferKind::kCopy);
}

void BrowserView::CopyToClipboard(TransferKind kind) {
    if (driveListShown) return;
    const std::span<const LPCSTR> names = GetSelectedNames();
    if (names.empty()) {
        ShowInfoBox(GetSafeHwnd(), kSelectItems);
        return;
    }
    if (MayWorkOnRows()) PutOnClipboard(kind, names);
    ReleaseSelection();
}

void BrowserView::PutOnClipboard(TransferKind kind, std::span<const LPCSTR> names) {
    const std::size_t size = ClipboardBlockSize(currentFolder, names);
    const UniqueLocal<char> memory = AllocateOrEnd(GetSafeHwnd(), size);
    const std::span<std::uint8_t> block(reinterpret_cast<std::uint8_t*>(memory.get()), size);
    WriteClipboardBlock(kind, currentFolder, names, block);

    Clipboard clipboard(*this);
    if (!clipboard.IsOpen()) {
        ShowErrorBox(GetSafeHwnd(), kClipboardClosed);
        return;
    }
    DesktopFileTexts texts;
    bool isSet = clipboard.Empty() && clipboard.SetData(clipboardFormat, block);
    if (isSet && MakeDesktopFileTexts(kind, currentFolder, names, texts))
        isSet = OfferToDesktop(clipboard, texts);
    if (!isSet) ShowErrorBox(GetSafeHwnd(), "Error: cannot set clipboard data.");
}

void BrowserView::PasteFromClipboard() {
    if (driveListShown) return;
    Clipboard clipboard(*this);
    if (!clipboard.IsOpen()) {
        ShowErrorBox(GetSafeHwnd(), kClipboardClosed);
        return;
    }
    ClipboardContents contents;
    const ClipboardAnswer answer = AskForContents(clipboard, contents);
    FileTransfer transfer;
    bool isDone = false;
    if (answer == ClipboardAnswer::kSilence) {
        ShowErrorBox(GetSafeHwnd(), kClipboardSilent);
    } else if (answer == ClipboardAnswer::kGiven) {
        const char* fault = ReadContents(contents, transfer);
        if (fault != nullptr) {
            ShowErrorBox(GetSafeHwnd(), fault);
        } else if (MayWorkOnRows()) {
            Transfer(GetSafeHwnd(), transfer, currentFolder);
            isDone = true;
        }
    }
    RefreshList();
    if (!isDone || transfer.kind == TransferKind::kCopy) return;
    // What was cut is pasted once. Another program may have put something else there in the meantime.
    ClipboardContents now;
    if (AskForContents(clipboard, now) == ClipboardAnswer::kGiven && now == contents) clipboard.Empty();
}

void BrowserView::DeleteSelected() {
    const std::span<const LPCSTR> names = GetSelectedNames();
    if (names.empty()) {
        ShowInfoBox(GetSafeHwnd(), kSelectItems);
        return;
    }
    if (!driveListShown) {
        if (MayWorkOnRows()) DeleteFiles(names);
        RefreshList();
    }
    ReleaseSelection();
}

void BrowserView::DeleteFiles(std::span<const LPCSTR> names) {
    const std::string prefix = PathOfRow("");
    const UniqueLocal<char> files = AllocateOrEnd(GetSafeHwnd(), FileListSize(prefix, names));
    WriteFileList(prefix, names, files.get());
    RunFileOperation(GetSafeHwnd(), FO_DELETE, files.get(), "");
}

void BrowserView::RenameSelected() {
    if (driveListShown) return;
    const int row = list.NextSelected(0);
    if (row < 0) {
        ShowInfoBox(GetSafeHwnd(), kSelectItem);
        return;
    }
    if (MayWorkOnRows()) {
        CRenameDlg dialog(this);
        dialog.folder = currentFolder;
        dialog.oldName = list.GetItemText(row, kNameColumn);
        dialog.mayRename = [this] { return MayWorkOnRows(); };
        dialog.DoModal();
    }
    RefreshList();
}

void BrowserView::CreateNewFolder() {
    if (driveListShown) {
        ShowInfoBox(GetSafeHwnd(),
                    "Please, enter the disk volume where you would like to create new folder.");
        return;
    }
    if (!MayWorkOnRows()) {
        RefreshList();
        return;
    }
    CNewFolderDlg dialog(this);
    if (dialog.DoModal() != IDOK) return;
    if (CreateDirectoryA(PathFromTyped(dialog.folderName).c_str(), nullptr) == FALSE) {
        ShowLastErrorBox(GetSafeHwnd());
        return;
    }
    RefreshList();
}

}  // namespace permora
