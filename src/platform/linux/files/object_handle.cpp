#include "platform/linux/files/object_handle.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/descriptor_path.h"

namespace permora::host {

DWORD ObjectHandle::OpenAt(int folder, const char* hostName, ObjectHandle& handle) {
    UniqueFd opened(openat(folder, hostName, O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!opened) return ErrorFromErrno(errno);
    return Adopt(std::move(opened), handle);
}

DWORD ObjectHandle::Adopt(UniqueFd descriptor, ObjectHandle& handle) {
    struct stat status {};
    if (fstat(descriptor.Get(), &status) != 0) return ErrorFromErrno(errno);
    handle.descriptor = std::move(descriptor);
    handle.status = status;
    return ERROR_SUCCESS;
}

DWORD ObjectHandle::OpenForListing(UniqueFd& listing) const {
    if (!IsFolder()) return ERROR_DIRECTORY;
    // The magic link and not ".", which a folder that may be listed but not entered does not have.
    UniqueFd opened(open(DescriptorPath(Descriptor()).Text(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened) return ErrorFromErrno(errno);
    listing = std::move(opened);
    return ERROR_SUCCESS;
}

}  // namespace permora::host
