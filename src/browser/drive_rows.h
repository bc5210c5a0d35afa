// The machine's drives as rows of the browser.
#pragma once

#include <string>

#include "browser/row_source.h"
#include "platform/api/files.h"

namespace permora {

inline constexpr const char* kDriveListLocation = "Accessible disk drives";

// In the place of what is not known of a drive whose volume does not answer.
inline constexpr const char* kNoAnswer = "No answer";

// The name of a row is the drive's root ("C:\"). Each drive has some seconds for its answer.
class DriveRows : public RowSource {
  public:
    PlaceKind Kind() const override { return PlaceKind::kDrives; }
    std::string Location() const override { return kDriveListLocation; }
    std::span<const unsigned int> Images() const override;
    std::span<const char* const> MoreHeaders() const override;  // label, mount point and space
    std::string VolumeOf(const std::string& root) const override;
    bool Offers(unsigned int command) const override;
    std::unique_ptr<RowSource> Anew() const override { return std::make_unique<DriveRows>(); }
    Outcome List(const RowOptions& options, RowReceiver& receiver) override;
    std::string Tip(const std::string& root) const override;
    Outcome FindPath(const std::string& root, std::string& path) const override;
    std::unique_ptr<RowSource> Enter(const std::string& root) const override;
};

struct DriveLook {
    int image = -1;  // -1: the drive is not shown
    const char* typeText = "";
};

// By the system's drive type (DRIVE_ constant).
DriveLook LookOfDrive(UINT driveType);

// Whether a look depends on what the file system can do. Drives that may be slow or
// empty are not asked.
bool DependsOnFileSystem(const DriveLook& look);

// The look with the flags of the file system.
DriveLook WithFileSystem(DriveLook look, DWORD fileSystemFlags);

// "50 GB (Available: 7 GB)", from bytes.
std::string DriveSizeText(std::uint64_t total, std::uint64_t available);

}  // namespace permora
