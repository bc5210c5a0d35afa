// Facts about drives and the volumes on them.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/api/files.h"
#include "platform/linux/base/failure.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/unique_listing.h"
#include "platform/linux/files/current_directory.h"
#include "platform/linux/files/descriptor_support.h"
#include "platform/linux/files/drives.h"
#include "platform/linux/files/file_system_types.h"
#include "platform/linux/files/mount_table.h"
#include "platform/linux/files/path_text.h"
#include "platform/linux/files/paths.h"

namespace permora::host {
namespace {

struct VolumeInformation {
    std::string label;
    DWORD serialNumber = 0;
    DWORD longestName = 0;
    DWORD flags = 0;
    std::string fileSystem;
};

// The letter of "C:\", in upper case; 0 for any other text.
char DriveOfRoot(std::string_view root) {
    return root.size() == 3 && IsSeparator(root[2]) ? DriveLetterOf(root) : '\0';
}

DWORD OpenVolume(const char* root, ObjectHandle& folder) {
    if (root == nullptr) return ObjectHandle::OpenAt(AT_FDCWD, ".", folder);
    if (DriveOfRoot(root) == 0) return ERROR_INVALID_NAME;
    ResolvedObject resolved;
    const DWORD error = ResolvePath(root, resolved);
    if (error == ERROR_SUCCESS) folder = std::move(resolved.object);
    return error;
}

int DigitValue(char digit) {
    if (digit >= '0' && digit <= '9') return digit - '0';
    return digit >= 'a' && digit <= 'f' ? digit - 'a' + 10 : -1;
}

// The device manager writes characters that are unsuitable for file names as \x and two hexadecimal digits.
std::string UnescapeLabel(std::string_view name) {
    std::string label;
    while (!name.empty()) {
        const bool isEscape = name.size() > 3 && name.starts_with("\\x") && DigitValue(name[2]) >= 0 &&
                              DigitValue(name[3]) >= 0;
        label += isEscape ? static_cast<char>(DigitValue(name[2]) * 16 + DigitValue(name[3])) : name[0];
        name.remove_prefix(isEscape ? 4 : 1);
    }
    return label;
}

std::string LabelOf(const MountEntry& mount) {
    const std::string device = BlockDeviceOf(mount);
    if (device.empty()) return {};
    const UniqueListing labels(opendir("/dev/disk/by-label"));
    if (!labels) return {};
    while (const dirent* entry = readdir(labels.get())) {
        struct stat status {};
        if (fstatat(dirfd(labels.get()), entry->d_name, &status, 0) != 0 || !S_ISBLK(status.st_mode))
            continue;
        const std::string number =
            std::to_string(major(status.st_rdev)) + ":" + std::to_string(minor(status.st_rdev));
        if (number == device) return UnescapeLabel(entry->d_name);
    }
    return {};
}

// File systems for which "A" and "a" are the same name.
bool IgnoresCase(std::string_view fileSystem) {
    constexpr std::array<std::string_view, 6> kTypes{"cifs", "exfat", "msdos", "smb3", "smbfs", "vfat"};
    return std::find(kTypes.begin(), kTypes.end(), fileSystem) != kTypes.end();
}

DWORD AskVolume(const ObjectHandle& folder, VolumeInformation& facts) {
    struct statfs status {};
    struct statvfs portable {};
    if (fstatfs(folder.Descriptor(), &status) != 0 || fstatvfs(folder.Descriptor(), &portable) != 0)
        return ErrorFromErrno(errno);
    std::array<DWORD, 2> identity{};
    static_assert(sizeof identity == sizeof status.f_fsid);
    std::memcpy(identity.data(), &status.f_fsid, sizeof identity);
    facts.serialNumber = identity[0] ^ identity[1];
    facts.longestName = static_cast<DWORD>(portable.f_namemax);

    const std::optional<MountEntry> mount = MountOf(folder);
    const DescriptorStoreKind store = StoreKindOf(folder);
    const bool isNtfs = store == DescriptorStoreKind::kNtfs3g || store == DescriptorStoreKind::kNtfs3;
    if (mount) facts.label = LabelOf(*mount);
    facts.fileSystem = isNtfs ? "NTFS" : mount ? mount->fileSystem : "";

    facts.flags = FILE_CASE_PRESERVED_NAMES | FILE_UNICODE_ON_DISK;
    if (!IgnoresCase(facts.fileSystem)) facts.flags |= FILE_CASE_SENSITIVE_SEARCH;
    if (store != DescriptorStoreKind::kNone) facts.flags |= FILE_PERSISTENT_ACLS;
    if ((portable.f_flag & ST_RDONLY) != 0) facts.flags |= FILE_READ_ONLY_VOLUME;
    return ERROR_SUCCESS;
}

bool Fits(const std::string& text, LPCSTR buffer, DWORD size) {
    return buffer == nullptr || text.size() < size;
}

void HandOut(const std::string& text, LPSTR buffer) {
    if (buffer != nullptr) std::memcpy(buffer, text.c_str(), text.size() + 1);
}

void HandOut(DWORD value, LPDWORD target) {
    if (target != nullptr) *target = value;
}

void HandOut(ULONGLONG value, PULARGE_INTEGER target) {
    if (target != nullptr) target->QuadPart = value;
}

// Impossible numbers are cut; a program behind FUSE may report anything.
ULONGLONG BytesOf(fsblkcnt_t blocks, const struct statvfs& status) {
    ULONGLONG bytes = 0;
    if (__builtin_mul_overflow(ULONGLONG{blocks}, ULONGLONG{status.f_frsize}, &bytes)) return ~ULONGLONG{0};
    return bytes;
}

}  // namespace
}  // namespace permora::host

BOOL WINAPI GetVolumeInformationA(LPCSTR root, LPSTR volumeName, DWORD volumeNameSize, LPDWORD serialNumber,
                                  LPDWORD maximumComponentLength, LPDWORD fileSystemFlags,
                                  LPSTR fileSystemName, DWORD fileSystemNameSize) {
    using namespace permora::host;
    ObjectHandle folder;
    VolumeInformation facts;
    DWORD error = OpenVolume(root, folder);
    if (error == ERROR_SUCCESS) error = AskVolume(folder, facts);
    if (error != ERROR_SUCCESS) return Fail(error);
    if (!Fits(facts.label, volumeName, volumeNameSize) ||
        !Fits(facts.fileSystem, fileSystemName, fileSystemNameSize)) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    HandOut(facts.label, volumeName);
    HandOut(facts.serialNumber, serialNumber);
    HandOut(facts.longestName, maximumComponentLength);
    HandOut(facts.flags, fileSystemFlags);
    HandOut(facts.fileSystem, fileSystemName);
    return TRUE;
}

BOOL WINAPI GetDiskFreeSpaceExA(LPCSTR path, PULARGE_INTEGER availableToCaller, PULARGE_INTEGER total,
                                PULARGE_INTEGER free) {
    using namespace permora::host;
    ObjectHandle folder;
    struct statvfs status {};
    DWORD error = path == nullptr ? ObjectHandle::OpenAt(AT_FDCWD, ".", folder) : OpenObject(path, folder);
    if (error == ERROR_SUCCESS && !folder.IsFolder()) error = ERROR_DIRECTORY;
    if (error == ERROR_SUCCESS && fstatvfs(folder.Descriptor(), &status) != 0) error = ErrorFromErrno(errno);
    if (error != ERROR_SUCCESS) return Fail(error);
    HandOut(BytesOf(status.f_bavail, status), availableToCaller);
    HandOut(BytesOf(status.f_blocks, status), total);
    HandOut(BytesOf(status.f_bfree, status), free);
    return TRUE;
}

DWORD WINAPI GetLogicalDriveStringsA(DWORD size, LPSTR buffer) {
    std::string roots;
    for (const permora::host::DriveRoot& drive : permora::host::ListDriveRoots())
        roots += {drive.letter, ':', '\\', '\0'};
    return permora::host::HandOut(roots, size, buffer);
}

UINT WINAPI GetDriveTypeA(LPCSTR root) {
    using namespace permora::host;
    char letter = 0;
    std::string currentPath;
    if (root != nullptr)
        letter = DriveOfRoot(root);
    else if (CurrentHostPath(currentPath) == ERROR_SUCCESS)
        letter = DriveHolding(currentPath).letter;
    return TypeOfDrive(letter);
}
