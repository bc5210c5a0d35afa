#include "platform/linux/shell/target_folder.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

#include "platform/api/text.h"
#include "platform/ascii.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/wide_text.h"
#include "platform/linux/files/attributes.h"
#include "platform/linux/files/extended_attributes.h"
#include "platform/linux/files/folder_listing.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/named_streams.h"
#include "platform/linux/shell/unfinished_files.h"

namespace permora::host {
namespace {

// By UTF-16 units, as NTFS compares names.
std::u16string WithoutCase(const std::string& hostName) {
    std::u16string name = ToWide(hostName);
    CharUpperBuffW(name.data(), static_cast<DWORD>(name.size()));
    return name;
}

// In every folder, Windows opens a device under these names, also with an extension or blanks at the end.
// Source: "Naming Files, Paths, and Namespaces" in its documentation.
bool IsDeviceName(std::string_view hostName) {
    constexpr std::array<std::string_view, 6> kDevices{"con", "prn", "aux", "nul", "conin$", "conout$"};
    constexpr std::array<std::string_view, 2> kNumberedDevices{"com", "lpt"};
    constexpr std::array<std::string_view, 13> kNumbers{"0", "1", "2", "3", "4", "5", "6",
                                                        "7", "8", "9", "¹", "²", "³"};
    const std::string stem = InLowerCase(WithoutOuterBlanks(hostName.substr(0, hostName.find('.'))));
    if (std::ranges::find(kDevices, stem) != kDevices.end()) return true;
    constexpr std::size_t kLetters = 3;
    const std::string_view name(stem);
    return std::ranges::find(kNumberedDevices, name.substr(0, kLetters)) != kNumberedDevices.end() &&
           std::ranges::find(kNumbers, name.substr(kLetters)) != kNumbers.end();
}

// The name of `folder` may lead to another folder since it was found.
DWORD ReadNames(const ObjectHandle& folder, std::unordered_map<std::u16string, std::string>& names) {
    UniqueFd opened;
    DWORD error = folder.OpenForListing(opened);
    if (error != ERROR_SUCCESS) return error;
    FolderListing listing(std::move(opened));
    for (FolderListing::Entry entry{}; listing.Next(entry, error);)
        names.emplace(WithoutCase(entry.name), entry.name);
    return error;
}

// The position where the extension begins.
std::size_t ExtensionStart(const std::string& hostName, nt::ObjectKind kind) {
    const std::size_t dot = hostName.rfind('.');
    const bool hasExtension = kind == nt::ObjectKind::kFile && dot != hostName.npos && dot != 0;
    return hasExtension ? dot : hostName.size();
}

}  // namespace

VolumeTraits AskVolume(const ObjectHandle& object) {
    VolumeTraits traits;
    struct statfs volume {};
    traits.isServedByProgram = fstatfs(object.Descriptor(), &volume) == 0 &&
                               static_cast<unsigned>(volume.f_type) == FUSE_SUPER_MAGIC;
    const AttributeStore store = AttributeStoreOf(object);
    traits.isNtfs = store == AttributeStore::kNtfs;
    traits.isOnServer = store == AttributeStore::kServer;
    traits.showsStreamsAsFiles = traits.isNtfs && AskExtendedAttribute(object, kStreamListAttribute) == 0;
    return traits;
}

std::unique_ptr<TargetFolder> TargetFolder::Use(HeldFolder folder) {
    auto traits = std::make_shared<VolumeTraits>(AskVolume(folder.handle));
    return std::unique_ptr<TargetFolder>(new TargetFolder(std::move(folder), std::move(traits)));
}

std::string TargetFolder::ShownPathOf(const std::string& hostName) const {
    return JoinShownPath(held.shownPath, EncodeName(hostName));
}

DWORD TargetFolder::CheckName(const std::string& hostName) const {
    if (!volume->isNtfs) return ERROR_SUCCESS;
    constexpr std::string_view kForbidden = "\\:*?\"<>|";
    const bool isForbidden = std::any_of(hostName.begin(), hostName.end(), [&](char character) {
        return kForbidden.find(character) != kForbidden.npos || IsControl(character);
    });
    const bool isLostAtEnd = hostName.ends_with('.') || hostName.ends_with(' ');
    return isForbidden || isLostAtEnd || IsDeviceName(hostName) ? ERROR_INVALID_NAME : ERROR_SUCCESS;
}

DWORD TargetFolder::LoadNames() {
    if (names) return ERROR_SUCCESS;
    std::unordered_map<std::u16string, std::string> found;
    const DWORD error = isNew ? ERROR_SUCCESS : ReadNames(held.handle, found);
    if (error == ERROR_SUCCESS) names = std::move(found);
    return error;
}

DWORD TargetFolder::FindClash(const std::string& hostName, std::optional<Clash>& clash) {
    clash.reset();
    if (!volume->isNtfs) return isNew ? ERROR_SUCCESS : OpenClash(hostName, clash);
    if (const DWORD error = LoadNames(); error != ERROR_SUCCESS) return error;
    const auto known = names->find(WithoutCase(hostName));
    if (known == names->end()) return ERROR_SUCCESS;
    // Some drivers allow several names that differ only in case. Then exactly this name is meant.
    const DWORD error = OpenClash(hostName, clash);
    const bool isSettled = error != ERROR_SUCCESS || clash || known->second == hostName;
    return isSettled ? error : OpenClash(known->second, clash);
}

DWORD TargetFolder::OpenClash(const std::string& hostName, std::optional<Clash>& clash) const {
    Clash found;
    const DWORD error = ObjectHandle::OpenUnmountedAt(Descriptor(), hostName.c_str(), found.object);
    if (error == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) return error;
    found.hostName = hostName;
    clash = std::move(found);
    return ERROR_SUCCESS;
}

DWORD TargetFolder::FindCopyName(const std::string& hostName, nt::ObjectKind kind, std::string& copyName) {
    const std::size_t extension = ExtensionStart(hostName, kind);
    const std::string stem = hostName.substr(0, extension) + " - Copy";
    for (unsigned number = 1;; ++number) {
        std::string name = stem;
        if (number > 1) name += " (" + std::to_string(number) + ")";
        name += hostName.substr(extension);
        std::optional<Clash> clash;
        const DWORD error = FindClash(name, clash);
        if (error == ERROR_SUCCESS && clash) continue;
        if (error == ERROR_SUCCESS) copyName = std::move(name);
        return error;
    }
}

void TargetFolder::SweepOnce() {
    if (!isNew && !isSwept) SweepUnfinished(held.handle);
    isSwept = true;
}

void TargetFolder::Took(const std::string& hostName, const ObjectHandle& object) {
    if (names) names->insert_or_assign(WithoutCase(hostName), hostName);
    taken.insert(object.Status().st_ino);
}

bool TargetFolder::HasTaken(const ObjectHandle& object) const {
    return taken.contains(object.Status().st_ino);
}

void TargetFolder::Forget() {
    isNew = false;
    names.reset();
}

DWORD TargetFolder::LoadSecurity() {
    if (security) return ERROR_SUCCESS;
    NewObjectSecurity read;
    const DWORD error = NewObjectSecurity::Of(held.handle, read);
    if (error == ERROR_SUCCESS) security = std::move(read);
    return error;
}

DWORD TargetFolder::Secure(const ObjectHandle& made) {
    const DWORD error = LoadSecurity();
    return error == ERROR_SUCCESS ? security->Give(made) : error;
}

std::unique_ptr<TargetFolder> TargetFolder::UseSubfolder(Clash clash) const {
    HeldFolder folder{std::move(clash.object), ShownPathOf(clash.hostName)};
    return std::unique_ptr<TargetFolder>(new TargetFolder(std::move(folder), volume));
}

DWORD TargetFolder::MakeSubfolder(const std::string& hostName, mode_t mode,
                                  std::unique_ptr<TargetFolder>& made) {
    HeldFolder folder;
    folder.shownPath = ShownPathOf(hostName);
    DWORD error = LoadSecurity();
    if (error == ERROR_SUCCESS) error = security->MakeFolder(held.handle, hostName, mode, folder.handle);
    if (error != ERROR_SUCCESS) return error;
    Took(hostName, folder.handle);
    made.reset(new TargetFolder(std::move(folder), volume));
    made->isNew = true;
    return ERROR_SUCCESS;
}

}  // namespace permora::host
