#include "platform/linux/files/file_handle.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "platform/linux/base/handle_table.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/attributes.h"
#include "platform/linux/files/file_system_types.h"
#include "platform/linux/files/mount_table.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/named_streams.h"
#include "platform/linux/files/several_names.h"

namespace permora {
namespace host {
namespace {

// File systems whose magic numbers linux/magic.h does not name: their own sources.
constexpr unsigned kBcachefsMagic = 0xCA451A4E;
constexpr unsigned kCephMagic = 0x00C36400;
constexpr unsigned kUbifsMagic = 0x24051905;
constexpr unsigned kVirtualBoxMagic = 0x786F4256;
constexpr unsigned kZfsMagic = 0x2FC12FC1;

// They write changed contents to a new place; an overlay writes them to another file system.
constexpr std::array<unsigned, 8> kCopyOnWriteVolumes = {
    BTRFS_SUPER_MAGIC,     F2FS_SUPER_MAGIC, JFFS2_SUPER_MAGIC, NILFS_SUPER_MAGIC,
    OVERLAYFS_SUPER_MAGIC, kBcachefsMagic,   kUbifsMagic,       kZfsMagic};

// Other machines keep what lies on them.
constexpr std::array<unsigned, 8> kServersVolumes = {AFS_SUPER_MAGIC,  CIFS_SUPER_MAGIC, NFS_SUPER_MAGIC,
                                                     SMB2_SUPER_MAGIC, SMB_SUPER_MAGIC,  V9FS_MAGIC,
                                                     kVirtualBoxMagic, kCephMagic};

// A program may serve a disk or another machine: only the table of mounts says which.
bool IsElsewhere(const ObjectHandle& file, unsigned type) {
    if (type != FUSE_SUPER_MAGIC) return std::ranges::find(kServersVolumes, type) != kServersVolumes.end();
    const std::optional<MountEntry> mount = MountOf(file);
    return !mount || DriveTypeOfFileSystem(mount->fileSystem) == DRIVE_REMOTE;
}

// What the kind of a file's volume says of writing over its contents.
struct VolumeObstacles {
    bool isCopyOnWrite = false;
    bool isElsewhere = false;
};
DWORD AskVolumeObstacles(const ObjectHandle& file, VolumeObstacles& found) {
    struct statfs status {};
    if (fstatfs(file.Descriptor(), &status) != 0) return ErrorFromErrno(errno);
    const auto type = static_cast<unsigned>(status.f_type);
    found.isCopyOnWrite = std::ranges::find(kCopyOnWriteVolumes, type) != kCopyOnWriteVolumes.end();
    found.isElsewhere = IsElsewhere(file, type);
    return ERROR_SUCCESS;
}

DWORD AskCompressed(const ObjectHandle& file, bool& answer) {
    struct statx status {};
    if (statx(file.Descriptor(), "", AT_EMPTY_PATH, 0, &status) != 0) return ErrorFromErrno(errno);
    answer = (status.stx_attributes & STATX_ATTR_COMPRESSED) != 0;
    return ERROR_SUCCESS;
}

}  // namespace

DWORD RefuseReadOnly(const ObjectHandle& object) {
    DWORD attributes = 0;
    const DWORD error = ReadAttributes(object, {}, attributes);
    if (error != ERROR_SUCCESS) return error;
    return (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

}  // namespace host

FileHandle::FileHandle() = default;
FileHandle::FileHandle(FileHandle&& other) noexcept = default;
FileHandle& FileHandle::operator=(FileHandle&& other) noexcept = default;
FileHandle::~FileHandle() = default;

DWORD FileHandle::OpenForOverwriting(UniqueHandle& contents) const {
    std::shared_ptr<host::OverwrittenFile> opened;
    DWORD error = host::RefuseReadOnly(inside->object);
    if (error == ERROR_SUCCESS) error = host::OpenAlone(inside->object, opened, inside->journaled);
    if (error != ERROR_SUCCESS) return error;
    inside->isJournaled = opened->IsJournaled();
    inside->isKnownAlone = opened->IsKnownAlone();
    contents.reset(host::OpenHandles().Add(std::move(opened)));
    return ERROR_SUCCESS;
}

bool FileHandle::KnowsOpeners() const {
    return inside->isKnownAlone;
}

DWORD FileHandle::ListNamedStreams(std::vector<std::string>& streams) const {
    std::vector<std::string> hostStreams;
    host::StreamAccess access{};
    const DWORD error =
        inside->isNtfs ? host::ListStreams(inside->object, hostStreams, access) : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) return error;
    streams.clear();
    for (const std::string& stream : hostStreams)
        streams.push_back(host::EncodeName(stream));
    return ERROR_SUCCESS;
}

DWORD FileHandle::OpenStreamForOverwriting(const std::string& stream, UniqueHandle& contents) const {
    std::string hostStream;
    if (!host::DecodeName(stream, hostStream)) return ERROR_INVALID_NAME;
    std::shared_ptr<host::OverwrittenFile> opened;
    DWORD error = host::RefuseReadOnly(inside->object);
    if (error == ERROR_SUCCESS)
        error = host::OpenStream({inside->folder, inside->hostName, inside->object}, hostStream, opened);
    if (error == ERROR_SUCCESS) contents.reset(host::OpenHandles().Add(std::move(opened)));
    return error;
}

DWORD FileHandle::FindObstacles(std::vector<OverwriteObstacle>& obstacles) const {
    const host::ObjectHandle& file = inside->object;
    DWORD attributes = 0;
    std::vector<std::string> streams;
    host::StreamAccess access{};
    bool hasSeveralNames = false;
    host::VolumeObstacles volume;
    bool isCompressed = false;
    DWORD error = host::ReadAttributes(file, {}, attributes);
    if (error == ERROR_SUCCESS && inside->isNtfs) error = host::ListStreams(file, streams, access);
    if (error == ERROR_SUCCESS) error = HasSeveralNames(hasSeveralNames);
    if (error == ERROR_SUCCESS) error = host::AskVolumeObstacles(file, volume);
    if (error == ERROR_SUCCESS) error = host::AskCompressed(file, isCompressed);
    if (error != ERROR_SUCCESS) return error;
    const std::pair<OverwriteObstacle, bool> answers[] = {
        {OverwriteObstacle::kSeveralNames, hasSeveralNames},
        {OverwriteObstacle::kCopyOnWriteVolume, volume.isCopyOnWrite},
        {OverwriteObstacle::kOtherServer, volume.isElsewhere},
        {OverwriteObstacle::kCompressed, isCompressed || (attributes & FILE_ATTRIBUTE_COMPRESSED) != 0},
        {OverwriteObstacle::kEncrypted, (attributes & FILE_ATTRIBUTE_ENCRYPTED) != 0},
        {OverwriteObstacle::kSparse, (attributes & FILE_ATTRIBUTE_SPARSE_FILE) != 0},
        {OverwriteObstacle::kNamedStreams, access == host::StreamAccess::kAttributes},
        {OverwriteObstacle::kJournaled, inside->isJournaled},
        {OverwriteObstacle::kOpenersUnknown, !inside->isKnownAlone},
    };
    obstacles.clear();
    for (const auto& [obstacle, isThere] : answers)
        if (isThere) obstacles.push_back(obstacle);
    return ERROR_SUCCESS;
}

DWORD FileHandle::HasSeveralNames(bool& answer) const {
    return host::AskSeveralNames(inside->folder, inside->hostName, inside->object, answer);
}

DWORD FileHandle::Remove() const {
    host::ObjectHandle found;
    const DWORD error = host::ObjectHandle::OpenUnmountedAt(inside->folder, inside->hostName.c_str(), found);
    if (error != ERROR_SUCCESS) return error;
    // The kernel has no call that removes a name only while it leads to a certain file, so a swap after this
    // check is not noticed. The held file keeps its inode number from being reused.
    if (!found.IsSameObject(inside->object)) return ERROR_FILE_INVALID;
    return unlinkat(inside->folder, inside->hostName.c_str(), 0) == 0 ? ERROR_SUCCESS
                                                                      : host::ErrorFromErrno(errno);
}

}  // namespace permora
