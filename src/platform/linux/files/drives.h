// Drive letters: C: is "/", every other mounted volume that a person would call a disk takes the next free
// letter in the order of mount points. Pins come first.
#pragma once

#include <string>
#include <vector>

#include "platform/api/files.h"

namespace permora::host {

struct Drive {
    char letter;           // upper case
    std::string hostRoot;  // "/" or an absolute host path without trailing slash
    UINT type;             // DRIVE_ constant
};

// All drives, in letter order, as the machine stands now.
std::vector<Drive> ListDrives();

// Gives `letter` to the folder `hostRoot` for this process, before any volume gets one; an empty root removes
// the pin.
void PinDrive(char letter, std::string hostRoot);

// The drives that a mount table (text of /proc/self/mountinfo) gives, without pins. Pure, for tests.
std::vector<Drive> DrivesFromMountTable(const std::string& mountInfo);

}  // namespace permora::host
