#include "platform/linux/files/file_system_types.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>

namespace permora::host {
namespace {

constexpr UINT kNoDrive = DRIVE_NO_ROOT_DIR;

struct FileSystemRow {
    std::string_view name;
    UINT type;
};

// Types that are not listed are disks. Names: filesystems(5), the kernel's own documentation and the FUSE
// helpers' mount entries.
// clang-format off
constexpr FileSystemRow kFileSystems[] = {
    // Interfaces of the kernel.
    {"autofs",               kNoDrive},
    {"binder",               kNoDrive},
    {"binfmt_misc",          kNoDrive},
    {"bpf",                  kNoDrive},
    {"cgroup",               kNoDrive},
    {"cgroup2",              kNoDrive},
    {"configfs",             kNoDrive},
    {"debugfs",              kNoDrive},
    {"devpts",               kNoDrive},
    {"devtmpfs",             kNoDrive},
    {"efivarfs",             kNoDrive},
    {"fusectl",              kNoDrive},
    {"hugetlbfs",            kNoDrive},
    {"mqueue",               kNoDrive},
    {"nfsd",                 kNoDrive},
    {"nsfs",                 kNoDrive},
    {"proc",                 kNoDrive},
    {"pstore",               kNoDrive},
    {"resctrl",              kNoDrive},
    {"rpc_pipefs",           kNoDrive},
    {"securityfs",           kNoDrive},
    {"selinuxfs",            kNoDrive},
    {"smackfs",              kNoDrive},
    {"sysfs",                kNoDrive},
    {"tracefs",              kNoDrive},
    // Roots of containers and packaged programs.
    {"overlay",              kNoDrive},
    {"squashfs",             kNoDrive},
    {"fuse.fuse-overlayfs",  kNoDrive},
    {"fuse.lxcfs",           kNoDrive},
    {"fuse.snapfuse",        kNoDrive},
    {"fuse.squashfuse",      kNoDrive},
    // The desktop's helpers.
    {"fuse.gvfsd-fuse",      kNoDrive},
    {"fuse.jmtpfs",          kNoDrive},
    {"fuse.kio-fuse",        kNoDrive},
    {"fuse.portal",          kNoDrive},

    {"9p",                   DRIVE_REMOTE},
    {"afs",                  DRIVE_REMOTE},
    {"ceph",                 DRIVE_REMOTE},
    {"cifs",                 DRIVE_REMOTE},
    {"coda",                 DRIVE_REMOTE},
    {"fuse.ceph",            DRIVE_REMOTE},
    {"fuse.curlftpfs",       DRIVE_REMOTE},
    {"fuse.davfs",           DRIVE_REMOTE},
    {"fuse.glusterfs",       DRIVE_REMOTE},
    {"fuse.rclone",          DRIVE_REMOTE},
    {"fuse.s3fs",            DRIVE_REMOTE},
    {"fuse.sshfs",           DRIVE_REMOTE},
    {"fuse.vmhgfs-fuse",     DRIVE_REMOTE},
    {"nfs",                  DRIVE_REMOTE},
    {"nfs4",                 DRIVE_REMOTE},
    {"smb3",                 DRIVE_REMOTE},
    {"smbfs",                DRIVE_REMOTE},
    {"vboxsf",               DRIVE_REMOTE},
    {"virtiofs",             DRIVE_REMOTE},

    {"iso9660",              DRIVE_CDROM},
    {"udf",                  DRIVE_CDROM},

    {"ramfs",                DRIVE_RAMDISK},
    {"tmpfs",                DRIVE_RAMDISK},
};
// clang-format on

// The system keeps small files of its own in memory there.
bool IsSystemPlace(std::string_view mountPoint) {
    constexpr std::array<std::string_view, 4> kPlaces{"/dev", "/proc", "/run", "/sys"};
    return std::any_of(kPlaces.begin(), kPlaces.end(),
                       [mountPoint](std::string_view place) { return IsAtOrBelow(mountPoint, place); });
}

// A program packed as an AppImage mounts itself there while it runs.
bool IsPackagedProgram(const MountEntry& mount) {
    return mount.fileSystem.starts_with("fuse.") && mount.mountPoint.starts_with("/tmp/.mount_");
}

// Btrfs mounts a subvolume, which looks like a volume to the user, with its path as the root. Only its
// options distinguish it from a bind mount of a folder.
bool IsSubvolume(const MountEntry& mount) {
    const std::string option = ",subvol=" + mount.root + ",";
    return mount.fileSystem == "btrfs" && ("," + mount.options + ",").find(option) != std::string::npos;
}

// "1" in a file of /sys.
bool SaysYes(const std::string& path) {
    std::ifstream file(path);
    char answer = 0;
    return file.get(answer) && answer == '1';
}

}  // namespace

bool IsSmbMount(const MountEntry& mount) {
    return mount.fileSystem == "cifs" || mount.fileSystem == "smb3";
}

UINT DriveTypeOfFileSystem(std::string_view fileSystem) {
    const auto* const row = std::ranges::find(kFileSystems, fileSystem, &FileSystemRow::name);
    return row == std::end(kFileSystems) ? DRIVE_FIXED : row->type;
}

UINT DriveTypeOfMount(const MountEntry& mount) {
    // A folder of a share can be mounted without the rest, which looks the same as a bind mount of one.
    if (mount.root != "/" && !IsSubvolume(mount) && !IsSmbMount(mount)) return kNoDrive;
    if (IsPackagedProgram(mount)) return kNoDrive;
    const UINT type = DriveTypeOfFileSystem(mount.fileSystem);
    return type == DRIVE_RAMDISK && IsSystemPlace(mount.mountPoint) ? kNoDrive : type;
}

std::string BlockDeviceOf(const MountEntry& mount) {
    // Volumes that a program serves (ntfs-3g) or that may span disks (btrfs) have a device number without a
    // device, but name the device file as their source.
    if (!mount.device.starts_with("0:")) return mount.device;
    struct stat status {};
    if (!mount.source.starts_with("/dev/") || stat(mount.source.c_str(), &status) != 0) return {};
    if (!S_ISBLK(status.st_mode)) return {};
    return std::to_string(major(status.st_rdev)) + ":" + std::to_string(minor(status.st_rdev));
}

bool IsOnRemovableDisk(const MountEntry& mount) {
    const std::string device = BlockDeviceOf(mount);
    if (device.empty()) return false;
    // A partition has no such file, but its disk has one, in the folder above.
    const std::string folder = "/sys/dev/block/" + device;
    return SaysYes(folder + "/removable") || SaysYes(folder + "/../removable");
}

}  // namespace permora::host
