// Handles on file system objects that can never lead anywhere else.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include "platform/api/errors.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/nt/inheritance.h"

namespace permora::host {

// Holds one object, a link itself and never its target (O_PATH | O_NOFOLLOW), with what fstat said when it
// was opened. What is read and written through the handle is that object even when its name was given to
// another.
class ObjectHandle {
  public:
    ObjectHandle() = default;

    // The entry `hostName` (bytes as the host writes them, one component) of an open folder. 0 or an error
    // code; `handle` is replaced only on success.
    static DWORD OpenAt(int folder, const char* hostName, ObjectHandle& handle);
    // Takes over a descriptor that is already open.
    static DWORD Adopt(UniqueFd descriptor, ObjectHandle& handle);

    explicit operator bool() const { return static_cast<bool>(descriptor); }
    int Descriptor() const { return descriptor.Get(); }
    const struct stat& Status() const { return status; }
    bool IsFolder() const { return S_ISDIR(status.st_mode); }
    bool IsLink() const { return S_ISLNK(status.st_mode); }
    bool IsSameObject(const ObjectHandle& other) const {
        return status.st_dev == other.status.st_dev && status.st_ino == other.status.st_ino;
    }
    nt::ObjectKind Kind() const { return IsFolder() ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile; }

    // A second descriptor of the same folder that can be listed (O_RDONLY | O_DIRECTORY).
    DWORD OpenForListing(UniqueFd& listing) const;

  private:
    UniqueFd descriptor;
    struct stat status {};
};

}  // namespace permora::host
