#include "platform/linux/files/new_name.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/files/object_handle.h"

namespace permora::host {
namespace {

int RenameFolder(int folder, const char* hostName, int newFolder, const char* newName) {
    struct stat status {};
    if (fstatat(newFolder, newName, &status, AT_SYMLINK_NOFOLLOW) == 0) return EEXIST;
    if (errno != ENOENT) return errno;
    return renameat(folder, hostName, newFolder, newName) == 0 ? 0 : errno;
}

bool LeadToOneObject(int folder, const char* hostName, int newFolder, const char* newName) {
    struct stat one {};
    struct stat other {};
    return fstatat(folder, hostName, &one, AT_SYMLINK_NOFOLLOW) == 0 &&
           fstatat(newFolder, newName, &other, AT_SYMLINK_NOFOLLOW) == 0 && AreOneObject(one, other);
}

// Renames over a file that was made to reserve the name.
int RenameOverOwn(int folder, const char* hostName, int newFolder, const char* newName) {
    const UniqueFd own(openat(newFolder, newName, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0));
    if (!own) return errno;
    if (renameat(folder, hostName, newFolder, newName) == 0) return 0;
    const int problem = errno;
    unlinkat(newFolder, newName, 0);
    return problem;
}

int LinkAndUnlink(int folder, const char* hostName, int newFolder, const char* newName) {
    if (linkat(folder, hostName, newFolder, newName, 0) != 0) {
        const bool hasNoLinks = errno == EPERM || errno == EOPNOTSUPP || errno == EMLINK;
        return hasNoLinks ? RenameOverOwn(folder, hostName, newFolder, newName) : errno;
    }
    // A program that saves by renaming may have put another file there.
    int problem = LeadToOneObject(folder, hostName, newFolder, newName) ? 0 : ESTALE;
    if (problem == 0 && unlinkat(folder, hostName, 0) != 0) problem = errno;
    if (problem != 0) unlinkat(newFolder, newName, 0);
    return problem;
}

}  // namespace

int RenameToFreeName(int folder, const char* hostName, int newFolder, const char* newName, RenamedKind kind) {
    if (renameat2(folder, hostName, newFolder, newName, RENAME_NOREPLACE) == 0) return 0;
    // EINVAL also means that a folder would be moved into itself. The ordinary renaming then reports it
    // again.
    if (errno != EINVAL && errno != ENOSYS) return errno;
    return kind == RenamedKind::kFolder ? RenameFolder(folder, hostName, newFolder, newName)
                                        : LinkAndUnlink(folder, hostName, newFolder, newName);
}

}  // namespace permora::host
