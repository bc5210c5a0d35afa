// Finding again, at another time and in another process, the objects of a change.
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/api/errors.h"
#include "platform/ascii.h"
#include "platform/held_object.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/descriptor_support.h"
#include "platform/linux/files/linux_volume.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/object_identity.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/files/several_names.h"
#include "platform/linux/files/unmounted_entry.h"
#include "platform/linux/security/held_object_inside.h"

namespace permora {
namespace {

using host::ObjectHandle;

// Opens what stands below a folder. No mount is entered, and no link followed; one at the end is opened
// itself with O_NOFOLLOW, and refused without.
DWORD OpenBelow(int folder, const std::string& hostPath, int flags, OpeningBelow opening,
                ObjectHandle& object) {
    open_how how{};
    how.flags = static_cast<unsigned>(O_PATH | O_CLOEXEC | flags);
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_XDEV;
    host::UniqueFd opened(static_cast<int>(syscall(SYS_openat2, folder, hostPath.c_str(), &how, sizeof how)));
    if (!opened) return host::ErrorFromErrno(errno);
    return opening == OpeningBelow::kAsLookedUp ? ObjectHandle::AdoptAsLookedUp(std::move(opened), object)
                                                : ObjectHandle::Adopt(std::move(opened), object);
}

// From `folder` along shown names; `folder` becomes the one that holds the last, `lastHostName`.
DWORD Descend(std::string_view path, ObjectHandle& folder, std::string& lastHostName) {
    std::string hostPath;
    for (;;) {
        const std::string_view shown = TakeUntil('\\', path);
        if (!host::DecodeName(shown, lastHostName)) return ERROR_INVALID_NAME;
        // The kernel takes a path of PATH_MAX bytes at a time.
        const bool isEnd = path.empty();
        const bool isFull = hostPath.size() + 1 + lastHostName.size() >= PATH_MAX;
        if (!hostPath.empty() && (isEnd || isFull)) {
            const DWORD error =
                OpenBelow(folder.Descriptor(), hostPath, O_DIRECTORY, OpeningBelow::kAsPlace, folder);
            if (error != ERROR_SUCCESS) return error;
            hostPath.clear();
        }
        if (isEnd) return ERROR_SUCCESS;
        if (!hostPath.empty()) hostPath += '/';
        hostPath += lastHostName;
    }
}

// What is no file or folder, a pipe for example, could notice being opened.
DWORD OpenToRead(int folder, const std::string& hostName, ObjectHandle& object) {
    struct stat status {};
    if (fstatat(folder, hostName.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return host::ErrorFromErrno(errno);
    if (S_ISREG(status.st_mode)) return ObjectHandle::OpenUnmountedFileAt(folder, hostName.c_str(), object);
    if (S_ISDIR(status.st_mode)) return ObjectHandle::OpenUnmountedFolderAt(folder, hostName.c_str(), object);
    return ObjectHandle::OpenUnmountedAt(folder, hostName.c_str(), object);
}

// As HoldBelow, for the object `here`, which stands in `parent`. `hostName` is that of the object in its
// folder.
DWORD ResolveBelow(const ObjectHandle& here, const ObjectHandle& parent, const std::string& path,
                   OpeningBelow opening, host::ResolvedObject& below, std::string& hostName) {
    host::ResolvedObject found;
    DWORD error = ERROR_SUCCESS;
    if (path.empty()) {
        error = here.Duplicate(found.object);
        if (error == ERROR_SUCCESS && parent) error = parent.Duplicate(found.parent);
    } else {
        if (path.back() == '\\') return ERROR_INVALID_NAME;
        error = here.Duplicate(found.parent);
        if (error == ERROR_SUCCESS) error = Descend(path, found.parent, hostName);
        if (error != ERROR_SUCCESS) return error;
        const int folder = found.parent.Descriptor();
        error = opening == OpeningBelow::kToRead
                    ? OpenToRead(folder, hostName, found.object)
                    : OpenBelow(folder, hostName, O_NOFOLLOW, opening, found.object);
    }
    if (error == ERROR_SUCCESS) below = std::move(found);
    return error;
}

}  // namespace

DWORD HeldObject::HoldTop(const ChangedTop& top, HeldObject& object) {
    HeldObject found;
    const DWORD error = Hold(top.path, found);
    if (error != ERROR_SUCCESS) return error;
    const bool isSame = found.IsFolder() == top.isFolder && !top.mark.empty() &&
                        host::LastingMark(found.inside->target.object) == top.mark;
    if (!isSame) return ERROR_FILE_INVALID;
    object = std::move(found);
    return ERROR_SUCCESS;
}

DWORD HeldObject::HoldBelow(const std::string& path, HeldObject& object) const {
    auto held = std::make_unique<Inside>();
    const ObjectHandle& here = inside->withoutDevices ? inside->withoutDevices : inside->target.object;
    const auto resolve = [&] {
        return ResolveBelow(here, inside->target.parent, path, inside->openingBelow, held->target,
                            held->hostName);
    };
    DWORD error = resolve();
    if (error == ERROR_TOO_MANY_OPEN_FILES) {
        host::RaiseDescriptorLimit();
        error = resolve();
    }
    if (error != ERROR_SUCCESS) return error;
    if (!inside->storeKind) inside->storeKind = host::StoreKindOf(inside->target.object);
    if (!inside->birthPlace) inside->birthPlace = host::BirthPlaceOf(inside->target.object);
    if (!inside->lockFiles) inside->lockFiles = std::make_shared<host::LockFiles>();
    held->storeKind = inside->storeKind;
    held->birthPlace = inside->birthPlace;
    held->lockFiles = inside->lockFiles;
    held->openingBelow = inside->openingBelow;
    object.inside = std::move(held);
    return ERROR_SUCCESS;
}

DWORD HeldObject::HoldAbove(HeldObject& folder) const {
    if (!inside->target.parent) {
        folder = HeldObject();
        return ERROR_SUCCESS;
    }
    auto held = std::make_unique<Inside>();
    const DWORD error = host::ResolvePathFrom(inside->target.parent.Descriptor(), "", held->target);
    if (error == ERROR_SUCCESS) folder.inside = std::move(held);
    return error;
}

void HeldObject::ExpectManyBelow() {
    std::optional<host::UniqueFd> opened;
    if (IsFolder()) opened = host::OpenWithoutDevices(inside->target.object);
    if (opened && ObjectHandle::Adopt(std::move(*opened), inside->withoutDevices) == ERROR_SUCCESS) {
        inside->openingBelow = OpeningBelow::kToRead;
        return;
    }
    // Each question is a round trip to the driver, and nothing kept there depends on the rest of the status.
    if (!inside->storeKind) inside->storeKind = host::StoreKindOf(inside->target.object);
    if (inside->storeKind == host::DescriptorStoreKind::kNtfs3g)
        inside->openingBelow = OpeningBelow::kAsLookedUp;
}

std::uint64_t HeldObject::FileNumber() const {
    return inside->target.object.Status().st_ino;
}

DWORD HeldObject::HasSeveralNames(bool& answer) const {
    const host::ResolvedObject& target = inside->target;
    if (!target.object.IsFolder())
        return host::AskSeveralNames(target.parent.Descriptor(), inside->hostName, target.object, answer);
    answer = false;
    return ERROR_SUCCESS;
}

DWORD HeldObject::FindTop(ChangedTop& top) const {
    const ObjectHandle& object = inside->target.object;
    std::string hostPath;
    DWORD error = host::HostPathOf(object.Descriptor(), hostPath);
    if (error != ERROR_SUCCESS) return error;
    // C: alone leads to everything, and no other letter is certain to lead to the same tomorrow.
    ChangedTop found{.path = host::PathFromHost(hostPath, {{'C', "/"}}),
                     .isFolder = object.IsFolder(),
                     .mark = host::LastingMark(object)};
    // An object that was deleted, or lies outside the process's root, has a text that is no path to it.
    HeldObject there;
    error = HoldTop(found, there);
    if (error != ERROR_SUCCESS) return ERROR_PATH_NOT_FOUND;
    top = std::move(found);
    return ERROR_SUCCESS;
}

DWORD HeldObject::WasBornAfter(std::int64_t seconds, bool& wasBornAfter) const {
    const ObjectHandle& object = inside->target.object;
    if (!inside->birthPlace) inside->birthPlace = host::BirthPlaceOf(object);
    wasBornAfter = host::BirthTimeOf(object, *inside->birthPlace).value_or(seconds) > seconds;
    return ERROR_SUCCESS;
}

}  // namespace permora
