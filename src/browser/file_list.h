// Lists of files as the system's file operations take them: full paths, each with its NUL, and one more NUL
// after the last.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "platform/api/text.h"

namespace permora {

enum class TransferKind { kMove, kCopy };

// The request of a paste. Its list is 8-bit text in the ANSI code page or UTF-16; the other one is empty.
struct FileTransfer {
    TransferKind kind = TransferKind::kCopy;
    bool isWide = false;
    std::string list;
    std::basic_string<WCHAR> wideList;
};

// The most files that are pasted at once.
inline constexpr std::size_t kMostFiles = 1'000'000;

// Messages about a list that cannot be used, whatever its format.
inline constexpr const char* kDamagedFileList = "Error: the list of files on the clipboard is damaged.";
inline constexpr const char* kNoPathsOfFiles =
    "Error: the clipboard holds something else than full paths of files and folders.";
inline constexpr const char* kTooManyFiles = "Error: there are too many files on the clipboard.";

// The list of `names`, each behind `prefix`.
std::string FileListOf(std::string_view prefix, std::span<const std::string> names);

// Whether a path from elsewhere is one that a file or folder can have: from a drive or a server on, without
// "." and "..", wildcards and what else no name has, and not a drive itself. A separator at the end is
// refused too, since it would lead on through a link.
bool IsPathOfFile(std::string_view path);
bool IsPathOfFile(std::basic_string_view<WCHAR> path);

}  // namespace permora
