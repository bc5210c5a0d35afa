#include "cli/target.h"

#include <algorithm>
#include <utility>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/host_path.h"

namespace permora {
namespace {

// "C:\": the three characters before which no further part of a path stands.
constexpr std::size_t kDriveRootLength = 3;

DWORD FullPath(const std::string& path, std::string& full) {
    std::string buffer;
    DWORD length = GetFullPathNameA(path.c_str(), 0, nullptr, nullptr);
    // The answer depends on the current directory, which someone else may rename between the two calls.
    while (length > buffer.size()) {
        buffer.resize(length);
        length = GetFullPathNameA(path.c_str(), length, buffer.data(), nullptr);
    }
    if (length == 0) return GetLastError();
    buffer.resize(length);
    full = std::move(buffer);
    return ERROR_SUCCESS;
}

// The attributes are those of a folder; a link to one has others.
bool AreOfFolder(DWORD attributes) {
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
}

}  // namespace

DWORD MakeTarget(const std::string& argument, Target& target) {
    std::string path;
    const DWORD error = FullPath(PathFromArgument(argument.c_str()), path);
    if (error != ERROR_SUCCESS) return error;

    const bool endsWithSeparator = path.ends_with('\\');
    while (path.size() > kDriveRootLength && path.back() == '\\')
        path.pop_back();
    if (path.size() < kDriveRootLength || path[1] != ':' || path[2] != '\\') return ERROR_INVALID_NAME;
    if (path.size() == kDriveRootLength) {
        target = {argument, "", path, ItemPlace::kDriveRoot};
        return ERROR_SUCCESS;
    }
    // The separator stays at the folder's end: the last component of a path is not followed when it is a
    // link, but a link in the middle of what the user typed means the folder behind it.
    const std::size_t nameStart = path.rfind('\\') + 1;
    target = {argument, path.substr(0, nameStart), path.substr(nameStart), ItemPlace::kCurrentDirectory,
              endsWithSeparator};
    return ERROR_SUCCESS;
}

DWORD EnterFolder(const Target& target) {
    if (target.folder.empty()) return ERROR_SUCCESS;
    if (SetCurrentDirectoryA(target.folder.c_str()) == FALSE) return GetLastError();
    if (!target.endsWithSeparator) return ERROR_SUCCESS;
    const DWORD attributes = GetFileAttributesA(target.name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return GetLastError();
    return AreOfFolder(attributes) ? ERROR_SUCCESS : ERROR_DIRECTORY;
}

std::string TypedPath(const Target& target, const std::string& below) {
    const std::string& typed = target.argument;
    const std::size_t start = below.find_first_not_of('\\');
    if (start == below.npos) return typed;
    std::string rest = below.substr(start);
    const char separator = typed.find('\\') == typed.npos ? '/' : '\\';
    std::replace(rest.begin(), rest.end(), '\\', separator);
    const bool endsWithSeparator = typed.find_last_of("/\\") + 1 == typed.size();
    return typed + (endsWithSeparator ? "" : std::string(1, separator)) + rest;
}

bool IsFolder(const Target& target) {
    const DWORD attributes = GetFileAttributesA(target.name.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && AreOfFolder(attributes);
}

}  // namespace permora
