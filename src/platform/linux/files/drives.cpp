#include "platform/linux/files/drives.h"

#include <fcntl.h>
#include <stdlib.h>

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <tuple>
#include <utility>

#include "platform/linux/files/file_system_types.h"
#include "platform/linux/files/mount_table.h"
#include "platform/linux/files/mounted_devices.h"
#include "platform/linux/files/object_handle.h"

namespace permora::host {
namespace {

constexpr char kSystemDrive = 'C';

using Pins = std::map<char, std::string>;

// The letters that volumes have had in this process, by mount point. No other mount point ever gets one of
// them: a path must not lead to another volume after something was mounted or unmounted.
using GivenLetters = std::map<std::string, char>;

// The letters, and which of them are taken.
struct LetterTable {
    Pins pins;
    GivenLetters given;
    // Otherwise the machine's registry is damaged. It may have given a letter to one volume, and that letter
    // must not lead to another: no more letters are given out.
    bool isComplete = true;

    bool HasLetter(const std::string& mountPoint) const {
        const auto known = given.find(mountPoint);
        return known != given.end() && !pins.contains(known->second);
    }

    bool IsPinned(const std::string& hostRoot) const {
        return std::ranges::any_of(pins, [&](const auto& pin) { return pin.second == hostRoot; });
    }

    bool WasGiven(char letter) const {
        return std::ranges::any_of(given, [letter](const auto& each) { return each.second == letter; });
    }

    // Gives a mount point the letter that it had, or the first from D on that is not pinned and was never
    // given, while there are letters left.
    std::optional<char> LetterFor(const std::string& mountPoint) {
        if (HasLetter(mountPoint)) return given.at(mountPoint);
        if (!isComplete) return std::nullopt;
        for (char letter = kSystemDrive + 1; letter <= 'Z'; ++letter) {
            if (pins.contains(letter) || WasGiven(letter)) continue;
            given.insert_or_assign(mountPoint, letter);
            return letter;
        }
        return std::nullopt;
    }
};

bool CanBePinned(char letter) {
    return letter >= 'A' && letter <= 'Z' && letter != kSystemDrive;
}

// The kernel's path of the current directory has no links, so the root of its drive must have none either.
std::string WithoutLinks(std::string hostRoot) {
    const std::unique_ptr<char, decltype(&free)> resolved(realpath(hostRoot.c_str(), nullptr), &free);
    if (resolved) hostRoot = resolved.get();
    while (hostRoot.size() > 1 && hostRoot.back() == '/')
        hostRoot.pop_back();
    return hostRoot;
}

// With the letters that the machine's administrator pinned.
LetterTable LettersOfMachine() {
    const std::optional<MountedDevices> devices = ReadMountedDevices();
    LetterTable letters;
    letters.isComplete = devices.has_value();
    for (const auto& [letter, hostRoot] : devices.value_or(MountedDevices()))
        if (CanBePinned(letter) && hostRoot.starts_with('/'))
            letters.pins.emplace(letter, WithoutLinks(hostRoot));
    return letters;
}

// The letters of this process. One thread at a time.
class SharedLetters {
  public:
    SharedLetters() : lock(All().mutex) {}

    LetterTable& operator*() const { return All().letters; }
    LetterTable* operator->() const { return &**this; }

  private:
    struct Guarded {
        std::mutex mutex;
        LetterTable letters = LettersOfMachine();
    };
    static Guarded& All() {
        static auto& letters = *new Guarded;  // outlives every thread
        return letters;
    }

    std::lock_guard<std::mutex> lock;
};

// A drive whose type is not known yet.
struct LetteredVolume {
    DriveRoot drive;
    std::optional<MountEntry> mount;  // none for a pinned folder
};

std::vector<LetteredVolume> AssignLetters(std::vector<MountEntry> mounts, LetterTable& letters) {
    // In the order of mount points. Of several mounts at one point only the last, which hides the others.
    std::map<std::string, MountEntry> visible;
    for (MountEntry& mount : mounts) {
        std::string mountPoint = mount.mountPoint;
        visible.insert_or_assign(std::move(mountPoint), std::move(mount));
    }

    std::vector<LetteredVolume> volumes;
    for (const auto& [letter, hostRoot] : letters.pins)
        volumes.push_back({{letter, hostRoot}, std::nullopt});

    std::set<std::tuple<std::string, std::string, std::string>> known;
    const auto add = [&](const std::string& mountPoint, MountEntry& mount) {
        const bool isSystem = mountPoint == "/";
        if (!isSystem && DriveTypeOfMount(mount) == DRIVE_NO_ROOT_DIR) return;
        // A volume mounted at two places is one volume. Its source belongs to the comparison: the kernel
        // gives two exports of one server the same number.
        const bool isNew = known.emplace(mount.device, mount.root, mount.source).second;
        if (isSystem) {
            volumes.push_back({{kSystemDrive, mountPoint}, std::move(mount)});
        } else if (isNew && !letters.IsPinned(mountPoint)) {
            if (const auto letter = letters.LetterFor(mountPoint))
                volumes.push_back({{*letter, mountPoint}, std::move(mount)});
        }
    };
    // Of several places of a volume, the one that has its letter comes first.
    for (const bool hasLetter : {true, false}) {
        for (auto& [mountPoint, mount] : visible)
            if ((mountPoint == "/" || letters.HasLetter(mountPoint)) == hasLetter) add(mountPoint, mount);
    }
    // A root directory that is not a mount point (chroot) is in no table.
    if (!visible.contains("/")) volumes.push_back({{kSystemDrive, "/"}, std::nullopt});
    std::sort(volumes.begin(), volumes.end(), [](const LetteredVolume& one, const LetteredVolume& other) {
        return one.drive.letter < other.drive.letter;
    });
    return volumes;
}

std::vector<LetteredVolume> CurrentVolumes() {
    std::vector<MountEntry> mounts = ParseMountTable(ReadMountTable());
    return AssignLetters(std::move(mounts), *SharedLetters());
}

// The type of the volume at `mount`. A volume that would get no letter of its own counts as a disk.
UINT TypeOfDisk(const MountEntry& mount) {
    const UINT type = DriveTypeOfMount(mount);
    return type == DRIVE_NO_ROOT_DIR ? DRIVE_FIXED : type;
}

UINT CurrentType(const LetteredVolume& volume) {
    std::optional<MountEntry> mount = volume.mount;
    if (!mount) {
        UniqueFd folder(open(volume.drive.hostRoot.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        ObjectHandle handle;
        if (!folder || ObjectHandle::Adopt(std::move(folder), handle) != ERROR_SUCCESS)
            return DRIVE_NO_ROOT_DIR;
        mount = MountOf(handle);
        if (!mount) return DRIVE_UNKNOWN;
    }
    const UINT type = TypeOfDisk(*mount);
    return type == DRIVE_FIXED && IsOnRemovableDisk(*mount) ? DRIVE_REMOVABLE : type;
}

}  // namespace

UINT TypeOfDrive(char letter) {
    for (const LetteredVolume& volume : CurrentVolumes())
        if (volume.drive.letter == letter) return CurrentType(volume);
    return DRIVE_NO_ROOT_DIR;
}

bool PinDrive(char letter, std::string hostRoot) {
    if (!CanBePinned(letter)) return false;
    if (hostRoot.empty()) {
        SharedLetters()->pins.erase(letter);
        return true;
    }
    if (hostRoot.front() != '/') return false;
    hostRoot = WithoutLinks(std::move(hostRoot));
    SharedLetters()->pins.insert_or_assign(letter, std::move(hostRoot));
    return true;
}

std::vector<Drive> DrivesFromMountTable(const std::string& mountInfo) {
    std::vector<Drive> drives;
    LetterTable letters;
    for (const LetteredVolume& volume : AssignLetters(ParseMountTable(mountInfo), letters)) {
        const UINT type = volume.mount ? TypeOfDisk(*volume.mount) : DRIVE_UNKNOWN;
        drives.push_back({volume.drive.letter, volume.drive.hostRoot, type});
    }
    return drives;
}

std::optional<DriveRoot> FindDrive(char letter) {
    // The drive of most paths needs no look at the mount table.
    if (letter == kSystemDrive) return DriveRoot{kSystemDrive, "/"};
    for (LetteredVolume& volume : CurrentVolumes())
        if (volume.drive.letter == letter) return std::move(volume.drive);
    return std::nullopt;
}

DriveRoot DriveHolding(std::string_view hostPath) {
    return DriveHolding(hostPath, ListDriveRoots());
}

std::vector<DriveRoot> ListDriveRoots() {
    std::vector<DriveRoot> roots;
    for (LetteredVolume& volume : CurrentVolumes())
        roots.push_back(std::move(volume.drive));
    return roots;
}

DriveRoot DriveHolding(std::string_view hostPath, const std::vector<DriveRoot>& roots) {
    DriveRoot best{kSystemDrive, "/"};
    for (const DriveRoot& root : roots) {
        const bool isLonger = root.hostRoot.size() > best.hostRoot.size();
        if (isLonger && IsAtOrBelow(hostPath, root.hostRoot)) best = root;
    }
    return best;
}

}  // namespace permora::host
