#include "platform/linux/files/object_handle.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/base/lost_requests.h"
#include "platform/linux/files/descriptor_path.h"
#include "platform/linux/files/unmounted_entry.h"

namespace permora::host {

DWORD ObjectHandle::OpenAt(int folder, const char* hostName, ObjectHandle& handle) {
    UniqueFd opened(RequestAgain([&] { return openat(folder, hostName, O_PATH | O_NOFOLLOW | O_CLOEXEC); }));
    if (!opened) return ErrorFromErrno(errno);
    return Adopt(std::move(opened), handle);
}

DWORD ObjectHandle::OpenUnmountedAt(int folder, const char* hostName, ObjectHandle& handle, int flags) {
    UniqueFd opened;
    const int problem = OpenUnmountedEntry(folder, hostName, O_PATH | flags, opened);
    return problem == 0 ? Adopt(std::move(opened), handle) : ErrorFromErrno(problem);
}

// With O_DIRECTORY the kernel looks at the kind before it opens anything: no pipe is waited for, and no
// device notices.
DWORD ObjectHandle::OpenUnmountedFolderAt(int folder, const char* hostName, ObjectHandle& handle) {
    UniqueFd opened;
    const int problem = OpenUnmountedEntry(folder, hostName, O_RDONLY | O_DIRECTORY, opened);
    if (problem != 0) return OpenUnmountedAt(folder, hostName, handle);
    const DWORD error = Adopt(std::move(opened), handle);
    if (error == ERROR_SUCCESS) handle.isReadable = true;
    return error;
}

DWORD ObjectHandle::OpenUnmountedFileAt(int folder, const char* hostName, ObjectHandle& handle) {
    UniqueFd opened;
    ObjectHandle file;
    if (OpenUnmountedEntry(folder, hostName, O_RDONLY | O_NONBLOCK | O_NOCTTY, opened) != 0 ||
        Adopt(std::move(opened), file) != ERROR_SUCCESS || !S_ISREG(file.status.st_mode))
        return OpenUnmountedAt(folder, hostName, handle);
    handle = std::move(file);
    handle.isReadable = true;
    return ERROR_SUCCESS;
}

DWORD ObjectHandle::Adopt(UniqueFd descriptor, ObjectHandle& handle) {
    struct stat status {};
    if (RequestAgain([&] { return fstat(descriptor.Get(), &status); }) != 0) return ErrorFromErrno(errno);
    handle.descriptor = std::move(descriptor);
    handle.isReadable = false;
    handle.status = status;
    return ERROR_SUCCESS;
}

DWORD ObjectHandle::AdoptAsLookedUp(UniqueFd descriptor, ObjectHandle& handle) {
    struct statx known {};
    if (statx(descriptor.Get(), "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_BASIC_STATS, &known) != 0)
        return ErrorFromErrno(errno);
    handle.descriptor = std::move(descriptor);
    handle.isReadable = false;
    handle.status = {};
    handle.status.st_dev = makedev(known.stx_dev_major, known.stx_dev_minor);
    handle.status.st_ino = known.stx_ino;
    handle.status.st_mode = known.stx_mode;
    handle.status.st_nlink = known.stx_nlink;
    handle.status.st_uid = known.stx_uid;
    handle.status.st_gid = known.stx_gid;
    return ERROR_SUCCESS;
}

DWORD ObjectHandle::Refresh() {
    struct stat now {};
    if (fstat(Descriptor(), &now) != 0) return ErrorFromErrno(errno);
    status = now;
    return ERROR_SUCCESS;
}

DWORD ObjectHandle::RequireFolder() const {
    if (IsLink()) return ERROR_CANT_RESOLVE_FILENAME;
    return IsFolder() ? ERROR_SUCCESS : ERROR_DIRECTORY;
}

DWORD ObjectHandle::OpenForListing(UniqueFd& listing) const {
    if (!IsFolder()) return ERROR_DIRECTORY;
    // Through the magic link: opening "." needs the right to enter the folder.
    const DescriptorPath path(Descriptor());
    UniqueFd opened(RequestAgain([&] { return open(path.Text(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!opened) return ErrorFromErrno(errno);
    listing = std::move(opened);
    return ERROR_SUCCESS;
}

DWORD ObjectHandle::TakeForListing(UniqueFd& listing) {
    if (!isReadable || !IsFolder()) return OpenForListing(listing);
    listing = std::move(descriptor);
    return ERROR_SUCCESS;
}

DWORD ObjectHandle::Duplicate(ObjectHandle& handle) const {
    UniqueFd opened(fcntl(Descriptor(), F_DUPFD_CLOEXEC, 0));
    if (!opened) return ErrorFromErrno(errno);
    handle.descriptor = std::move(opened);
    handle.isReadable = isReadable;
    handle.status = status;
    return ERROR_SUCCESS;
}

DWORD ObjectHandle::ReadLinkText(std::string& text) const {
    std::array<char, PATH_MAX> target{};
    const ssize_t length = readlinkat(Descriptor(), "", target.data(), target.size());
    if (length < 0) return ErrorFromErrno(errno);
    text.assign(target.data(), static_cast<std::size_t>(length));
    return ERROR_SUCCESS;
}

}  // namespace permora::host
