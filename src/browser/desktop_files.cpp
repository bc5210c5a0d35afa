#include "browser/desktop_files.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/file_url.h"

namespace permora {
namespace {

std::string_view TextOf(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Removes and returns the first line of `text`, without its end. Some programs end a text with a NUL.
std::string_view TakeLine(std::string_view& text) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    while (line.ends_with('\r') || line.ends_with('\0'))
        line.remove_suffix(1);
    return line;
}

const char* ReadAddresses(TransferKind kind, std::string_view text, FileTransfer& transfer) {
    std::vector<std::string_view> urls;
    while (!text.empty()) {
        const std::string_view line = TakeLine(text);
        if (line.empty() || line.starts_with('#')) continue;
        if (urls.size() == kMostFiles) return kTooManyFiles;
        urls.push_back(line);
    }
    if (urls.empty()) return kDamagedFileList;
    FileTransfer read;
    read.kind = kind;
    for (const std::string& path : PathsFromFileUrls(urls)) {
        if (!IsPathOfFile(path)) return kFilesElsewhere;
        read.list += path;
        read.list += '\0';
    }
    read.list += '\0';
    transfer = std::move(read);
    return nullptr;
}

}  // namespace

bool MakeDesktopFileTexts(TransferKind kind, const std::string& folder, std::span<const std::string> names,
                          DesktopFileTexts& texts) {
    const std::string folderUrl = FileUrlOf(folder);
    if (folderUrl.empty()) return false;
    const bool isCut = kind == TransferKind::kMove;
    DesktopFileTexts made{{}, isCut ? "cut" : "copy", isCut ? "1" : "0"};
    for (const std::string& name : names) {
        const std::string part = FileUrlPart(name);
        if (part.empty()) return false;
        std::string url = folderUrl;
        url += '/';
        url += part;
        made.uriList += url + "\r\n";
        made.gnomeFiles += '\n' + url;
    }
    texts = std::move(made);
    return true;
}

const char* ReadGnomeFiles(std::span<const std::uint8_t> text, FileTransfer& transfer) {
    std::string_view rest = TextOf(text);
    const std::string_view operation = TakeLine(rest);
    if (operation != "cut" && operation != "copy") return kDamagedFileList;
    return ReadAddresses(operation == "cut" ? TransferKind::kMove : TransferKind::kCopy, rest, transfer);
}

const char* ReadUriList(std::span<const std::uint8_t> text, std::span<const std::uint8_t> kdeCut,
                        FileTransfer& transfer) {
    const bool isCut = TextOf(kdeCut).starts_with('1');
    return ReadAddresses(isCut ? TransferKind::kMove : TransferKind::kCopy, TextOf(text), transfer);
}

}  // namespace permora
