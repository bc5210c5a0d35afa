#include "platform/secluded_folder.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <utility>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/file_handle.h"
#include "platform/linux/files/folder_handle.h"
#include "platform/linux/files/new_name.h"
#include "platform/linux/files/object_handle.h"

namespace permora {
namespace host {
namespace {

DWORD MakeName(std::string& name) {
    std::uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != sizeof number) return ErrorFromErrno(errno);
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), ".permora-shred-%016llx",
                  static_cast<unsigned long long>(number));
    name = text.data();
    return ERROR_SUCCESS;
}

// Whether nobody else can enter it. A folder of this process that is open to others is closed first: not
// every driver respects the mode that was given when it was made.
bool IsClosed(const ObjectHandle& folder) {
    constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
    struct stat status = folder.Status();
    if (status.st_uid != geteuid()) return false;
    if ((status.st_mode & kOthers) == 0) return true;
    return chmod(DescriptorPath(folder.Descriptor()).Text(), S_IRWXU) == 0 &&
           fstat(folder.Descriptor(), &status) == 0 && (status.st_mode & kOthers) == 0;
}

// Moves any kind of object, but only when nothing has the new name.
DWORD Move(int from, int to, const std::string& hostName) {
    struct stat status {};
    if (fstatat(from, hostName.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return ErrorFromErrno(errno);
    const RenamedKind kind = S_ISDIR(status.st_mode) ? RenamedKind::kFolder : RenamedKind::kOther;
    const int problem = RenameToFreeName(from, hostName.c_str(), to, hostName.c_str(), kind);
    return problem == 0 ? ERROR_SUCCESS : ErrorFromErrno(problem);
}

}  // namespace
}  // namespace host

using host::ObjectHandle;

struct SecludedFolder::Inside {
    ObjectHandle place;
    ObjectHandle folder;  // empty where none is needed
    std::string name;     // of the folder in the place
};

SecludedFolder::SecludedFolder() = default;
SecludedFolder::SecludedFolder(SecludedFolder&& other) noexcept = default;
SecludedFolder& SecludedFolder::operator=(SecludedFolder&& other) noexcept = default;
SecludedFolder::~SecludedFolder() = default;

const std::string& SecludedFolder::Name() const {
    return inside->name;
}

bool SecludedFolder::IsGone() const {
    if (!inside->folder) return false;
    struct stat status {};
    return fstat(inside->folder.Descriptor(), &status) == 0 && status.st_nlink == 0;
}

DWORD SecludedFolder::Make(const FolderHandle& place, SecludedFolder& made) {
    SecludedFolder fresh;
    fresh.inside = std::make_unique<Inside>();
    Inside& parts = *fresh.inside;
    bool isNtfs = false;
    DWORD error = place.inside->AskMount();
    if (error == ERROR_SUCCESS) error = place.inside->Hold(parts.place);
    if (error == ERROR_SUCCESS) error = place.inside->AskNtfs(parts.place, isNtfs);
    if (error == ERROR_SUCCESS) error = host::MakeName(parts.name);
    if (error != ERROR_SUCCESS) return error;
    if (mkdirat(parts.place.Descriptor(), parts.name.c_str(), S_IRWXU) != 0)
        return host::ErrorFromErrno(errno);
    error = ObjectHandle::OpenUnmountedAt(parts.place.Descriptor(), parts.name.c_str(), parts.folder,
                                          O_DIRECTORY);
    if (error != ERROR_SUCCESS) {
        unlinkat(parts.place.Descriptor(), parts.name.c_str(), AT_REMOVEDIR);
    } else if (!host::IsClosed(parts.folder)) {
        error = fresh.Remove();
        // NTFS, mounted in the usual way, shows everything with the same owner and an unchangeable mode.
        if (error == ERROR_SUCCESS && !isNtfs && !place.inside->hasNoOwners) error = ERROR_NOT_SUPPORTED;
        parts.folder = {};
    }
    if (error == ERROR_SUCCESS) made = std::move(fresh);
    return error;
}

DWORD SecludedFolder::Remove() {
    if (!inside->folder) return ERROR_SUCCESS;
    ObjectHandle found;
    const int place = inside->place.Descriptor();
    const DWORD error = ObjectHandle::OpenAt(place, inside->name.c_str(), found);
    if (error != ERROR_SUCCESS) return error;
    if (!found.IsSameObject(inside->folder)) return ERROR_FILE_INVALID;
    return unlinkat(place, inside->name.c_str(), AT_REMOVEDIR) == 0 ? ERROR_SUCCESS
                                                                    : host::ErrorFromErrno(errno);
}

DWORD SecludedFolder::Take(FileHandle& file) const {
    if (!inside->folder) return ERROR_SUCCESS;
    FileHandle::Inside& taken = *file.inside;
    const int here = inside->folder.Descriptor();
    // Nobody else can enter this folder, so ordinary renaming replaces nothing where the driver has no other.
    const int problem = host::RenameToFreeName(taken.home, taken.hostName.c_str(), here,
                                               taken.hostName.c_str(), host::RenamedKind::kFolder);
    if (problem != 0) return host::ErrorFromErrno(problem);
    ObjectHandle found;
    const DWORD error = ObjectHandle::OpenUnmountedAt(here, taken.hostName.c_str(), found);
    if (error == ERROR_SUCCESS && found.IsSameObject(taken.object)) {
        taken.folder = here;
        return ERROR_SUCCESS;
    }
    // An object that cannot be moved back stays here. The folder then cannot be removed, which is reported.
    host::Move(here, taken.home, taken.hostName);
    return error == ERROR_SUCCESS ? ERROR_FILE_INVALID : error;
}

DWORD SecludedFolder::GiveBack(FileHandle& file) const {
    if (!inside->folder) return ERROR_SUCCESS;
    FileHandle::Inside& taken = *file.inside;
    const DWORD error = host::Move(taken.folder, taken.home, taken.hostName);
    if (error == ERROR_SUCCESS) taken.folder = taken.home;
    return error;
}

}  // namespace permora
