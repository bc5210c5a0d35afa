#include "platform/host_path.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/linux/files/current_directory.h"
#include "platform/linux/files/drives.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/path_text.h"
#include "platform/linux/files/paths.h"
#include "platform/network_path.h"

namespace permora {
namespace {

bool IsPathOfSystem(std::string_view argument) {
    return argument.starts_with('\\') || host::DriveLetterOf(argument) != 0;
}

}  // namespace

std::string PathFromArgument(const char* argument) {
    const std::string_view text(argument);
    if (text.empty() || IsPathOfSystem(text)) return PathFromTyped(std::string(text));

    std::string hostPath;
    if (text.front() != '/') {
        // The argument cannot be relative to a deleted current directory, which has no path.
        if (host::CurrentHostPath(hostPath) != ERROR_SUCCESS) return {};
        hostPath += '/';
    }
    hostPath += text;
    std::string path = host::PathFromHost(hostPath);
    // On the host "link/" and "link/." mean the target of the link. A separator at the end means the same
    // here.
    const bool asksForFolder = text.ends_with('/') || text.ends_with("/.");
    if (asksForFolder && path.back() != '\\') path += '\\';
    return path;
}

DWORD FullPathOf(const std::string& path, std::string& full) {
    std::string buffer;
    DWORD length = GetFullPathNameA(path.c_str(), 0, nullptr, nullptr);
    // The result depends on the current directory, which another process may rename between the two calls.
    while (length > buffer.size()) {
        buffer.resize(length);
        length = GetFullPathNameA(path.c_str(), length, buffer.data(), nullptr);
    }
    if (length == 0) return GetLastError();
    buffer.resize(length);
    full = std::move(buffer);
    return ERROR_SUCCESS;
}

std::string HostPathFromPath(const std::string& path) {
    constexpr std::size_t kLetterAndColon = 2;
    const auto drive = host::FindDrive(host::DriveLetterOf(path));
    if (!drive) return {};
    std::string hostPath = drive->hostRoot == "/" ? "" : drive->hostRoot;
    std::string_view rest = std::string_view(path).substr(kLetterAndColon);
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find_first_of("\\/"), rest.size());
        std::string name;
        if (end > 0 && !host::DecodeName(rest.substr(0, end), name)) return {};
        if (end > 0) hostPath += '/' + name;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return hostPath.empty() ? "/" : hostPath;
}

std::string PathBelowArgument(const std::string& argument, std::string_view below) {
    const bool isOfSystem = IsPathOfSystem(argument);
    const char separator = isOfSystem ? '\\' : '/';
    std::string path = argument;
    while (!below.empty()) {
        const std::string_view name = below.substr(0, below.find('\\'));
        below.remove_prefix(std::min(name.size() + 1, below.size()));
        std::string hostName(name);
        if (!isOfSystem) (void)host::DecodeName(name, hostName);
        if (!path.ends_with(separator)) path += separator;
        path += hostName;
    }
    return path;
}

std::string PathFromTyped(const std::string& text) {
    if (text.starts_with('/')) return PathFromArgument(text.c_str());
    // What is mounted nowhere stays a path to another server, which every service refuses.
    std::string mounted = PathFromNetwork(text);
    return mounted.empty() ? text : mounted;
}

std::optional<std::string> PathBelowCurrent(const char* argument) {
    std::string_view rest(argument);
    if (rest.empty() || rest.front() == '/' || IsPathOfSystem(rest)) return std::nullopt;
    std::string path;
    while (!rest.empty()) {
        const std::string_view component = rest.substr(0, rest.find('/'));
        rest.remove_prefix(std::min(component.size() + 1, rest.size()));
        if (component.empty() || component == ".") continue;
        if (component == "..") {
            if (path.empty()) return std::nullopt;
            const std::size_t separator = path.rfind('\\');
            path.resize(separator == path.npos ? 0 : separator);
        } else {
            path += (path.empty() ? "" : "\\") + host::EncodeName(component);
        }
    }
    return path;
}

bool IsNameHere(const char* argument) {
    struct stat status {};
    return fstatat(AT_FDCWD, argument, &status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool IsAmbiguousArgument(const char* argument) {
    return IsPathOfSystem(argument) && IsNameHere(argument);
}

}  // namespace permora
