// A path of platform/api/files.h taken apart, without looking at the disk.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/api/errors.h"

namespace permora::host {

constexpr bool IsSeparator(char character) {
    return character == '\\' || character == '/';
}

// The drive letter, upper case, with which `path` begins ("c:..."), or 0.
char DriveLetterOf(std::string_view path);

struct PathText {
    enum class Start {
        kRoot,           // of the drive
        kCurrentFolder,  // of the drive
    };

    char drive = 0;  // upper case; 0: the drive of the current directory
    Start start = Start::kCurrentFolder;
    std::size_t ascents = 0;  // how many ".." lead above the current folder; none lead above a root
    std::vector<std::string_view> components;  // as shown; "." and ".." are worked off
    // The path ends with a separator: it names a folder, and a link there is followed.
    bool endsWithSeparator = false;
};

// Views in `text` point into `path`. 0 or an error code: ERROR_PATH_NOT_FOUND for an empty path,
// ERROR_BAD_NETPATH for one that begins with two separators (a server's, or a device's).
DWORD ParsePath(std::string_view path, PathText& text);

// "C:\a\b", and "C:\" when there are no components.
std::string JoinPath(char drive, const std::vector<std::string_view>& components);

}  // namespace permora::host
