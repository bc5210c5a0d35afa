#include "platform/linux/files/current_directory.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "platform/api/files.h"
#include "platform/linux/base/failure.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/path_text.h"
#include "platform/linux/files/paths.h"

namespace permora::host {
namespace {

DWORD CurrentPath(std::string& path) {
    std::string hostPath;
    const DWORD error = CurrentHostPath(hostPath);
    if (error == ERROR_SUCCESS) path = PathFromHost(hostPath);
    return error;
}

// The components of `current`, an absolute path, that remain after going up. Going up stops at the root.
std::vector<std::string_view> FolderAbove(const PathText& current, std::size_t ascents) {
    std::vector<std::string_view> components = current.components;
    components.resize(components.size() - std::min(ascents, components.size()));
    return components;
}

DWORD FullPath(const char* path, std::string& fullPath) {
    PathText text;
    DWORD error = ParsePath(path == nullptr ? "" : path, text);
    if (error != ERROR_SUCCESS) return error;

    std::vector<std::string_view> components;
    std::string currentPath;
    if (text.drive == 0 || text.start == PathText::Start::kCurrentFolder) {
        error = CurrentPath(currentPath);
        if (error != ERROR_SUCCESS) return error;
        PathText current;
        error = ParsePath(currentPath, current);
        if (error != ERROR_SUCCESS) return error;
        if (text.drive == 0) text.drive = current.drive;
        const bool startsThere = text.start == PathText::Start::kCurrentFolder && text.drive == current.drive;
        if (startsThere) components = FolderAbove(current, text.ascents);
    }
    components.insert(components.end(), text.components.begin(), text.components.end());
    std::string joined = JoinPath(text.drive, components);
    if (text.endsWithSeparator && !components.empty()) joined += '\\';
    fullPath = std::move(joined);
    return ERROR_SUCCESS;
}

}  // namespace

DWORD HandOut(const std::string& text, DWORD size, LPSTR buffer) {
    if (text.size() >= size) return static_cast<DWORD>(text.size() + 1);
    std::memcpy(buffer, text.c_str(), text.size() + 1);
    return static_cast<DWORD>(text.size());
}

DWORD CurrentHostPath(std::string& hostPath) {
    // The C library's form with a buffer of its own also works where the path is longer than PATH_MAX.
    const std::unique_ptr<char, decltype(&free)> path(getcwd(nullptr, 0), &free);
    if (!path) return errno == ENOENT ? ERROR_PATH_NOT_FOUND : ErrorFromErrno(errno);
    if (*path != '/') return ERROR_PATH_NOT_FOUND;
    hostPath = path.get();
    return ERROR_SUCCESS;
}

}  // namespace permora::host

using permora::host::Fail;

DWORD WINAPI GetCurrentDirectoryA(DWORD size, LPSTR buffer) {
    std::string path;
    const DWORD error = permora::host::CurrentPath(path);
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
        return 0;
    }
    return permora::host::HandOut(path, size, buffer);
}

BOOL WINAPI SetCurrentDirectoryA(LPCSTR path) {
    permora::host::ResolvedObject resolved;
    DWORD error = permora::host::ResolvePath(path, resolved);
    if (error == ERROR_SUCCESS) error = resolved.object.RequireFolder();
    if (error != ERROR_SUCCESS) return Fail(error);
    if (fchdir(resolved.object.Descriptor()) != 0) return Fail(permora::host::ErrorFromErrno(errno));
    return TRUE;
}

DWORD WINAPI GetFullPathNameA(LPCSTR path, DWORD size, LPSTR buffer, LPSTR* filePart) {
    std::string fullPath;
    const DWORD error = permora::host::FullPath(path, fullPath);
    if (error != ERROR_SUCCESS) {
        SetLastError(error);
        return 0;
    }
    const DWORD length = permora::host::HandOut(fullPath, size, buffer);
    if (filePart != nullptr && length == fullPath.size()) {
        const std::size_t nameStart = fullPath.rfind('\\') + 1;
        *filePart = nameStart < fullPath.size() ? buffer + nameStart : nullptr;
    }
    return length;
}
