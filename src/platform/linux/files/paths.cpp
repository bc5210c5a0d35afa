#include "platform/linux/files/paths.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "platform/ascii.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/current_directory.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/drives.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/path_text.h"

namespace permora::host {
namespace {

// The folder where a path starts.
struct StartingPlace {
    ObjectHandle folder;
    bool isDriveRoot = false;
};

// Opens a folder, following links.
DWORD OpenFolderAt(int base, const char* hostPath, ObjectHandle& folder) {
    UniqueFd opened(openat(base, hostPath, O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!opened) return ErrorFromErrno(errno);
    return ObjectHandle::Adopt(std::move(opened), folder);
}

// A missing folder above an object is a missing path, not a missing file.
DWORD ErrorOnTheWay(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_DIRECTORY ? ERROR_PATH_NOT_FOUND : error;
}

DWORD OpenDriveRoot(char letter, StartingPlace& start) {
    const std::optional<DriveRoot> drive = FindDrive(letter);
    if (!drive) return ERROR_PATH_NOT_FOUND;
    start.isDriveRoot = true;
    return ErrorOnTheWay(OpenFolderAt(AT_FDCWD, drive->hostRoot.c_str(), start.folder));
}

// Goes up from the folder `base` through its real parents, but never out of its drive.
DWORD OpenAbove(int base, std::size_t ascents, const DriveRoot& drive, StartingPlace& start) {
    ObjectHandle root;
    DWORD error = OpenFolderAt(AT_FDCWD, drive.hostRoot.c_str(), root);
    if (error == ERROR_SUCCESS) error = OpenFolderAt(base, ".", start.folder);
    for (; error == ERROR_SUCCESS && ascents > 0 && !start.folder.IsSameObject(root); --ascents)
        error = OpenFolderAt(start.folder.Descriptor(), "..", start.folder);
    start.isDriveRoot = error == ERROR_SUCCESS && start.folder.IsSameObject(root);
    return ErrorOnTheWay(error);
}

// The objects in the folder, and a held folder, are found without the folder's own name.
bool NeedsNoNameOf(int base, const PathText& text) {
    return text.start == PathText::Start::kCurrentFolder && text.drive == 0 && text.ascents == 0 &&
           (base != AT_FDCWD || !text.components.empty());
}

// `base`, an open folder or AT_FDCWD, stands for the current directory.
DWORD OpenStart(int base, const PathText& text, StartingPlace& start) {
    const bool isRooted = text.start == PathText::Start::kRoot;
    if (isRooted && text.drive != 0) return OpenDriveRoot(text.drive, start);
    if (NeedsNoNameOf(base, text)) return OpenFolderAt(base, ".", start.folder);
    std::string basePath;
    const DWORD error = base == AT_FDCWD ? CurrentHostPath(basePath) : HostPathOf(base, basePath);
    if (error != ERROR_SUCCESS) return error;
    const DriveRoot current = DriveHolding(basePath);
    const char letter = text.drive != 0 ? text.drive : current.letter;
    if (isRooted || letter != current.letter) return OpenDriveRoot(letter, start);
    return OpenAbove(base, text.ascents, current, start);
}

// From `folder` along the components of `text`, of which there is at least one, up to the last.
DWORD Approach(const PathText& text, ObjectHandle& folder, std::string& lastHostName) {
    std::string hostName;
    for (std::size_t i = 0; i + 1 < text.components.size(); ++i) {
        if (!DecodeName(text.components[i], hostName)) return ERROR_INVALID_NAME;
        const DWORD error = OpenFolderAt(folder.Descriptor(), hostName.c_str(), folder);
        if (error != ERROR_SUCCESS) return ErrorOnTheWay(error);
    }
    return DecodeName(text.components.back(), lastHostName) ? ERROR_SUCCESS : ERROR_INVALID_NAME;
}

DWORD Follow(const PathText& text, ObjectHandle folder, ResolvedObject& found) {
    std::string hostName;
    if (const DWORD error = Approach(text, folder, hostName); error != ERROR_SUCCESS) return error;
    if (text.endsWithSeparator) {
        // It may have been a link, whose target is in another folder.
        const DWORD error = OpenFolderAt(folder.Descriptor(), hostName.c_str(), found.object);
        return error == ERROR_SUCCESS ? OpenFolderAt(found.object.Descriptor(), "..", found.parent) : error;
    }
    const DWORD error = ObjectHandle::OpenAt(folder.Descriptor(), hostName.c_str(), found.object);
    found.parent = std::move(folder);
    return error;
}

// The components of an absolute host path, with "." and ".." resolved.
std::vector<std::string_view> ComponentsOf(std::string_view hostPath) {
    std::vector<std::string_view> components;
    while (!hostPath.empty()) {
        const std::string_view component = TakeUntil('/', hostPath);
        if (component == "..") {
            if (!components.empty()) components.pop_back();
        } else if (!component.empty() && component != ".") {
            components.push_back(component);
        }
    }
    return components;
}

bool IsVolumeRoot(const ResolvedObject& found) {
    struct statx status {};
    const int descriptor = found.object.Descriptor();
    if (statx(descriptor, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, 0, &status) == 0 &&
        (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0) {
        return true;
    }
    // Subvolumes are not mounted. Only folders can be their roots, so only folders are compared: files in an
    // overlay have the device number of their layer.
    return found.object.IsFolder() && found.object.Status().st_dev != found.parent.Status().st_dev;
}

DWORD Resolve(int base, const PathText& text, ResolvedObject& resolved) {
    StartingPlace start;
    DWORD error = OpenStart(base, text, start);
    if (error != ERROR_SUCCESS) return error;
    ResolvedObject found;
    if (!text.components.empty()) {
        error = Follow(text, std::move(start.folder), found);
    } else {
        found.object = std::move(start.folder);
        if (!start.isDriveRoot) error = OpenFolderAt(found.object.Descriptor(), "..", found.parent);
    }
    if (error != ERROR_SUCCESS) return error;
    if (found.parent && IsVolumeRoot(found)) found.parent = ObjectHandle();
    resolved = std::move(found);
    return ERROR_SUCCESS;
}

}  // namespace

DWORD ResolvePath(const char* path, ResolvedObject& resolved) {
    PathText text;
    const DWORD error = ParsePath(path == nullptr ? "" : path, text);
    return error == ERROR_SUCCESS ? Resolve(AT_FDCWD, text, resolved) : error;
}

DWORD ResolvePathFrom(int start, const char* path, ResolvedObject& resolved) {
    PathText text;
    const DWORD error = *path == '\0' ? ERROR_SUCCESS : ParsePath(path, text);
    return error == ERROR_SUCCESS ? Resolve(start, text, resolved) : error;
}

DWORD ResolvePlace(const char* path, ResolvedPlace& place) {
    PathText text;
    DWORD error = ParsePath(path == nullptr ? "" : path, text);
    if (error != ERROR_SUCCESS) return error;
    if (text.components.empty()) return ERROR_ACCESS_DENIED;
    StartingPlace start;
    error = OpenStart(AT_FDCWD, text, start);
    if (error != ERROR_SUCCESS) return error;
    ResolvedPlace found;
    error = Approach(text, start.folder, found.hostName);
    if (error != ERROR_SUCCESS) return error;
    found.folder = std::move(start.folder);
    place = std::move(found);
    return ERROR_SUCCESS;
}

DWORD OpenObject(const char* path, ObjectHandle& object) {
    PathText text;
    DWORD error = ParsePath(path == nullptr ? "" : path, text);
    if (error != ERROR_SUCCESS) return error;
    if (NeedsNoNameOf(AT_FDCWD, text) && text.components.size() == 1 && !text.endsWithSeparator) {
        std::string hostName;
        if (!DecodeName(text.components.front(), hostName)) return ERROR_INVALID_NAME;
        return ObjectHandle::OpenAt(AT_FDCWD, hostName.c_str(), object);
    }
    ResolvedObject resolved;
    error = ResolvePath(path, resolved);
    if (error == ERROR_SUCCESS) object = std::move(resolved.object);
    return error;
}

std::string PathFromHost(std::string_view hostPath) {
    return PathFromHost(hostPath, ListDriveRoots());
}

std::string PathFromHost(std::string_view hostPath, const std::vector<DriveRoot>& roots) {
    std::vector<std::string_view> components = ComponentsOf(hostPath);
    std::string normalised;
    for (const std::string_view component : components) {
        normalised += '/';
        normalised += component;
    }
    const DriveRoot drive = DriveHolding(normalised, roots);
    if (drive.hostRoot != "/") {
        components.erase(components.begin(),
                         components.begin() + std::count(drive.hostRoot.begin(), drive.hostRoot.end(), '/'));
    }
    std::vector<std::string> names;
    std::transform(components.begin(), components.end(), std::back_inserter(names), EncodeName);
    return JoinPath(drive.letter, {names.begin(), names.end()});
}

}  // namespace permora::host
