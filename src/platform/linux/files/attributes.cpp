#include "platform/linux/files/attributes.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <functional>
#include <optional>
#include <vector>

#include "platform/api/files.h"
#include "platform/linux/base/failure.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/time.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/linux/files/dos_attribute.h"
#include "platform/linux/files/extended_attributes.h"
#include "platform/linux/files/file_facts.h"
#include "platform/linux/files/paths.h"

namespace permora::host {
namespace {

constexpr DWORD kSettable = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                            FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_TEMPORARY | FILE_ATTRIBUTE_OFFLINE |
                            FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
// Known to the volume alone.
constexpr DWORD kKeptByVolume = FILE_ATTRIBUTE_SPARSE_FILE | FILE_ATTRIBUTE_REPARSE_POINT |
                                FILE_ATTRIBUTE_COMPRESSED | FILE_ATTRIBUTE_ENCRYPTED;

// The stored attributes of an object. At most one of the three is there.
struct StoredAttributes {
    std::optional<DWORD> onNtfs;
    std::optional<DWORD> onServer;
    std::optional<DosAttribute> fromSamba;
};

// Anybody can store an attribute of the name that the kernel's SMB client has for the server's.
bool IsOnSmbMount(int descriptor) {
    struct statfs volume {};
    if (fstatfs(descriptor, &volume) != 0) return false;
    const auto type = static_cast<unsigned>(volume.f_type);
    return type == SMB2_SUPER_MAGIC || type == CIFS_SUPER_MAGIC;
}

// One object, as its attributes are read.
struct AttributeSource {
    // Reads an extended attribute: 0 or an errno value.
    std::function<int(const char* name, std::vector<std::uint8_t>& value)> read;
    std::function<bool()> isOnSmbMount;
};

AttributeSource SourceOf(const ObjectHandle& object) {
    return {.read =
                [&object](const char* name, std::vector<std::uint8_t>& value) {
                    return ReadExtendedAttribute(object, name, value);
                },
            .isOnSmbMount = [&object] { return IsOnSmbMount(object.Descriptor()); }};
}

bool IsFileOrFolder(const ObjectHandle& object) {
    return S_ISREG(object.Status().st_mode) || object.IsFolder();
}

// Without the right to read a file, attributes of the user's family cannot be read. The folder still lists
// the file.
bool IsHidden(int error) {
    return error == EACCES || error == EPERM;
}

// Four bytes in the host's order. Leaves `flags` empty where there are none.
DWORD ReadFlags(const AttributeSource& source, const char* name, std::optional<DWORD>& flags) {
    DWORD read = 0;
    std::vector<std::uint8_t> value;
    const int error = source.read(name, value);
    if (error != 0) return IsAbsent(error) ? ERROR_SUCCESS : ErrorFromErrno(error);
    if (value.size() != sizeof read) return ERROR_SUCCESS;
    std::memcpy(&read, value.data(), sizeof read);
    flags = read;
    return ERROR_SUCCESS;
}

DWORD ReadFromServer(const AttributeSource& source, AttributeStore store, StoredAttributes& stored) {
    std::optional<DWORD> flags;
    const DWORD error = ReadFlags(source, kSmbAttribute, flags);
    if (error == ERROR_ACCESS_DENIED) return ERROR_SUCCESS;
    if (error == ERROR_SUCCESS && flags && (store == AttributeStore::kServer || source.isOnSmbMount()))
        stored.onServer = flags;
    return error;
}

DWORD ReadStored(const AttributeSource& source, AttributeStore store, StoredAttributes& stored) {
    const bool isUnknown = store == AttributeStore::kUnknown;
    if (isUnknown || store == AttributeStore::kNtfs) {
        const DWORD error = ReadFlags(source, kNtfsAttribute, stored.onNtfs);
        if (error != ERROR_SUCCESS || stored.onNtfs) return error;
    }
    if (isUnknown || store == AttributeStore::kServer) {
        const DWORD error = ReadFromServer(source, store, stored);
        if (error != ERROR_SUCCESS || stored.onServer || !isUnknown) return error;
    }
    std::vector<std::uint8_t> value;
    const int error = source.read(kDosAttribute, value);
    if (error != 0 && !IsAbsent(error) && !IsHidden(error)) return ErrorFromErrno(error);
    if (error == 0) stored.fromSamba = DosAttribute::FromBytes(value);
    return ERROR_SUCCESS;
}

// Whether the link, which lies in `folder`, leads to a folder.
bool LeadsToFolder(const ObjectHandle& link, const ObjectHandle& folder) {
    std::string target;
    struct stat status {};
    return link.ReadLinkText(target) == ERROR_SUCCESS &&
           fstatat(folder.Descriptor(), target.c_str(), &status, 0) == 0 && S_ISDIR(status.st_mode);
}

// The attributes that follow from the kind of the object. No stored value overrides them.
DWORD AttributesOfKind(const struct stat& status, bool leadsToFolder) {
    if (S_ISDIR(status.st_mode)) return FILE_ATTRIBUTE_DIRECTORY;
    if (!S_ISLNK(status.st_mode)) return 0;
    return FILE_ATTRIBUTE_REPARSE_POINT | (leadsToFolder ? FILE_ATTRIBUTE_DIRECTORY : 0);
}

// A file that nobody may write is read-only.
DWORD AttributesFromMode(const struct stat& status) {
    const bool isWritable = (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) != 0;
    return S_ISREG(status.st_mode) && !isWritable ? FILE_ATTRIBUTE_READONLY : 0;
}

// `kind` holds the attributes that follow from the kind of the object.
DWORD Join(const StoredAttributes& stored, const struct stat& status, DWORD kind) {
    DWORD flags = kind;
    if (stored.onNtfs) flags |= *stored.onNtfs & (kSettable | kKeptByVolume);
    // What the server keeps elsewhere is no link here.
    else if (stored.onServer)
        flags |= *stored.onServer & (kSettable | kKeptByVolume) & ~DWORD{FILE_ATTRIBUTE_REPARSE_POINT};
    else if (stored.fromSamba && stored.fromSamba->HasAttributes())
        flags |= stored.fromSamba->attributes & kSettable;
    else
        flags |= AttributesFromMode(status);
    return flags != 0 ? flags : FILE_ATTRIBUTE_NORMAL;
}

int WriteOnNtfs(const ObjectHandle& object, DWORD present, DWORD attributes) {
    // ntfs-3g keeps links and devices as files with the system flag, and takes them for plain files without.
    const DWORD settable = IsFileOrFolder(object) ? kSettable : kSettable & ~FILE_ATTRIBUTE_SYSTEM;
    const DWORD flags = (present & ~settable) | (attributes & settable);
    std::array<std::uint8_t, sizeof flags> value{};
    std::memcpy(value.data(), &flags, sizeof flags);
    return WriteExtendedAttribute(object, kNtfsAttribute, value);
}

int WriteForSamba(const ObjectHandle& object, DosAttribute present, DWORD attributes) {
    // For links and devices, the kernel refuses such attributes with a permission error.
    if (!IsFileOrFolder(object)) return ENOTSUP;
    present.validFields |= 0x1;
    present.attributes = (present.attributes & ~kSettable) | (attributes & kSettable);
    if (object.IsFolder()) present.attributes |= FILE_ATTRIBUTE_DIRECTORY;
    return WriteExtendedAttribute(object, kDosAttribute, present.ToBytes());
}

// To a server no flag at all means that everything stays.
int SendFlags(const ObjectHandle& object, DWORD attributes) {
    const DWORD settable = attributes & kSettable;
    const DWORD flags = settable != 0 ? settable : FILE_ATTRIBUTE_NORMAL;
    std::array<std::uint8_t, sizeof flags> value{};
    std::memcpy(value.data(), &flags, sizeof flags);
    return WriteExtendedAttribute(object, kSmbAttribute, value);
}

// A server may keep fewer, as one that makes mode bits of them, and say nothing.
DWORD WriteOnServer(const ObjectHandle& object, DWORD present, DWORD attributes) {
    const int problem = SendFlags(object, attributes);
    if (problem != 0) return ErrorFromErrno(problem);
    std::optional<DWORD> kept;
    const DWORD error = ReadFlags(SourceOf(object), kSmbAttribute, kept);
    if (error != ERROR_SUCCESS) return error;
    if (kept && ((*kept ^ attributes) & kSettable) == 0) return ERROR_SUCCESS;
    (void)SendFlags(object, present);
    return ERROR_NOT_SUPPORTED;
}

// On NTFS the volume's own time, in the system's form; elsewhere the host's, if the file system keeps one.
FILETIME CreationTimeOf(const ObjectHandle& object) {
    FILETIME time{};
    std::vector<std::uint8_t> value;
    if (ReadExtendedAttribute(object, "system.ntfs_crtime", value) == 0 && value.size() == sizeof time) {
        std::memcpy(&time, value.data(), sizeof time);
        return time;
    }
    struct statx status {};
    const bool isTold = statx(object.Descriptor(), "", AT_EMPTY_PATH, STATX_BTIME, &status) == 0 &&
                        (status.stx_mask & STATX_BTIME) != 0;
    // Some tools that make volumes leave the field empty.
    if (isTold && status.stx_btime.tv_sec != 0)
        time = FileTimeOf({status.stx_btime.tv_sec, static_cast<long>(status.stx_btime.tv_nsec)});
    return time;
}

}  // namespace

bool IsNameOfSmbClient(std::string_view name) {
    constexpr std::array<std::string_view, 4> kNames{"user.cifs.creationtime", kSmbAttribute,
                                                     "user.smb3.creationtime", "user.smb3.dosattrib"};
    return std::ranges::find(kNames, name) != kNames.end();
}

AttributeStore AttributeStoreOf(const ObjectHandle& object) {
    if (!IsAbsent(AskExtendedAttribute(object, kNtfsAttribute))) return AttributeStore::kNtfs;
    const bool isServers =
        !IsAbsent(AskExtendedAttribute(object, kSmbAttribute)) && IsOnSmbMount(object.Descriptor());
    return isServers ? AttributeStore::kServer : AttributeStore::kSamba;
}

DWORD ReadAttributesAt(int folder, const char* hostName, const struct stat& status, AttributeStore store,
                       DWORD& attributes) {
    StoredAttributes stored;
    const AttributeSource source{
        .read =
            [&](const char* name, std::vector<std::uint8_t>& value) {
                return ReadExtendedAttributeAt(folder, hostName, name, value);
            },
        .isOnSmbMount =
            [&] {
                const UniqueFd entry(openat(folder, hostName, O_PATH | O_NOFOLLOW | O_CLOEXEC));
                return entry && IsOnSmbMount(entry.Get());
            }};
    const DWORD error = ReadStored(source, store, stored);
    if (error != ERROR_SUCCESS) return error;
    struct stat target {};
    const bool leadsToFolder =
        S_ISLNK(status.st_mode) && fstatat(folder, hostName, &target, 0) == 0 && S_ISDIR(target.st_mode);
    attributes = Join(stored, status, AttributesOfKind(status, leadsToFolder));
    return ERROR_SUCCESS;
}

DWORD ReadAttributes(const ObjectHandle& object, const ObjectHandle& parent, DWORD& attributes) {
    StoredAttributes stored;
    const DWORD error = ReadStored(SourceOf(object), AttributeStore::kUnknown, stored);
    if (error != ERROR_SUCCESS) return error;
    const bool leadsToFolder = object.IsLink() && parent && LeadsToFolder(object, parent);
    const struct stat& status = object.Status();
    attributes = Join(stored, status, AttributesOfKind(status, leadsToFolder));
    return ERROR_SUCCESS;
}

DWORD WriteAttributes(const ObjectHandle& object, DWORD attributes) {
    if (object.IsFolder() && (attributes & FILE_ATTRIBUTE_TEMPORARY) != 0) return ERROR_INVALID_PARAMETER;
    StoredAttributes stored;
    const DWORD error = ReadStored(SourceOf(object), AttributeStore::kUnknown, stored);
    if (error != ERROR_SUCCESS) return error;
    if (stored.onServer) return WriteOnServer(object, *stored.onServer, attributes);
    const bool areOnServer =
        !stored.onNtfs && !stored.fromSamba && IsFileOrFolder(object) && IsOnSmbMount(object.Descriptor());
    // The mount has no such attributes at all, or hides them.
    if (areOnServer)
        return IsAbsent(AskExtendedAttribute(object, kSmbAttribute)) ? ERROR_NOT_SUPPORTED
                                                                     : ERROR_ACCESS_DENIED;
    const int failure = stored.onNtfs
                            ? WriteOnNtfs(object, *stored.onNtfs, attributes)
                            : WriteForSamba(object, stored.fromSamba.value_or(DosAttribute{}), attributes);
    return failure == 0 ? ERROR_SUCCESS : ErrorFromErrno(failure);
}

}  // namespace permora::host

DWORD WINAPI GetFileAttributesA(LPCSTR path) {
    using namespace permora::host;
    ResolvedObject resolved;
    DWORD attributes = INVALID_FILE_ATTRIBUTES;
    DWORD error = ResolvePath(path, resolved);
    if (error == ERROR_SUCCESS) error = ReadAttributes(resolved.object, resolved.parent, attributes);
    if (error != ERROR_SUCCESS) SetLastError(error);
    return attributes;
}

BOOL WINAPI GetFileAttributesExA(LPCSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID data) {
    using namespace permora::host;
    if (level != GetFileExInfoStandard) return Fail(ERROR_INVALID_PARAMETER);
    ResolvedObject resolved;
    DWORD attributes = 0;
    DWORD error = ResolvePath(path, resolved);
    if (error == ERROR_SUCCESS) error = ReadAttributes(resolved.object, resolved.parent, attributes);
    if (error != ERROR_SUCCESS) return Fail(error);
    WIN32_FILE_ATTRIBUTE_DATA facts{};
    FillFacts(resolved.object.Status(), attributes, facts);
    facts.ftCreationTime = CreationTimeOf(resolved.object);
    *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data) = facts;
    return TRUE;
}

BOOL WINAPI SetFileAttributesA(LPCSTR path, DWORD attributes) {
    permora::host::ResolvedObject resolved;
    DWORD error = permora::host::ResolvePath(path, resolved);
    if (error == ERROR_SUCCESS) error = permora::host::WriteAttributes(resolved.object, attributes);
    return error == ERROR_SUCCESS ? TRUE : permora::host::Fail(error);
}
