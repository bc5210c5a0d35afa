#include "platform/folder_files.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <dirent.h>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <optional>
#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/system_objects.h"
#include "platform/linux/files/attributes.h"
#include "platform/linux/files/extended_attributes.h"
#include "platform/linux/files/file_system_types.h"
#include "platform/linux/files/folder_listing.h"
#include "platform/linux/files/mount_table.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/named_streams.h"
#include "platform/linux/files/overwritten_file.h"
#include "platform/linux/files/unmounted_entry.h"

namespace permora {
namespace host {
namespace {

// Between a file's name and that of its stream; no shown name holds one.
constexpr char kStreamSeparator = ':';

constexpr DWORD kUsualSectorBytes = 512;
constexpr DWORD kLargestSectorBytes = 65536;

// File systems whose magic numbers linux/magic.h does not name: their own sources.
constexpr unsigned kBcachefsMagic = 0xCA451A4E;
constexpr unsigned kUbifsMagic = 0x24051905;
constexpr unsigned kZfsMagic = 0x2FC12FC1;

// They write changed contents to a fresh place, an overlay to another file system.
constexpr std::array<unsigned, 8> kCopyOnWriteVolumes = {
    BTRFS_SUPER_MAGIC,     F2FS_SUPER_MAGIC, JFFS2_SUPER_MAGIC, NILFS_SUPER_MAGIC,
    OVERLAYFS_SUPER_MAGIC, kBcachefsMagic,   kUbifsMagic,       kZfsMagic};

FolderEntryKind KindOfMode(mode_t mode) {
    if (S_ISDIR(mode)) return FolderEntryKind::kFolder;
    return S_ISREG(mode) ? FolderEntryKind::kFile : FolderEntryKind::kOther;
}

DWORD OpenEntry(int folder, const std::string& hostName, int flags, UniqueFd& opened) {
    const int problem = OpenUnmountedEntry(folder, hostName.c_str(), flags, opened);
    return problem == 0 ? ERROR_SUCCESS : ErrorFromErrno(problem);
}

DWORD HoldEntry(int folder, const std::string& hostName, ObjectHandle& object) {
    UniqueFd opened;
    const DWORD error = OpenEntry(folder, hostName, O_PATH, opened);
    return error == ERROR_SUCCESS ? ObjectHandle::Adopt(std::move(opened), object) : error;
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

// The attributes of what is no link; `object` is left as it is.
DWORD AttributesOf(ObjectHandle& object, DWORD& attributes) {
    ResolvedObject resolved;
    resolved.object = std::move(object);
    const DWORD error = ReadAttributes(resolved, attributes);
    object = std::move(resolved.object);
    return error;
}

DWORD RefuseReadOnly(ObjectHandle& object) {
    DWORD attributes = 0;
    const DWORD error = AttributesOf(object, attributes);
    if (error != ERROR_SUCCESS) return error;
    return (attributes & FILE_ATTRIBUTE_READONLY) != 0 ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

// ntfs-3g shows as a broken link what it has no means to read, such as a file whose contents the system has
// compressed in its own way. What leads elsewhere, and so has no contents, says so in its tag: the bit of
// name surrogates in MS-FSCC, 2.1.2.1, or the tag of the UNIX objects of NFS servers there.
bool IsUnreadableFile(const ObjectHandle& object) {
    constexpr DWORD kLeadsElsewhere = 0x20000000;
    constexpr DWORD kNfsObject = 0x80000014;
    std::vector<std::uint8_t> data;
    DWORD tag = 0;
    if (!object.IsLink() || ReadExtendedAttribute(object, "system.ntfs_reparse_data", data) != 0 ||
        data.size() < sizeof tag) {
        return false;
    }
    std::memcpy(&tag, data.data(), sizeof tag);
    return (tag & kLeadsElsewhere) == 0 && tag != kNfsObject;
}

DWORD SectorBytesOf(const std::string& device) {
    // A partition has no queue, but the disk in whose folder it lies has.
    for (const char* place : {"/queue", "/../queue"}) {
        std::ifstream file("/sys/dev/block/" + device + place + "/logical_block_size");
        DWORD bytes = 0;
        const bool isSize = file >> bytes && bytes >= kUsualSectorBytes && bytes <= kLargestSectorBytes;
        if (isSize && (bytes & (bytes - 1)) == 0) return bytes;
    }
    return kUsualSectorBytes;
}

// A short name in the old style is a second one of NTFS's own, and goes with the first.
bool HasSeveralNames(const ObjectHandle& file, bool isNtfs) {
    const bool hasShortName = isNtfs && AskExtendedAttribute(file, "system.ntfs_dos_name") == 0;
    return file.Status().st_nlink > (hasShortName ? 2U : 1U);
}

bool IsCopyOnWrite(const ObjectHandle& object) {
    struct statfs status {};
    return fstatfs(object.Descriptor(), &status) == 0 &&
           std::find(kCopyOnWriteVolumes.begin(), kCopyOnWriteVolumes.end(),
                     static_cast<unsigned>(status.f_type)) != kCopyOnWriteVolumes.end();
}

}  // namespace
}  // namespace host

using host::ObjectHandle;
using host::UniqueFd;

struct FolderHandle::Inside {
    explicit Inside(UniqueFd opened) : listing(std::move(opened)) {}

    int Descriptor() const { return listing.Descriptor(); }

    // Asked of the volume at the first file. Where it is not NTFS, what looks like a stream is none.
    DWORD AskNtfs(const ObjectHandle& object, bool& answer) {
        if (!isNtfs) {
            const int error = host::AskExtendedAttribute(object, host::kNtfsAttribute);
            if (error != 0 && error != ENODATA && error != ENOTSUP) return host::ErrorFromErrno(error);
            isNtfs = error == 0;
        }
        answer = *isNtfs;
        return ERROR_SUCCESS;
    }

    host::FolderListing listing;
    std::optional<bool> isNtfs;
    DWORD sectorBytes = 0;  // 0: not asked yet
};

FolderHandle::FolderHandle() = default;
FolderHandle::FolderHandle(FolderHandle&& other) noexcept = default;
FolderHandle& FolderHandle::operator=(FolderHandle&& other) noexcept = default;
FolderHandle::~FolderHandle() = default;

DWORD FolderHandle::OpenCurrent(FolderHandle& folder) {
    host::RaiseDescriptorLimit();
    UniqueFd opened(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!opened) return host::ErrorFromErrno(errno);
    folder.inside = std::make_unique<Inside>(std::move(opened));
    return ERROR_SUCCESS;
}

DWORD FolderHandle::OpenFolder(const std::string& name, FolderHandle& folder) const {
    std::string hostName;
    if (!host::DecodeName(name, hostName)) return ERROR_INVALID_NAME;
    UniqueFd opened;
    const DWORD error = host::OpenEntry(inside->Descriptor(), hostName, O_RDONLY | O_DIRECTORY, opened);
    if (error != ERROR_SUCCESS) return error;
    auto entered = std::make_unique<Inside>(std::move(opened));
    // The same volume: nothing was crossed.
    entered->isNtfs = inside->isNtfs;
    entered->sectorBytes = inside->sectorBytes;
    folder.inside = std::move(entered);
    return ERROR_SUCCESS;
}

DWORD FolderHandle::NextEntry(FolderEntry& entry) {
    host::FolderListing::Entry found{};
    DWORD error = ERROR_SUCCESS;
    if (!inside->listing.Next(found, error)) return error != ERROR_SUCCESS ? error : ERROR_NO_MORE_FILES;
    FolderEntryKind kind = host::KindOfMode(static_cast<mode_t>(DTTOIF(found.type)));
    // Who cannot be asked has vanished, and then whatever is done with it tells so.
    struct stat status {};
    if (found.type == DT_UNKNOWN)
        kind = fstatat(inside->Descriptor(), found.name, &status, AT_SYMLINK_NOFOLLOW) == 0
                   ? host::KindOfMode(status.st_mode)
                   : FolderEntryKind::kFile;
    entry = {host::EncodeName(found.name), kind};
    return ERROR_SUCCESS;
}

DWORD FolderHandle::KindOf(const std::string& name, FolderEntryKind& kind) const {
    std::string hostName;
    if (!host::DecodeName(name, hostName)) return ERROR_INVALID_NAME;
    struct stat status {};
    if (fstatat(inside->Descriptor(), hostName.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return host::ErrorFromErrno(errno);
    kind = host::KindOfMode(status.st_mode);
    return ERROR_SUCCESS;
}

DWORD FolderHandle::BytesPerSector(DWORD& bytes) const {
    if (inside->sectorBytes == 0) {
        ObjectHandle folder;
        const DWORD error = ObjectHandle::OpenAt(inside->Descriptor(), ".", folder);
        if (error != ERROR_SUCCESS) return error;
        const std::optional<host::MountEntry> mount = host::MountOf(folder);
        inside->sectorBytes = host::SectorBytesOf(mount ? host::BlockDeviceOf(*mount) : "");
    }
    bytes = inside->sectorBytes;
    return ERROR_SUCCESS;
}

DWORD FolderHandle::OpenForOverwriting(const std::string& name, UniqueHandle& file) const {
    const std::size_t separator = name.find(host::kStreamSeparator);
    std::string hostName;
    std::string stream;
    if (!host::DecodeName(name.substr(0, separator), hostName) ||
        (separator != name.npos && !host::DecodeName(name.substr(separator + 1), stream))) {
        return ERROR_INVALID_NAME;
    }
    ObjectHandle object;
    DWORD error = host::HoldFile(inside->Descriptor(), hostName, object);
    if (error == ERROR_SUCCESS) error = host::RefuseReadOnly(object);
    if (error != ERROR_SUCCESS) return error;
    std::shared_ptr<host::OverwrittenFile> opened;
    error = stream.empty()
                ? host::OpenAlone(object, opened)
                : host::OpenStream(inside->Descriptor(), hostName, std::move(object), stream, opened);
    if (error != ERROR_SUCCESS) return error;
    file.reset(host::SystemObjects().Add(std::move(opened)));
    return ERROR_SUCCESS;
}

DWORD FolderHandle::ListNamedStreams(const std::string& name, std::vector<std::string>& streams) const {
    std::string hostName;
    if (!host::DecodeName(name, hostName)) return ERROR_INVALID_NAME;
    ObjectHandle file;
    DWORD error = host::HoldFile(inside->Descriptor(), hostName, file);
    if (error != ERROR_SUCCESS) return error;
    std::vector<std::string> hostStreams;
    host::StreamAccess access{};
    bool isNtfs = false;
    error = inside->AskNtfs(file, isNtfs);
    if (error == ERROR_SUCCESS && isNtfs) error = host::ListStreams(file, hostStreams, access);
    if (error != ERROR_SUCCESS) return error;
    streams.clear();
    for (const std::string& stream : hostStreams)
        streams.push_back(name + host::kStreamSeparator + host::EncodeName(stream));
    return ERROR_SUCCESS;
}

DWORD FolderHandle::FindObstacles(const std::string& name, std::vector<OverwriteObstacle>& obstacles) const {
    std::string hostName;
    if (!host::DecodeName(name, hostName)) return ERROR_INVALID_NAME;
    ObjectHandle file;
    DWORD attributes = 0;
    DWORD error = host::HoldFile(inside->Descriptor(), hostName, file);
    if (error == ERROR_SUCCESS) error = host::AttributesOf(file, attributes);
    std::vector<std::string> streams;
    host::StreamAccess access{};
    bool isNtfs = false;
    if (error == ERROR_SUCCESS) error = inside->AskNtfs(file, isNtfs);
    if (error == ERROR_SUCCESS && isNtfs) error = host::ListStreams(file, streams, access);
    if (error != ERROR_SUCCESS) return error;
    struct statx status {};
    const bool isCompressed = statx(file.Descriptor(), "", AT_EMPTY_PATH, 0, &status) == 0 &&
                              (status.stx_attributes & STATX_ATTR_COMPRESSED) != 0;
    const std::pair<OverwriteObstacle, bool> answers[] = {
        {OverwriteObstacle::kSeveralNames, host::HasSeveralNames(file, isNtfs)},
        {OverwriteObstacle::kCopyOnWriteVolume, host::IsCopyOnWrite(file)},
        {OverwriteObstacle::kCompressed, isCompressed || (attributes & FILE_ATTRIBUTE_COMPRESSED) != 0},
        {OverwriteObstacle::kEncrypted, (attributes & FILE_ATTRIBUTE_ENCRYPTED) != 0},
        {OverwriteObstacle::kSparse, (attributes & FILE_ATTRIBUTE_SPARSE_FILE) != 0},
        {OverwriteObstacle::kNamedStreams, access == host::StreamAccess::kAttributes},
    };
    obstacles.clear();
    for (const auto& [obstacle, isThere] : answers) {
        if (isThere) obstacles.push_back(obstacle);
    }
    return ERROR_SUCCESS;
}

DWORD FolderHandle::RemoveFile(const std::string& name) const {
    std::string hostName;
    if (!host::DecodeName(name, hostName)) return ERROR_INVALID_NAME;
    ObjectHandle object;
    const DWORD error = host::HoldEntry(inside->Descriptor(), hostName, object);
    if (error != ERROR_SUCCESS) return error;
    if (host::IsUnreadableFile(object)) return ERROR_NOT_SUPPORTED;
    return unlinkat(inside->Descriptor(), hostName.c_str(), 0) == 0 ? ERROR_SUCCESS
                                                                    : host::ErrorFromErrno(errno);
}

DWORD FolderHandle::RemoveFolder(const std::string& name) const {
    std::string hostName;
    if (!host::DecodeName(name, hostName)) return ERROR_INVALID_NAME;
    ObjectHandle object;
    DWORD error = host::HoldEntry(inside->Descriptor(), hostName, object);
    if (error == ERROR_SUCCESS && !object.IsFolder()) error = ERROR_DIRECTORY;
    if (error == ERROR_SUCCESS) error = host::RefuseReadOnly(object);
    if (error != ERROR_SUCCESS) return error;
    return unlinkat(inside->Descriptor(), hostName.c_str(), AT_REMOVEDIR) == 0 ? ERROR_SUCCESS
                                                                               : host::ErrorFromErrno(errno);
}

}  // namespace permora
