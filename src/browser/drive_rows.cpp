#include "browser/drive_rows.h"

#include "browser/list_presentation.h"
#include "resources/resource_ids.h"

namespace permora {

constexpr std::array<unsigned int, 5> kDriveImages = {IDI_DRIVE_REMOVABLE, IDI_DRIVE_FIXED, IDI_DRIVE_CDROM,
                                                      IDI_DRIVE_PROTECTED, IDI_DRIVE_NETWORK};

DriveLook LookOfDrive(UINT driveType) {
    switch (driveType) {
        case DRIVE_REMOVABLE:
            return {kRemovableImage, "Removable"};
        case DRIVE_FIXED:
            return {kFixedImage, "Fixed"};
        case DRIVE_REMOTE:
            return {kNetworkImage, "Remote"};
        case DRIVE_CDROM:
            return {kDiscImage, "CD-ROM"};
        case DRIVE_RAMDISK:
            return {kFixedImage, "RAM disk"};
        default:
            return {};
    }
}

bool DependsOnFileSystem(const DriveLook& look) {
    return look.image != kRemovableImage && look.image != kNetworkImage;
}

DriveLook WithFileSystem(DriveLook look, DWORD fileSystemFlags) {
    if ((fileSystemFlags & FILE_PERSISTENT_ACLS) != 0) look.image = kProtectedImage;
    return look;
}

std::string DriveSizeText(std::uint64_t total, std::uint64_t available) {
    return FormatSize(total) + " (Available: " + FormatSize(available) + ")";
}

}  // namespace permora
