// How rows look: texts, and the program's own icons by class of file.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "platform/api/directory_search.h"

namespace permora {

// Columns of the browser's list.
inline constexpr int kNameColumn = 0;
inline constexpr int kTypeColumn = 1;
inline constexpr int kSizeColumn = 2;
inline constexpr int kModifiedColumn = 3;
// Those of every source, and the width of each.
inline constexpr int kFixedColumns = 4;
inline constexpr int kColumnWidth = 150;

// Images with which both image lists of a folder begin, as icon resources in the order of the images.
inline constexpr int kFolderImage = 0;
inline constexpr int kFileImage = 1;
inline constexpr std::size_t kFolderImageCount = 14;
extern const std::array<unsigned int, kFolderImageCount> kFolderImages;

// The image of a row under own icons: a folder's, or that of the file's class by its extension (the whole
// name where there is no dot), whatever its case.
int OwnIconIndex(const WIN32_FIND_DATAA& found);

// "1 KB": the largest unit, up to terabytes, of which there is at least one, without its fraction.
std::string FormatSize(std::uint64_t bytes);

// "7:3:2010  5:14" is 14:05 on 7 March 2010, universal time: day, month, year, minute, hour. Empty for a
// time that no calendar has.
std::string ModifiedText(const FILETIME& time);

}  // namespace permora
