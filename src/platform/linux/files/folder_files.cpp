#include "platform/folder_files.h"

#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <dirent.h>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/attributes.h"
#include "platform/linux/files/extended_attributes.h"
#include "platform/linux/files/file_handle.h"
#include "platform/linux/files/file_system_types.h"
#include "platform/linux/files/folder_handle.h"
#include "platform/linux/files/mount_table.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/unmounted_entry.h"
#include "platform/linux/security/held_object_inside.h"

namespace permora {
namespace host {
namespace {

constexpr DWORD kUsualSectorBytes = 512;
constexpr DWORD kLargestSectorBytes = 65536;

DWORD OpenEntry(int folder, const std::string& hostName, int flags, UniqueFd& opened) {
    const int problem = OpenUnmountedEntry(folder, hostName.c_str(), flags, opened);
    return problem == 0 ? ERROR_SUCCESS : ErrorFromErrno(problem);
}

DWORD HoldEntry(int folder, const std::string& hostName, ObjectHandle& object) {
    return ObjectHandle::OpenUnmountedAt(folder, hostName.c_str(), object);
}

DWORD HoldFile(int folder, const std::string& hostName, ObjectHandle& file) {
    ObjectHandle object;
    const DWORD error = HoldEntry(folder, hostName, object);
    if (error != ERROR_SUCCESS) return error;
    if (object.IsLink()) return ERROR_CANT_RESOLVE_FILENAME;
    if (!S_ISREG(object.Status().st_mode)) return ERROR_ACCESS_DENIED;
    file = std::move(object);
    return ERROR_SUCCESS;
}

DWORD SectorBytesOf(const std::string& device) {
    // A partition has no queue, but its disk has one, in the folder above.
    for (const char* place : {"/queue", "/../queue"}) {
        std::ifstream file("/sys/dev/block/" + device + place + "/logical_block_size");
        DWORD bytes = 0;
        const bool isSize = file >> bytes && bytes >= kUsualSectorBytes && bytes <= kLargestSectorBytes;
        if (isSize && (bytes & (bytes - 1)) == 0) return bytes;
    }
    return kUsualSectorBytes;
}

Journaled JournaledOn(const MountEntry& mount) {
    if (mount.fileSystem != "ext4" && mount.fileSystem != "ext3") return Journaled::kNone;
    const bool isAll = (',' + mount.options + ',').find(",data=journal,") != std::string::npos;
    return isAll ? Journaled::kAll : Journaled::kSome;
}

// File systems without owners take them from the mount options. Names as the kernel and the FUSE helpers use
// them.
bool HasNoOwners(std::string_view fileSystem) {
    constexpr std::array<std::string_view, 4> kTypes = {"exfat", "fuseblk", "msdos", "vfat"};
    return std::find(kTypes.begin(), kTypes.end(), fileSystem) != kTypes.end();
}

// `flags` are those of unlinkat(2).
DWORD RemoveName(int folder, const std::string& hostName, int flags) {
    return unlinkat(folder, hostName.c_str(), flags) == 0 ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

}  // namespace

FolderEntryKind KindOfMode(mode_t mode) {
    if (S_ISDIR(mode)) return FolderEntryKind::kFolder;
    return S_ISREG(mode) ? FolderEntryKind::kFile : FolderEntryKind::kOther;
}

// ntfs-3g shows a file that it cannot read as a broken link, for example one whose contents the system has
// compressed. A real link has no contents, and its tag says so: the bit of name surrogates
// (MS-FSCC, 2.1.2.1), or the tag of the UNIX objects of NFS servers.
DWORD RefuseUnreadableFile(const ObjectHandle& object) {
    constexpr DWORD kLeadsElsewhere = 0x20000000;
    constexpr DWORD kNfsObject = 0x80000014;
    if (!object.IsLink()) return ERROR_SUCCESS;
    std::vector<std::uint8_t> data;
    const int problem = ReadExtendedAttribute(object, "system.ntfs_reparse_data", data);
    if (problem != 0) return IsAbsent(problem) ? ERROR_SUCCESS : ErrorFromErrno(problem);
    DWORD tag = 0;
    if (data.size() < sizeof tag) return ERROR_NOT_SUPPORTED;
    std::memcpy(&tag, data.data(), sizeof tag);
    return (tag & kLeadsElsewhere) != 0 || tag == kNfsObject ? ERROR_SUCCESS : ERROR_NOT_SUPPORTED;
}

}  // namespace host

using host::ObjectHandle;
using host::UniqueFd;

DWORD FolderHandle::Inside::AskNtfs(const ObjectHandle& object, bool& answer) {
    if (!isNtfs) {
        const int error = host::AskExtendedAttribute(object, host::kNtfsAttribute);
        if (error != 0 && !host::IsAbsent(error)) return host::ErrorFromErrno(error);
        isNtfs = error == 0;
    }
    answer = *isNtfs;
    return ERROR_SUCCESS;
}

DWORD FolderHandle::Inside::AskMount() {
    if (sectorBytes != 0) return ERROR_SUCCESS;
    ObjectHandle folder;
    const DWORD error = ObjectHandle::OpenAt(Descriptor(), ".", folder);
    if (error != ERROR_SUCCESS) return error;
    const std::optional<host::MountEntry> mount = host::MountOf(folder);
    sectorBytes = host::SectorBytesOf(mount ? host::BlockDeviceOf(*mount) : "");
    if (mount) journaled = host::JournaledOn(*mount);
    if (mount) hasNoOwners = host::HasNoOwners(mount->fileSystem);
    return ERROR_SUCCESS;
}

DWORD FolderHandle::Inside::Hold(ObjectHandle& folder) const {
    UniqueFd copy(fcntl(Descriptor(), F_DUPFD_CLOEXEC, 0));
    return copy ? ObjectHandle::Adopt(std::move(copy), folder) : host::ErrorFromErrno(errno);
}

FolderHandle::FolderHandle() = default;
FolderHandle::FolderHandle(FolderHandle&& other) noexcept = default;
FolderHandle& FolderHandle::operator=(FolderHandle&& other) noexcept = default;
FolderHandle::~FolderHandle() = default;

DWORD FolderHandle::Inside::Adopt(const ObjectHandle& object, FolderHandle& folder) {
    host::RaiseDescriptorLimit();
    UniqueFd opened;
    DWORD error = object.RequireFolder();
    if (error == ERROR_SUCCESS) error = object.OpenForListing(opened);
    if (error == ERROR_ACCESS_DENIED) {
        opened.Reset(fcntl(object.Descriptor(), F_DUPFD_CLOEXEC, 0));
        error = opened ? ERROR_SUCCESS : host::ErrorFromErrno(errno);
    }
    if (error == ERROR_SUCCESS) folder.inside = std::make_unique<Inside>(std::move(opened));
    return error;
}

DWORD FolderHandle::Open(const std::string& path, FolderHandle& folder) {
    host::ResolvedObject found;
    const DWORD error = host::ResolvePath(path.c_str(), found);
    return error == ERROR_SUCCESS ? Inside::Adopt(found.object, folder) : error;
}

DWORD FolderHandle::OpenPath(const std::string& path, FolderHandle& folder) const {
    host::ResolvedObject found;
    const DWORD error = host::ResolvePathFrom(inside->Descriptor(), path.c_str(), found);
    return error == ERROR_SUCCESS ? Inside::Adopt(found.object, folder) : error;
}

DWORD FolderHandle::MakeCurrent() const {
    return fchdir(inside->Descriptor()) == 0 ? ERROR_SUCCESS : host::ErrorFromErrno(errno);
}

DWORD FolderHandle::OpenFolder(const std::string& name, FolderHandle& folder) const {
    std::string hostName;
    if (!host::DecodeName(name, hostName)) return ERROR_INVALID_NAME;
    UniqueFd opened;
    const DWORD error = host::OpenEntry(inside->Descriptor(), hostName, O_RDONLY | O_DIRECTORY, opened);
    if (error != ERROR_SUCCESS) return error;
    auto entered = std::make_unique<Inside>(std::move(opened));
    // The same volume: no mount point was crossed.
    entered->isNtfs = inside->isNtfs;
    entered->sectorBytes = inside->sectorBytes;
    entered->journaled = inside->journaled;
    entered->hasNoOwners = inside->hasNoOwners;
    folder.inside = std::move(entered);
    return ERROR_SUCCESS;
}

DWORD FolderHandle::NextEntry(FolderEntry& entry) {
    host::FolderListing::Entry found{};
    DWORD error = ERROR_SUCCESS;
    if (!inside->listing.Next(found, error)) return error != ERROR_SUCCESS ? error : ERROR_NO_MORE_FILES;
    FolderEntryKind kind = host::KindOfMode(static_cast<mode_t>(DTTOIF(found.type)));
    // An object that cannot be examined has vanished. The next operation on it reports that.
    struct stat status {};
    if (found.type == DT_UNKNOWN)
        kind = fstatat(inside->Descriptor(), found.name, &status, AT_SYMLINK_NOFOLLOW) == 0
                   ? host::KindOfMode(status.st_mode)
                   : FolderEntryKind::kFile;
    entry = {host::EncodeName(found.name), kind};
    return ERROR_SUCCESS;
}

DWORD FolderHandle::BytesPerSector(DWORD& bytes) const {
    const DWORD error = inside->AskMount();
    if (error == ERROR_SUCCESS) bytes = inside->sectorBytes;
    return error;
}

DWORD FolderHandle::HoldObject(const std::string& path, HeldObject& object) const {
    auto held = std::make_unique<HeldObject::Inside>();
    const DWORD error = host::ResolvePathFrom(inside->Descriptor(), path.c_str(), held->target);
    if (error == ERROR_SUCCESS) object.inside = std::move(held);
    return error;
}

DWORD FolderHandle::HoldFile(const std::string& name, FileHandle& file) const {
    std::string hostName;
    if (!host::DecodeName(name, hostName)) return ERROR_INVALID_NAME;
    auto held = std::make_unique<FileHandle::Inside>();
    DWORD error = host::HoldFile(inside->Descriptor(), hostName, held->object);
    if (error == ERROR_SUCCESS) error = inside->AskNtfs(held->object, held->isNtfs);
    if (error == ERROR_SUCCESS) error = inside->AskMount();
    if (error != ERROR_SUCCESS) return error;
    held->journaled = inside->journaled;
    held->home = held->folder = inside->Descriptor();
    held->hostName = std::move(hostName);
    file.inside = std::move(held);
    return ERROR_SUCCESS;
}

DWORD FolderHandle::RemoveLink(const std::string& name) const {
    std::string hostName;
    if (!host::DecodeName(name, hostName)) return ERROR_INVALID_NAME;
    ObjectHandle object;
    DWORD error = host::HoldEntry(inside->Descriptor(), hostName, object);
    if (error == ERROR_SUCCESS && S_ISREG(object.Status().st_mode)) error = ERROR_ACCESS_DENIED;
    if (error == ERROR_SUCCESS) error = host::RefuseUnreadableFile(object);
    return error == ERROR_SUCCESS ? host::RemoveName(inside->Descriptor(), hostName, 0) : error;
}

DWORD FolderHandle::RemoveFolder(const std::string& name) const {
    std::string hostName;
    if (!host::DecodeName(name, hostName)) return ERROR_INVALID_NAME;
    ObjectHandle object;
    DWORD error = host::HoldEntry(inside->Descriptor(), hostName, object);
    if (error == ERROR_SUCCESS && !object.IsFolder()) error = ERROR_DIRECTORY;
    if (error == ERROR_SUCCESS) error = host::RefuseReadOnly(object);
    if (error != ERROR_SUCCESS) return error;
    return host::RemoveName(inside->Descriptor(), hostName, AT_REMOVEDIR);
}

}  // namespace permora
