#include "platform/linux/shell/trash.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/percent_encoding.h"
#include "platform/linux/base/user_folders.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/mount_table.h"
#include "platform/linux/files/new_name.h"
#include "platform/linux/security/new_object.h"
#include "platform/linux/shell/new_file.h"
#include "platform/linux/shell/unfinished_files.h"

namespace permora::host {
namespace {

constexpr std::size_t kMaxNameBytes = 255;
constexpr std::string_view kInfoSuffix = ".trashinfo";

// Volumes without owners of the host show every object as the mounting user's, also a new one. The test uses
// a file, which is held from the moment that it is made: the owner of the folder could replace a folder.
bool KeepsOwners(const ObjectHandle& folder) {
    const std::string probe = TemporaryName();
    struct stat status {};
    const UniqueFd file(openat(folder.Descriptor(), probe.c_str(),
                               O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file) return true;
    const bool isKnown = fstat(file.Get(), &status) == 0;
    unlinkat(folder.Descriptor(), probe.c_str(), 0);
    return !isKnown || status.st_uid == geteuid();
}

DWORD OpenFolderIn(const ObjectHandle& folder, const char* hostName, ObjectHandle& entry) {
    return ObjectHandle::OpenUnmountedAt(folder.Descriptor(), hostName, entry, O_DIRECTORY);
}

// A folder for this user alone. It is made if missing.
DWORD OpenOrMake(const ObjectHandle& folder, const std::string& hostName, ObjectHandle& entry) {
    ObjectHandle found;
    DWORD error = OpenFolderIn(folder, hostName.c_str(), found);
    if (error == ERROR_FILE_NOT_FOUND) {
        NewObjectSecurity security;
        error = NewObjectSecurity::Of(folder, security);
        if (error == ERROR_SUCCESS) error = security.MakeFolder(folder, hostName, S_IRWXU, found);
    }
    const bool isOthers = found && found.Status().st_uid != geteuid();
    if (error == ERROR_SUCCESS && isOthers && KeepsOwners(folder)) error = ERROR_ACCESS_DENIED;
    if (error == ERROR_SUCCESS) entry = std::move(found);
    return error;
}

DWORD OpenPlace(const std::string& hostPath, ObjectHandle& place) {
    UniqueFd opened(open(hostPath.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return opened ? ObjectHandle::Adopt(std::move(opened), place) : ErrorFromErrno(errno);
}

// The user's folder for data. It is made if missing, with those above it.
DWORD OpenDataFolder(ObjectHandle& folder) {
    const std::vector<std::string> folders = DataFolders();
    if (folders.empty()) return ERROR_PATH_NOT_FOUND;
    const std::string& path = folders.front();
    for (std::size_t end = path.find('/', 1); end != path.npos; end = path.find('/', end + 1))
        mkdir(path.substr(0, end).c_str(), S_IRWXU);
    mkdir(path.c_str(), S_IRWXU);
    return OpenPlace(path, folder);
}

// The folder for all users, if the administrator made one.
DWORD OpenShared(const ObjectHandle& top, ObjectHandle& trash) {
    ObjectHandle shared;
    const DWORD error = OpenFolderIn(top, ".Trash", shared);
    if (error != ERROR_SUCCESS) return error;
    if ((shared.Status().st_mode & S_ISVTX) == 0) return ERROR_ACCESS_DENIED;
    return OpenOrMake(shared, std::to_string(getuid()), trash);
}

// The name for an attempt, short enough for the suffix: "a.txt", "a.2.txt", ...
std::string NameInTrash(const std::string& hostName, unsigned attempt) {
    const std::string number = attempt == 1 ? "" : "." + std::to_string(attempt);
    const std::size_t dot = hostName.rfind('.');
    std::string extension = dot == hostName.npos || dot == 0 ? "" : hostName.substr(dot);
    const std::size_t room = kMaxNameBytes - kInfoSuffix.size() - number.size();
    if (extension.size() > room / 2) extension.clear();
    std::string stem = hostName.substr(0, hostName.size() - extension.size());
    std::size_t length = std::min(stem.size(), room - extension.size());
    // Not in the middle of a character of up to four bytes.
    const auto isInside = [&stem](std::size_t place) {
        return place < stem.size() && (static_cast<unsigned char>(stem[place]) & 0xC0U) == 0x80U;
    };
    for (int i = 0; i < 3 && isInside(length); ++i)
        --length;
    return stem.substr(0, length) + number + extension;
}

}  // namespace

std::string TrashInfoText(const std::string& hostPath, time_t time) {
    tm local{};
    localtime_r(&time, &local);
    std::array<char, 32> date{};
    const std::size_t length = std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + PercentEncoded(hostPath) +
           "\nDeletionDate=" + std::string(date.data(), length) + "\n";
}

DWORD Trash::OpenIn(const ObjectHandle& place, std::string hostPathOfTop) {
    ObjectHandle openedFiles;
    ObjectHandle openedInfo;
    DWORD error = OpenOrMake(place, "files", openedFiles);
    if (error == ERROR_SUCCESS) error = OpenOrMake(place, "info", openedInfo);
    if (error == ERROR_SUCCESS) error = NewObjectSecurity::Of(openedInfo, infoSecurity);
    if (error != ERROR_SUCCESS) return error;
    files = std::move(openedFiles);
    info = std::move(openedInfo);
    top = std::move(hostPathOfTop);
    return ERROR_SUCCESS;
}

// Makes the complete info file, or none. ERROR_ALREADY_EXISTS when the name is taken.
DWORD Trash::WriteInfo(const std::string& hostName, const std::string& text) {
    UniqueFd file(openat(info.Descriptor(), hostName.c_str(),
                         O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    ObjectHandle object;
    if (!file) return ErrorFromErrno(errno);
    DWORD error = ObjectHandle::Adopt(std::move(file), object);
    if (error == ERROR_SUCCESS) error = infoSecurity.Give(object);
    if (error == ERROR_SUCCESS) {
        const ssize_t written = write(object.Descriptor(), text.data(), text.size());
        if (written < 0) error = ErrorFromErrno(errno);
        if (written >= 0 && static_cast<std::size_t>(written) < text.size()) error = ERROR_DISK_FULL;
    }
    if (error == ERROR_SUCCESS) error = FinishWriting(object);
    if (error != ERROR_SUCCESS) unlinkat(info.Descriptor(), hostName.c_str(), 0);
    return error;
}

bool Trash::Serves(const HeldFolder& folder) const {
    return volume && AreOnOneMount(volume, folder.handle);
}

DWORD Trash::For(const HeldFolder& folder, Trash& trash) {
    Trash found;
    DWORD error = ObjectHandle::OpenAt(folder.handle.Descriptor(), ".", found.volume);
    if (error != ERROR_SUCCESS) return error;
    ObjectHandle data;
    ObjectHandle place;
    if (OpenDataFolder(data) == ERROR_SUCCESS && AreOnOneMount(data, folder.handle) &&
        OpenOrMake(data, "Trash", place) == ERROR_SUCCESS && found.OpenIn(place, "") == ERROR_SUCCESS) {
        trash = std::move(found);
        return ERROR_SUCCESS;
    }
    const std::optional<MountEntry> mount = MountOf(folder.handle);
    ObjectHandle top;
    if (!mount) return ERROR_NOT_SUPPORTED;
    error = OpenPlace(mount->mountPoint, top);
    // Another volume may be mounted over it.
    if (error == ERROR_SUCCESS && !AreOnOneMount(top, folder.handle)) error = ERROR_NOT_SUPPORTED;
    if (error != ERROR_SUCCESS) return error;
    if (OpenShared(top, place) != ERROR_SUCCESS)
        error = OpenOrMake(top, ".Trash-" + std::to_string(getuid()), place);
    if (error == ERROR_SUCCESS) error = found.OpenIn(place, mount->mountPoint);
    if (error == ERROR_SUCCESS) trash = std::move(found);
    return error;
}

DWORD Trash::Take(const FoundItem& item) {
    const int folder = item.folder->handle.Descriptor();
    std::string hostPath;
    const DWORD error = HostPathOf(folder, hostPath);
    if (error != ERROR_SUCCESS) return error;
    if (!top.empty()) {
        if (!IsAtOrBelow(hostPath, top)) return ERROR_NOT_SAME_DEVICE;
        hostPath.erase(0, top == "/" ? 1 : std::min(top.size() + 1, hostPath.size()));
    }
    if (!hostPath.empty() && !hostPath.ends_with('/')) hostPath += '/';
    const std::string text = TrashInfoText(hostPath + item.hostName, std::time(nullptr));
    const RenamedKind kind = item.object.IsFolder() ? RenamedKind::kFolder : RenamedKind::kOther;
    for (unsigned attempt = 1;; ++attempt) {
        const std::string name = NameInTrash(item.hostName, attempt);
        const std::string infoName = name + std::string(kInfoSuffix);
        const DWORD infoError = WriteInfo(infoName, text);
        if (infoError == ERROR_ALREADY_EXISTS) continue;
        if (infoError != ERROR_SUCCESS) return infoError;
        const int problem =
            RenameToFreeName(folder, item.hostName.c_str(), files.Descriptor(), name.c_str(), kind);
        if (problem == 0) return ERROR_SUCCESS;
        unlinkat(info.Descriptor(), infoName.c_str(), 0);
        if (problem != EEXIST) return ErrorFromErrno(problem);
    }
}

bool HoldsMount(const FoundItem& item, const std::vector<MountEntry>& mounts) {
    std::string hostPath;
    if (!item.object.IsFolder()) return false;
    if (mounts.empty() || HostPathOf(item.object.Descriptor(), hostPath) != ERROR_SUCCESS) return true;
    return std::any_of(mounts.begin(), mounts.end(),
                       [&](const MountEntry& mount) { return IsAtOrBelow(mount.mountPoint, hostPath); });
}

}  // namespace permora::host
