#include "tests/support/ntfs_volume.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <sstream>
#include <string_view>

#include "platform/linux/base/unique_fd.h"
#include "tests/support/command.h"
#include "tests/support/patience.h"

namespace permora::test {

namespace {

using host::UniqueFd;

constexpr const char* kLog = "ntfs-3g.log";

bool MakeSparseFile(const std::string& path, std::uint64_t bytes) {
    const UniqueFd file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    return file && ftruncate(file.Get(), static_cast<off_t>(bytes)) == 0;
}

}  // namespace

std::string NtfsVolume::SkipReason() {
    for (const char* program : {"mkntfs", "ntfs-3g", "ntfssecaudit"})
        if (std::string reason = MissingProgram(program); !reason.empty()) return reason;
    if (!UniqueFd(open("/dev/fuse", O_RDWR | O_CLOEXEC))) return "/dev/fuse cannot be opened";
    return CannotMountReason();
}

NtfsVolume::NtfsVolume(std::uint64_t bytes)
    : image(folder.Path("volume.img")), root(folder.MakeFolder("mounted")) {
    if (!MakeSparseFile(image, bytes)) {
        problem = "cannot make " + image;
        return;
    }
    const CommandResult made = RunCommand({"mkntfs", "-Q", "-F", "-q", image});
    if (made.exitCode != 0) {
        problem = "mkntfs: " + made.output;
        return;
    }
    Mount();
}

NtfsVolume::~NtfsVolume() {
    Unmount();
}

// A file system is mounted on the folder when its device is another one than that of the folder around it.
bool NtfsVolume::IsMounted() const {
    struct stat around {};
    struct stat inside {};
    return stat(folder.Path().c_str(), &around) == 0 && stat(root.c_str(), &inside) == 0 &&
           around.st_dev != inside.st_dev;
}

void NtfsVolume::Mount(NtfsMount mode) {
    Unmount();
    // In the foreground: its end tells that the image is complete, which the end of umount does not.
    std::string options = "no_detach";
    if (mode == NtfsMount::kReadOnly) options += ",ro";
    if (mode == NtfsMount::kStreamsAsFiles) options += ",streams_interface=windows";
    if (mode == NtfsMount::kRequestsCounted) options += ",debug";
    const std::string log = folder.Path(kLog);
    driver = StartService({"ntfs-3g", "-o", options, image, root}, log);
    if (driver <= 0 || !Await([this] { return IsMounted(); })) problem = "ntfs-3g: " + ReadWholeFile(log);
}

std::size_t NtfsVolume::Requests() const {
    const std::string log = ReadWholeFile(folder.Path(kLog));
    constexpr std::string_view kRequest = "opcode: ";
    std::size_t count = 0;
    for (std::size_t at = log.find(kRequest); at != log.npos; at = log.find(kRequest, at + 1))
        ++count;
    return count;
}

void NtfsVolume::Unmount() {
    if (driver <= 0) return;
    if (umount2(root.c_str(), UMOUNT_NOFOLLOW) != 0) umount2(root.c_str(), UMOUNT_NOFOLLOW | MNT_DETACH);
    AwaitServiceEnd(driver);
    driver = -1;
}

std::string NtfsVolume::Audit(const std::string& path) {
    Unmount();
    return RunCommand({"ntfssecaudit", "-r", "-v", image, path}).output;
}

std::string NtfsVolume::AuditedEntries(const std::string& path) {
    Unmount();
    std::istringstream text(RunCommand({"ntfssecaudit", "-vv", image, path}).output);
    std::string entries;
    bool inList = false;
    for (std::string line; std::getline(text, line);) {
        if (line == "DACL") inList = true;  // the last part, since these volumes have no system lists
        std::istringstream words(line);
        std::string label;
        std::string value;
        words >> label >> value;
        if (label == "Acc") words >> value;
        const bool isField = label == "type" || label == "flags" || label == "Acc" || label == "hex";
        if (inList && isField) entries += value + (label == "hex" ? "\n" : " ");
    }
    return entries;
}

}  // namespace permora::test
