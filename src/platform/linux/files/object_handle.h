// Handles on file system objects that can never lead anywhere else.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <string>

#include "platform/api/errors.h"
#include "platform/linux/base/unique_fd.h"
#include "platform/nt/inheritance.h"

namespace permora::host {

// Whether two answers of fstat, at two times or by two names, are about one object.
inline bool AreOneObject(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// Holds one object, a link itself and never its target (O_PATH | O_NOFOLLOW), with what fstat said when it
// was opened. What is read and written through the handle is that object even when its name was given to
// another.
class ObjectHandle {
  public:
    ObjectHandle() = default;

    // The entry `hostName` (bytes as the host writes them, one component) of an open folder. 0 or an error
    // code; `handle` is replaced only on success.
    static DWORD OpenAt(int folder, const char* hostName, ObjectHandle& handle);
    // The same unless something is mounted on the entry (ERROR_NOT_SAME_DEVICE). `flags` are further ones of
    // open(2), O_DIRECTORY for example.
    static DWORD OpenUnmountedAt(int folder, const char* hostName, ObjectHandle& handle, int flags = 0);
    // The same for what a listing says is a folder: it can then mostly be listed through this very handle,
    // and its attributes need no way through /proc. Anything else by that name is opened as above.
    static DWORD OpenUnmountedFolderAt(int folder, const char* hostName, ObjectHandle& handle);
    // The same for what a listing says is a file, where no device can be opened (OpenWithoutDevices). A file
    // that another program has a lease on is opened as above, without waiting.
    static DWORD OpenUnmountedFileAt(int folder, const char* hostName, ObjectHandle& handle);
    // Takes over a descriptor that is already open.
    static DWORD Adopt(UniqueFd descriptor, ObjectHandle& handle);
    // The same for one that has just been opened, where only the number and the kind of the object count:
    // what the kernel knows of it since it looked up the name, without asking a server or a driver once more.
    static DWORD AdoptAsLookedUp(UniqueFd descriptor, ObjectHandle& handle);

    explicit operator bool() const { return static_cast<bool>(descriptor); }
    int Descriptor() const { return descriptor.Get(); }
    // As of the opening, or of the last Refresh.
    const struct stat& Status() const { return status; }
    DWORD Refresh();
    bool IsFolder() const { return S_ISDIR(status.st_mode); }
    bool IsLink() const { return S_ISLNK(status.st_mode); }
    bool IsSameObject(const ObjectHandle& other) const { return AreOneObject(status, other.status); }
    nt::ObjectKind Kind() const { return IsFolder() ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile; }

    // ERROR_CANT_RESOLVE_FILENAME for a link, ERROR_DIRECTORY for any other object that is no folder.
    DWORD RequireFolder() const;
    // Whether it is open for reading (O_RDONLY) rather than as a mere place (O_PATH).
    bool IsReadable() const { return isReadable; }
    // A second descriptor of the same folder that can be listed (O_RDONLY | O_DIRECTORY).
    DWORD OpenForListing(UniqueFd& listing) const;
    // The same, for the last user of the handle: the handle's own where that is readable.
    DWORD TakeForListing(UniqueFd& listing);
    // A second handle of the same object, readable like this one.
    DWORD Duplicate(ObjectHandle& handle) const;
    // The text of a link.
    DWORD ReadLinkText(std::string& text) const;

  private:
    UniqueFd descriptor;
    bool isReadable = false;
    struct stat status {};
};

}  // namespace permora::host
