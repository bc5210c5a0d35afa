// The program's own clipboard format, registered as "ZELClipboardData": one block with the files that were
// cut or copied.
//
// It begins with the system's DROPFILES structure, little-endian, in which `fNC` is the operation:
//
//      0  offset of the list from the beginning of the block
//      4  x, y (two signed numbers, not used)
//     12  1: copy, 0: cut
//     16  0: the list is 8-bit text in the ANSI code page, else UTF-16
//     20  the list (file_list.h)
//
// The program writes the list at 20, in 8-bit text. A block that it reads may come from anyone.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "browser/file_list.h"

namespace permora {

inline constexpr const char* kClipboardFormatName = "ZELClipboardData";

// The block for `names` in `folder`. The paths in it have a backslash between the two also where the folder
// ends in one: "C:\\a.txt".
std::vector<std::uint8_t> ClipboardBlockOf(TransferKind kind, const std::string& folder,
                                           std::span<const std::string> names);

// Reads the block into `transfer` and returns null. If the block is damaged, returns a message for the user
// and leaves `transfer` unchanged.
const char* ReadClipboardBlock(std::span<const std::uint8_t> block, FileTransfer& transfer);

}  // namespace permora
