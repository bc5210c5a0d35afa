// How drives look in the list of drives.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "platform/api/files.h"

namespace permora {

// Images of the drive list, as icon resources in the order of the images.
inline constexpr int kRemovableImage = 0;
inline constexpr int kFixedImage = 1;
inline constexpr int kDiscImage = 2;
inline constexpr int kProtectedImage = 3;  // the file system keeps access lists
inline constexpr int kNetworkImage = 4;
extern const std::array<unsigned int, 5> kDriveImages;

struct DriveLook {
    int image = -1;  // -1: the drive is not shown
    const char* typeText = "";
};

// By the system's drive type (DRIVE_ constant).
DriveLook LookOfDrive(UINT driveType);

// Whether a look depends on what the file system can do. Drives that may be slow to answer, or have nothing
// in them, are not asked.
bool DependsOnFileSystem(const DriveLook& look);

// The look after the file system was asked for its flags.
DriveLook WithFileSystem(DriveLook look, DWORD fileSystemFlags);

// "50 GB (Available: 7 GB)", from bytes.
std::string DriveSizeText(std::uint64_t total, std::uint64_t available);

}  // namespace permora
