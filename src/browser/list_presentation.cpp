#include "browser/list_presentation.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "platform/api/files.h"
#include "platform/ascii.h"
#include "resources/resource_ids.h"

namespace permora {
namespace {

struct FileClass {
    std::string_view extension;
    int image;
};

constexpr FileClass kFileClasses[] = {
    {"zip", 2},  {"exe", 3},  {"com", 3},  {"bat", 3},  {"html", 4}, {"htm", 4},  {"bmp", 5},
    {"tga", 5},  {"jpg", 5},  {"gif", 5},  {"avi", 6},  {"mov", 6},  {"mpg", 6},  {"mpeg", 6},
    {"mp3", 6},  {"wav", 6},  {"reg", 7},  {"dll", 8},  {"ocx", 8},  {"sys", 8},  {"cab", 9},
    {"doc", 10}, {"rtf", 10}, {"wri", 10}, {"xls", 11}, {"rar", 12}, {"chm", 13},
};

}  // namespace

constexpr std::array<unsigned int, kFolderImageCount> kFolderImages = {
    IDI_FOLDER,        IDI_FILE,         IDI_FILE_ZIP,      IDI_FILE_PROGRAM,
    IDI_FILE_WEB_PAGE, IDI_FILE_PICTURE, IDI_FILE_MEDIA,    IDI_FILE_REGISTRY,
    IDI_FILE_LIBRARY,  IDI_FILE_CABINET, IDI_FILE_DOCUMENT, IDI_FILE_SPREADSHEET,
    IDI_FILE_RAR,      IDI_FILE_HELP};

int OwnIconIndex(const WIN32_FIND_DATAA& found) {
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return kFolderImage;
    std::string_view extension(found.cFileName);
    extension.remove_prefix(extension.rfind('.') + 1);  // nothing where there is no dot
    const auto* const known = std::ranges::find_if(kFileClasses, [extension](const FileClass& each) {
        return EqualsIgnoringCase(extension, each.extension);
    });
    return known != std::end(kFileClasses) ? known->image : kFileImage;
}

std::string FormatSize(std::uint64_t bytes) {
    constexpr std::array kUnits = {" Bytes", " KB", " MB", " GB", " TB"};
    constexpr std::uint64_t kStep = 1024;
    std::size_t unit = 0;
    for (; bytes >= kStep && unit + 1 < kUnits.size(); ++unit)
        bytes /= kStep;
    return std::to_string(bytes) + kUnits[unit];
}

std::string ModifiedText(const FILETIME& time) {
    SYSTEMTIME calendar{};
    if (FileTimeToSystemTime(&time, &calendar) == FALSE) return {};
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%d:%d:%d  %d:%d", calendar.wDay, calendar.wMonth, calendar.wYear,
                  calendar.wMinute, calendar.wHour);
    return text.data();
}

}  // namespace permora
