#include "platform/linux/files/drives.h"

#include <gmock/gmock.h>
#include <sys/mount.h>

#include <ostream>
#include <string>
#include <vector>

#include "platform/linux/files/mounted_devices.h"
#include "platform/linux/files/paths.h"
#include "tests/platform/linux/files/files_fixture.h"
#include "tests/support/command.h"
#include "tests/support/own_mounts.h"

namespace permora::host {

void PrintTo(const Drive& drive, std::ostream* out) {
    *out << drive.letter << ": " << drive.hostRoot << " (" << drive.type << ")";
}

namespace {

auto IsDrive(char letter, const std::string& hostRoot, UINT type) {
    return testing::AllOf(testing::Field(&Drive::letter, letter), testing::Field(&Drive::hostRoot, hostRoot),
                          testing::Field(&Drive::type, type));
}

TEST(DrivesFromMountTable, GivesLettersToWhatAPersonWouldCallADisk) {
    // In the order in which the machine mounted them; optional fields vary as the kernel writes them.
    const std::string table = R"(22 31 0:20 / /proc rw,nosuid,nodev,noexec,relatime shared:14 - proc proc rw
23 31 0:21 / /sys rw,nosuid,nodev,noexec,relatime shared:7 - sysfs sysfs rw
24 31 0:5 / /dev rw,nosuid,relatime shared:2 - devtmpfs udev rw,size=8113380k,mode=755
25 24 0:22 / /dev/pts rw,nosuid,noexec,relatime shared:3 - devpts devpts rw,gid=5,mode=620
26 31 0:23 / /run rw,nosuid,nodev,noexec,relatime shared:5 - tmpfs tmpfs rw,size=1628164k,mode=755
27 24 0:24 / /dev/shm rw,nosuid,nodev shared:4 - tmpfs tmpfs rw
31 1 259:2 / / rw,relatime shared:1 - ext4 /dev/nvme0n1p2 rw,errors=remount-ro
33 31 259:1 / /boot/efi rw,relatime shared:30 - vfat /dev/nvme0n1p1 rw,fmask=0077,dmask=0077
34 31 0:40 / /tmp rw,nosuid,nodev shared:31 - tmpfs tmpfs rw
35 31 0:41 /@home /home rw,relatime shared:32 - btrfs /dev/nvme0n1p3 rw,space_cache,subvolid=257,subvol=/@home
36 31 0:41 /@home/anna/music /srv/music rw,relatime - btrfs /dev/nvme0n1p3 rw,space_cache,subvolid=257,subvol=/@home
37 31 259:2 /var/lib/games /srv/games rw,relatime shared:1 - ext4 /dev/nvme0n1p2 rw,errors=remount-ro
38 31 259:2 / /var/root-again rw,relatime shared:1 master:9 - ext4 /dev/nvme0n1p2 rw,errors=remount-ro
39 31 7:3 / /snap/editor/41 ro,nodev,relatime shared:33 - squashfs /dev/loop3 ro
40 26 0:44 / /run/user/1000/gvfs rw,nosuid,nodev,relatime shared:34 - fuse.gvfsd-fuse gvfsd-fuse rw,user_id=1000
41 26 8:17 / /run/media/anna/STICK rw,nosuid,nodev,relatime shared:35 - vfat /dev/sdb1 rw,uid=1000
42 31 0:45 / /media/Old\040disk\134\040\0431 rw,relatime shared:36 - fuseblk /dev/sdc1 rw,user_id=0,allow_other
43 31 11:0 / /media/cdrom0 ro,relatime shared:37 - iso9660 /dev/sr0 ro
44 31 0:46 / /net/a rw,relatime shared:38 - nfs4 server:/export/a rw,vers=4.2,addr=192.0.2.7
45 31 0:46 / /net/b rw,relatime shared:38 - nfs4 server:/export/b rw,vers=4.2,addr=192.0.2.7
46 31 0:47 / /mnt/auto rw,relatime shared:39 - autofs systemd-1 rw,fd=43
47 46 0:48 / /mnt/auto rw,relatime shared:40 - cifs //server/share rw,vers=3.1.1
48 31 0:49 / /home/anna/far rw,nosuid,nodev,relatime shared:41 - fuse.sshfs anna@far: rw,user_id=1000
49 31 0:50 / /var/lib/docker/overlay2/9f/merged rw,relatime - overlay overlay rw,lowerdir=/l
52 34 0:52 / /tmp/.mount_editorXb3f ro,nosuid,nodev,relatime - fuse.editor.AppImage editor.AppImage ro,user_id=1000
50 31 0:51 / /home/anna/image rw,relatime - fuse /home/anna/disk.img rw,user_id=0
this line is none
51 31 8:33
)";
    EXPECT_THAT(
        DrivesFromMountTable(table),
        testing::ElementsAre(
            IsDrive('C', "/", DRIVE_FIXED), IsDrive('D', "/boot/efi", DRIVE_FIXED),
            IsDrive('E', "/home", DRIVE_FIXED), IsDrive('F', "/home/anna/far", DRIVE_REMOTE),
            IsDrive('G', "/home/anna/image", DRIVE_FIXED), IsDrive('H', "/media/Old disk\\ #1", DRIVE_FIXED),
            IsDrive('I', "/media/cdrom0", DRIVE_CDROM), IsDrive('J', "/mnt/auto", DRIVE_REMOTE),
            IsDrive('K', "/net/a", DRIVE_REMOTE), IsDrive('L', "/net/b", DRIVE_REMOTE),
            IsDrive('M', "/run/media/anna/STICK", DRIVE_FIXED), IsDrive('N', "/tmp", DRIVE_RAMDISK)));
}

TEST(DrivesFromMountTable, ARootDirectoryIsAlwaysC) {
    EXPECT_THAT(DrivesFromMountTable(""), testing::ElementsAre(IsDrive('C', "/", DRIVE_UNKNOWN)));
    EXPECT_THAT(DrivesFromMountTable("1 0 0:50 /merged / rw - overlay overlay rw\n"),
                testing::ElementsAre(IsDrive('C', "/", DRIVE_FIXED)));
}

TEST(DrivesFromMountTable, VolumesBeyondTheLastLetterHaveNone) {
    std::string table = "1 0 8:1 / / rw - ext4 /dev/sda1 rw\n";
    for (int i = 10; i < 50; ++i) {
        const std::string number = std::to_string(i);
        table += number + " 1 8:" + number + " / /disks/" + number + " rw - xfs /dev/sd" + number + " rw\n";
    }
    const std::vector<Drive> drives = DrivesFromMountTable(table);
    ASSERT_EQ(drives.size(), 24U);
    EXPECT_THAT(drives.back(), IsDrive('Z', "/disks/32", DRIVE_FIXED));
}

TEST(MountedDevices, AreTextsWithALetterOfTheirOwn) {
    const auto document = RegistryDocument::Parse(
        "Windows Registry Editor Version 5.00\n\n"
        "[HKEY_LOCAL_MACHINE\\SYSTEM\\MountedDevices]\n"
        R"("\\DosDevices\\U:"="/media/backup")"
        "\n"
        R"("\\DosDevices\\v:"="/media/Ü v")"
        "\n"
        R"("\\DosDevices\\W:"=hex:01,02)"
        "\n"
        R"("\\DosDevices\\XY:"="/two")"
        "\n"
        R"("\\??\\Volume{1}"="/none")"
        "\n");
    ASSERT_TRUE(document);
    EXPECT_THAT(MountedDevicesIn(*document),
                testing::ElementsAre(testing::Pair('U', "/media/backup"), testing::Pair('V', "/media/Ü v")));
}

using Drives = OnDriveT;

std::string DriveStrings() {
    std::string roots(GetLogicalDriveStringsA(0, nullptr), 'x');
    const DWORD length = GetLogicalDriveStringsA(static_cast<DWORD>(roots.size()), roots.data());
    EXPECT_EQ(length + 1, roots.size());
    EXPECT_EQ(roots.back(), '\0');
    roots.pop_back();
    return roots;
}

TEST_F(Drives, APinComesBeforeAnyVolumeAndCStaysTheRoot) {
    if (test::CannotMountReason().empty()) ASSERT_EQ(test::EnterOwnMounts(), "");  // the list stays as it is
    EXPECT_FALSE(PinDrive('C', folder.Path()));
    EXPECT_FALSE(PinDrive('t', folder.Path()));
    EXPECT_FALSE(PinDrive('U', "relative"));
    const std::string roots = DriveStrings();
    EXPECT_TRUE(roots.starts_with(std::string("C:\\\0", 4)));
    EXPECT_EQ(roots.find(std::string("T:\\\0", 4)) % 4, 0U);
    char tooSmall[4] = "abc";
    EXPECT_EQ(GetLogicalDriveStringsA(static_cast<DWORD>(roots.size()), tooSmall), roots.size() + 1);
    EXPECT_STREQ(tooSmall, "abc");
    EXPECT_NE(GetDriveTypeA("C:\\"), DRIVE_NO_ROOT_DIR);
    EXPECT_EQ(GetDriveTypeA(nullptr), GetDriveTypeA("t:/"));
    EXPECT_EQ(GetDriveTypeA("T:\\x"), DRIVE_NO_ROOT_DIR);
    EXPECT_EQ(GetDriveTypeA("T"), DRIVE_NO_ROOT_DIR);

    // The second of two pins that lie in one another holds what is below both.
    const std::string inner = folder.MakeFolder("inner");
    ASSERT_TRUE(PinDrive('U', inner + "/"));
    EXPECT_EQ(PathFromHost(inner + "/x"), "U:\\x");
    EXPECT_EQ(PathFromHost(inner + "x"), "T:\\innerx");
    ASSERT_TRUE(PinDrive('U', ""));
    EXPECT_EQ(PathFromHost(inner + "/x"), "T:\\inner\\x");
    EXPECT_EQ(GetDriveTypeA("U:\\"), DRIVE_NO_ROOT_DIR);
}

TEST_F(Drives, AMountedVolumeIsADriveAsLongAsItIsMounted) {
    if (const std::string reason = test::CannotMountReason(); !reason.empty()) GTEST_SKIP() << reason;
    ASSERT_EQ(test::EnterOwnMounts(), "");  // others' mounting uses letters up
    const std::string mountPoint = folder.MakeFolder("ram disk");
    ASSERT_EQ(mount("none", mountPoint.c_str(), "tmpfs", 0, nullptr), 0);
    const std::string path = PathFromHost(mountPoint);
    EXPECT_EQ(path.substr(1), ":\\");
    EXPECT_NE(path[0], 'T');
    EXPECT_EQ(GetDriveTypeA(path.c_str()), DRIVE_RAMDISK);
    // What is mounted before it later on takes another letter.
    const std::string earlier = folder.MakeFolder("earlier");
    ASSERT_EQ(mount("none", earlier.c_str(), "tmpfs", 0, nullptr), 0);
    EXPECT_NE(PathFromHost(earlier), path);
    EXPECT_EQ(PathFromHost(mountPoint), path);
    EXPECT_EQ(umount(earlier.c_str()), 0);
    ResolvedObject resolved;
    EXPECT_EQ(ResolvePath((path + "missing").c_str(), resolved), ERROR_FILE_NOT_FOUND);
    ASSERT_EQ(ResolvePath(path.c_str(), resolved), ERROR_SUCCESS);
    EXPECT_FALSE(resolved.parent);
    resolved = {};

    ASSERT_TRUE(PinDrive('U', mountPoint));
    EXPECT_EQ(PathFromHost(mountPoint), "U:\\");
    EXPECT_EQ(GetDriveTypeA(path.c_str()), DRIVE_NO_ROOT_DIR);  // it moved and has no second letter
    ASSERT_TRUE(PinDrive('U', ""));
    EXPECT_EQ(umount(mountPoint.c_str()), 0);
    EXPECT_EQ(PathFromHost(mountPoint), "T:\\ram disk");
}

}  // namespace
}  // namespace permora::host
