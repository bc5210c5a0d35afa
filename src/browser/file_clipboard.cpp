#include "browser/file_clipboard.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "browser/clipboard_block.h"
#include "browser/desktop_files.h"
#include "browser/folder_paths.h"
#include "browser/shell_items.h"
#include "framework/clipboard.h"
#include "security/message_boxes.h"
#include "security/text_conversion.h"

namespace permora {
namespace {

constexpr const char* kClipboardClosed = "Error: cannot open the clipboard.";
constexpr const char* kClipboardSilent =
    "Error: the program that the clipboard's contents are from does not answer.";

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

// Reads the first format that the clipboard has; otherwise leaves `contents` unchanged. Empty when the data
// is too large.
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

std::vector<std::string> NamesIn(const FileTransfer& transfer) {
    std::vector<std::string> names;
    std::size_t place = 0;
    while (place < transfer.list.size() && transfer.list[place] != '\0') {
        const std::string path = transfer.list.c_str() + place;
        names.push_back(NameInFolder(path));
        place += path.size() + 1;
    }
    for (place = 0; place < transfer.wideList.size() && transfer.wideList[place] != 0;) {
        const LPCWSTR path = transfer.wideList.c_str() + place;
        names.push_back(NameInFolder(WideToAnsi(path)));
        place += std::char_traits<WCHAR>::length(path) + 1;
    }
    return names;
}

}  // namespace

bool HasFilesToPaste() {
    for (const char* name : {kClipboardFormatName, kGnomeFilesFormatName, kUriListFormatName})
        if (Clipboard::IsFormatAvailable(RegisterClipboardFormat(name))) return true;
    return false;
}

void PutFilesOnClipboard(CWnd& owner, TransferKind kind, const std::string& folder,
                         std::span<const std::string> names) {
    Clipboard clipboard(owner);
    if (!clipboard.IsOpen()) {
        ShowErrorBox(owner.GetSafeHwnd(), kClipboardClosed);
        return;
    }
    DesktopFileTexts texts;
    bool isSet = clipboard.Empty() && clipboard.SetData(RegisterClipboardFormat(kClipboardFormatName),
                                                        ClipboardBlockOf(kind, folder, names));
    if (isSet && MakeDesktopFileTexts(kind, folder, names, texts)) isSet = OfferToDesktop(clipboard, texts);
    if (!isSet) ShowErrorBox(owner.GetSafeHwnd(), "Error: cannot set clipboard data.");
}

void PasteFiles(CWnd& owner, const std::string& target, const std::function<bool()>& mayPaste,
                const std::function<void(const std::vector<std::string>& names)>& refresh) {
    Clipboard clipboard(owner);
    if (!clipboard.IsOpen()) {
        ShowErrorBox(owner.GetSafeHwnd(), kClipboardClosed);
        return;
    }
    ClipboardContents contents;
    const ClipboardAnswer answer = AskForContents(clipboard, contents);
    FileTransfer transfer;
    bool isDone = false;
    if (answer == ClipboardAnswer::kSilence) {
        ShowErrorBox(owner.GetSafeHwnd(), kClipboardSilent);
    } else if (answer == ClipboardAnswer::kGiven) {
        const char* fault = ReadContents(contents, transfer);
        if (fault != nullptr) {
            ShowErrorBox(owner.GetSafeHwnd(), fault);
        } else if (mayPaste()) {
            Transfer(owner.GetSafeHwnd(), transfer, target);
            isDone = true;
        }
    }
    refresh(isDone ? NamesIn(transfer) : std::vector<std::string>());
    if (!isDone || transfer.kind == TransferKind::kCopy) return;
    // A cut file is pasted once. Another program may have put something else there meanwhile.
    ClipboardContents now;
    if (AskForContents(clipboard, now) == ClipboardAnswer::kGiven && now == contents) clipboard.Empty();
}

}  // namespace permora
