// Lists of files as the desktop's own programs put them on the clipboard: addresses, a line for each.
//
//   text/uri-list                    the addresses, with comments behind "#" (RFC 2483)
//   x-special/gnome-copied-files     "copy" or "cut" before them
//   application/x-kde-cutselection   beside text/uri-list: "1" for files that were cut
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "browser/file_list.h"

namespace permora {

inline constexpr const char* kUriListFormatName = "text/uri-list";
inline constexpr const char* kGnomeFilesFormatName = "x-special/gnome-copied-files";
inline constexpr const char* kKdeCutFormatName = "application/x-kde-cutselection";

struct DesktopFileTexts {
    std::string uriList;
    std::string gnomeFiles;
    std::string kdeCut;
};

// Of `names` in `folder`, in all three formats. False when one of them has no address; `texts` is then
// unchanged.
bool MakeDesktopFileTexts(TransferKind kind, const std::string& folder, std::span<const std::string> names,
                          DesktopFileTexts& texts);

// Read text from another program, which is not to be trusted, into `transfer` and return null. Unless all
// addresses lead to files and folders of this computer, return a message for the user and leave `transfer`
// unchanged.
const char* ReadGnomeFiles(std::span<const std::uint8_t> text, FileTransfer& transfer);
// `kdeCut` is empty when that format is not offered.
const char* ReadUriList(std::span<const std::uint8_t> text, std::span<const std::uint8_t> kdeCut,
                        FileTransfer& transfer);

inline constexpr const char* kFilesElsewhere =
    "Error: the clipboard holds files that are not in a folder of this computer.";

}  // namespace permora
