// Drive letters: C: is "/", every other mounted volume that a person would call a disk takes the next free
// letter in the order of mount points, and what is mounted in that place keeps it as long as the process
// lives: a letter never comes to lead elsewhere. Pins come first: those in the registry as the process found
// it (mounted_devices.h), and what it adds itself. What has no letter is reached through C:.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/api/files.h"

namespace permora::host {

struct Drive {
    char letter;           // upper case
    std::string hostRoot;  // "/" or an absolute host path without trailing slash
    UINT type;             // DRIVE_ constant
};

// The type of a drive (upper case) as the machine stands now, a DRIVE_ constant. Of a pinned folder, the
// folder is asked, which may hang.
UINT TypeOfDrive(char letter);

// Gives `letter` to the folder `hostRoot` for this process, before any volume gets one; an empty root removes
// the pin. False, changing nothing, for what is no letter, for C (which is always "/", so that every object
// has a path) and for a root that is not an absolute path.
bool PinDrive(char letter, std::string hostRoot);

// The drives that a mount table (text of /proc/self/mountinfo) gives, without pins. Pure, for tests: it does
// not ask which disks are removable and calls them fixed.
std::vector<Drive> DrivesFromMountTable(const std::string& mountInfo);

struct DriveRoot {
    char letter;  // upper case
    std::string hostRoot;
};

// Where the drive of a letter (upper case) begins; nothing when there is none.
std::optional<DriveRoot> FindDrive(char letter);
// The drive with the longest root that holds an absolute host path (without "." and "..").
DriveRoot DriveHolding(std::string_view hostPath);

// For many paths: the roots of all drives as the machine stands now, and the same question
// about them.
std::vector<DriveRoot> ListDriveRoots();
DriveRoot DriveHolding(std::string_view hostPath, const std::vector<DriveRoot>& roots);

}  // namespace permora::host
