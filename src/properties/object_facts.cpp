#include "properties/object_facts.h"

#include <array>
#include <cstdio>
#include <string_view>

#include "browser/drive_rows.h"
#include "browser/folder_paths.h"
#include "browser/list_presentation.h"
#include "browser/shell_items.h"
#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/api/time.h"
#include "platform/host_path.h"
#include "platform/link_target.h"
#include "platform/system_message.h"
#include "platform/visible_text.h"
#include "security/object_security.h"

namespace permora {
namespace {

constexpr const char* kUnknown = "Unknown";

struct NamedAttribute {
    DWORD flag;
    const char* name;
};
constexpr NamedAttribute kNamedAttributes[] = {
    {FILE_ATTRIBUTE_READONLY, "read-only"},
    {FILE_ATTRIBUTE_HIDDEN, "hidden"},
    {FILE_ATTRIBUTE_SYSTEM, "system"},
    {FILE_ATTRIBUTE_ARCHIVE, "archive"},
    {FILE_ATTRIBUTE_TEMPORARY, "temporary"},
    {FILE_ATTRIBUTE_OFFLINE, "offline"},
    {FILE_ATTRIBUTE_NOT_CONTENT_INDEXED, "not indexed"},
    {FILE_ATTRIBUTE_COMPRESSED, "compressed"},
    {FILE_ATTRIBUTE_ENCRYPTED, "encrypted"},
    {FILE_ATTRIBUTE_SPARSE_FILE, "sparse"},
};

std::string AttributeText(DWORD attributes) {
    std::string text;
    for (const NamedAttribute& each : kNamedAttributes)
        if ((attributes & each.flag) != 0) text += (text.empty() ? "" : ", ") + std::string(each.name);
    return text.empty() ? "none" : text;
}

std::string OrUnknown(const std::string& text) {
    return text.empty() ? kUnknown : text;
}

std::string TimeText(const FILETIME& time) {
    SYSTEMTIME universal{};
    SYSTEMTIME local{};
    const bool isKnown = (time.dwLowDateTime | time.dwHighDateTime) != 0;
    if (!isKnown || FileTimeToSystemTime(&time, &universal) == FALSE ||
        SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local) == FALSE) {
        return kUnknown;
    }
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d", local.wYear, local.wMonth,
                  local.wDay, local.wHour, local.wMinute, local.wSecond);
    return text.data();
}

// "1,234,567".
std::string GroupedDigits(ULONGLONG number) {
    constexpr std::size_t kGroup = 3;
    std::string digits = std::to_string(number);
    for (std::size_t place = digits.size(); place > kGroup; place -= kGroup)
        digits.insert(place - kGroup, 1, ',');
    return digits;
}

std::string Counted(ULONGLONG count, const char* one, const char* several) {
    return GroupedDigits(count) + ' ' + (count == 1 ? one : several);
}

std::string HostPathText(const std::string& path) {
    return OrUnknown(VisibleText(HostPathFromPath(path)));
}

ObjectSort SortOf(DWORD attributes) {
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return ObjectSort::kLink;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? ObjectSort::kFolder : ObjectSort::kFile;
}

void AddLinkFacts(const std::string& path, ObjectFacts& facts) {
    const std::string targetKind = facts.kind;
    facts.kind = targetKind == kUnknown ? "Link" : "Link (" + targetKind + ')';
    facts.target = kUnknown;
    static_cast<void>(ReadLinkTarget(path.c_str(), facts.target));  // leaves it at that
}

void AddSpace(const std::string& root, ObjectFacts& drive) {
    ULARGE_INTEGER total{};
    ULARGE_INTEGER free{};
    if (GetDiskFreeSpaceExA(root.c_str(), nullptr, &total, &free) == FALSE) {
        drive.capacity = drive.used = drive.free = kUnknown;
        return;
    }
    const ULONGLONG used = total.QuadPart - free.QuadPart;
    drive.capacity = SizeText(total.QuadPart);
    drive.used = SizeText(used);
    drive.free = SizeText(free.QuadPart);
    constexpr double kPercent = 100;
    if (total.QuadPart != 0)
        drive.usedPercent =
            static_cast<int>(kPercent * static_cast<double>(used) / static_cast<double>(total.QuadPart));
}

ObjectFacts FactsOfDrive(const std::string& root) {
    ObjectFacts drive;
    drive.sort = ObjectSort::kDrive;
    const std::string type = LookOfDrive(GetDriveTypeA(root.c_str())).typeText;
    drive.kind = type.empty() ? "Drive" : type + " drive";
    std::array<char, 261> label{};
    std::array<char, 261> fileSystem{};
    // Both stay empty if the volume does not respond.
    static_cast<void>(GetVolumeInformationA(root.c_str(), label.data(), DWORD{label.size()}, nullptr, nullptr,
                                            nullptr, fileSystem.data(), DWORD{fileSystem.size()}));
    drive.name = label.front() == '\0' ? root : root + " (" + label.data() + ')';
    drive.fileSystem = OrUnknown(fileSystem.data());
    AddSpace(root, drive);
    return drive;
}

}  // namespace

DWORD ReadObjectFacts(const std::string& path, ObjectFacts& facts) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data) == FALSE) return GetLastError();
    const std::string folder = FolderAbove(path);
    if (folder.empty()) {
        facts = FactsOfDrive(path);
        facts.hostPath = HostPathText(path);
        return ERROR_SUCCESS;
    }
    ObjectFacts found;
    found.sort = SortOf(data.dwFileAttributes);
    found.name = NameInFolder(path);
    found.kind = OrUnknown(ShellTypeName(path));
    found.location = folder;
    found.hostPath = HostPathText(path);
    found.created = TimeText(data.ftCreationTime);
    found.modified = TimeText(data.ftLastWriteTime);
    found.accessed = TimeText(data.ftLastAccessTime);
    found.attributes = AttributeText(data.dwFileAttributes);
    if (found.sort == ObjectSort::kLink) AddLinkFacts(path, found);
    facts = std::move(found);
    return ERROR_SUCCESS;
}

std::string OwnerText(const std::string& path) {
    HeldObject object;
    AccountRecord owner;
    DWORD error = HeldObject::Hold(path, object);
    if (error == ERROR_SUCCESS) error = ReadObjectOwner(object, owner);
    if (error != ERROR_SUCCESS) return SystemMessageLine(error);
    return owner.sid ? AccountDisplayName(owner) : "none";
}

std::string SizeText(ULONGLONG bytes) {
    constexpr ULONGLONG kKilobyte = 1024;
    const std::string exact = Counted(bytes, "byte", "bytes");
    return bytes < kKilobyte ? exact : FormatSize(bytes) + " (" + exact + ')';
}

std::string ContentsText(const TreeSize& size) {
    std::string text =
        Counted(size.files, "file", "files") + ", " + Counted(size.folders, "folder", "folders");
    if (size.mounted != 0)
        text += "; not counted: " + Counted(size.mounted, "mounted volume", "mounted volumes");
    if (size.unread != 0) text += "; not readable: " + Counted(size.unread, "object", "objects");
    return text;
}

}  // namespace permora
