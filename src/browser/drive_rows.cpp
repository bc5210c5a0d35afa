#include "browser/drive_rows.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <list>
#include <memory>
#include <utility>

#include "browser/folder_rows.h"
#include "browser/list_presentation.h"
#include "platform/host_path.h"
#include "platform/network_path.h"
#include "platform/visible_text.h"
#include "platform/volume_question.h"
#include "resources/resource_ids.h"

namespace permora {
namespace {

constexpr std::array<unsigned int, 5> kDriveImages = {IDI_DRIVE_REMOVABLE, IDI_DRIVE_FIXED, IDI_DRIVE_CDROM,
                                                      IDI_DRIVE_PROTECTED, IDI_DRIVE_NETWORK};
constexpr int kRemovableImage = 0;
constexpr int kFixedImage = 1;
constexpr int kDiscImage = 2;
constexpr int kProtectedImage = 3;  // the file system keeps access lists
constexpr int kNetworkImage = 4;

// A root and its NUL in the system's list of drives.
constexpr std::size_t kDriveEntryLength = 4;

// "C:\" and so on, each with its NUL; empty on failure. A drive may appear between the two calls.
std::string DriveStrings() {
    std::string strings;
    DWORD length = GetLogicalDriveStringsA(0, nullptr);
    while (length > strings.size()) {
        strings.resize(length);
        length = GetLogicalDriveStringsA(static_cast<DWORD>(strings.size()), strings.data());
    }
    strings.resize(length);
    return strings;
}

constexpr DWORD kNameRoom = 261;

struct VolumeFacts {
    std::array<char, kNameRoom> label{};
    std::array<char, kNameRoom> fileSystem{};
    DWORD flags = 0;
};

// False if the volume does not respond; nothing is known then.
bool AskVolume(const std::string& root, VolumeFacts& facts) {
    return GetVolumeInformationA(root.c_str(), facts.label.data(), kNameRoom, nullptr, nullptr, &facts.flags,
                                 facts.fileSystem.data(), kNameRoom) != FALSE;
}

struct DriveSpace {
    ULARGE_INTEGER available{};  // to this user
    ULARGE_INTEGER total{};
};

bool AskSpace(const std::string& root, DriveSpace& space) {
    return GetDiskFreeSpaceExA(root.c_str(), &space.available, &space.total, nullptr) != FALSE;
}

// What a drive has answered so far, on another thread.
struct AskedDrive {
    explicit AskedDrive(std::string asked) : root(std::move(asked)) {}

    const std::string root;
    std::atomic<UINT> type = DRIVE_FIXED;
    Row row;  // of a drive that has answered

    void Ask();
};

void AskedDrive::Ask() {
    type = GetDriveTypeA(root.c_str());
    DriveLook look = LookOfDrive(type);
    VolumeFacts facts;
    if (DependsOnFileSystem(look) && AskVolume(root, facts)) look = WithFileSystem(look, facts.flags);
    row = {.name = root, .type = look.typeText, .image = look.image};
    std::string available;
    if (DriveSpace space; type == DRIVE_FIXED && AskSpace(root, space)) {
        row.size = DriveSizeText(space.total.QuadPart, space.available.QuadPart);
        available = FormatSize(space.available.QuadPart);
    }
    const std::string label = type == DRIVE_REMOTE ? NetworkFromPath(root) : facts.label.data();
    row.more = {VisibleText(label), VisibleText(HostPathFromPath(root)), available};
}

Row RowWithoutAnswer(const AskedDrive& drive) {
    return {.name = drive.root,
            .type = kNoAnswer,
            .more = {kNoAnswer, VisibleText(HostPathFromPath(drive.root)), {}},
            .image = LookOfDrive(drive.type).image};
}

}  // namespace

std::span<const unsigned int> DriveRows::Images() const {
    return kDriveImages;
}

std::span<const char* const> DriveRows::MoreHeaders() const {
    static constexpr std::array<const char*, 3> kHeaders = {"Label", "Mount Point", "Available"};
    return kHeaders;
}

std::string DriveRows::VolumeOf(const std::string& root) const {
    return VolumeOfPath(root);
}

bool DriveRows::Offers(unsigned int command) const {
    return command == ID_WIZARD || command == ID_SECURE_DELETION;
}

// All at a time, and each on its own.
Outcome DriveRows::List(const RowOptions& /*options*/, RowReceiver& receiver) {
    constexpr std::chrono::milliseconds kPatience{3000};
    struct Question {
        std::shared_ptr<AskedDrive> drive;
        VolumeQuestion question;
        DWORD error = ERROR_SUCCESS;
    };
    const std::string roots = DriveStrings();
    std::list<Question> questions;
    for (std::size_t place = 0; place + kDriveEntryLength <= roots.size(); place += kDriveEntryLength) {
        Question& each = questions.emplace_back();
        each.drive = std::make_shared<AskedDrive>(roots.c_str() + place);
        each.error =
            each.question.Ask(VolumeOfPath(each.drive->root), [drive = each.drive] { drive->Ask(); });
    }
    const auto end = std::chrono::steady_clock::now() + kPatience;
    int count = 0;
    for (Question& each : questions) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        const bool isSilent = each.error == ERROR_TIMEOUT || !each.question.IsAnswered(std::max(left, {}));
        if (each.error != ERROR_SUCCESS && !isSilent) each.drive->Ask();  // there is no thread for it
        Row row = isSilent ? RowWithoutAnswer(*each.drive) : std::move(each.drive->row);
        row.position = count;
        if (row.image >= 0 && !receiver.Add(std::move(row))) return {ERROR_NOT_ENOUGH_MEMORY};
        receiver.ShowCount(++count);
        if (!receiver.GoOn()) return {ERROR_CANCELLED};
    }
    return {};
}

// As much as is known of the drive.
std::string DriveRows::Tip(const std::string& root) const {
    VolumeFacts facts;
    if (!AskVolume(root, facts)) return {};
    const std::string fileSystem = facts.fileSystem.data();
    std::string tip = std::string("Name: ") + facts.label.data() +
                      "\nFile System: " + (fileSystem.empty() ? "Unknown" : fileSystem);
    DriveSpace space;
    if (!AskSpace(root, space)) return tip;
    return tip + "\nTotal Space: " + FormatSize(space.total.QuadPart) +
           "\nAvailable Space: " + FormatSize(space.available.QuadPart);
}

Outcome DriveRows::FindPath(const std::string& root, std::string& path) const {
    path = root;
    return {};
}

std::unique_ptr<RowSource> DriveRows::Enter(const std::string& root) const {
    return std::make_unique<FolderRows>(root);
}

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
