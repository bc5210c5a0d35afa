#include "platform/linux/files/new_name.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace permora::host {
namespace {

int RenameFolder(int folder, const char* hostName, int newFolder, const char* newName) {
    struct stat status {};
    if (fstatat(newFolder, newName, &status, AT_SYMLINK_NOFOLLOW) == 0) return EEXIST;
    if (errno != ENOENT) return errno;
    return renameat(folder, hostName, newFolder, newName) == 0 ? 0 : errno;
}

int LinkAndUnlink(int folder, const char* hostName, int newFolder, const char* newName) {
    if (linkat(folder, hostName, newFolder, newName, 0) != 0) return errno;
    if (unlinkat(folder, hostName, 0) == 0) return 0;
    const int problem = errno;
    unlinkat(newFolder, newName, 0);
    return problem;
}

}  // namespace

int RenameToFreeName(int folder, const char* hostName, int newFolder, const char* newName, RenamedKind kind) {
    if (renameat2(folder, hostName, newFolder, newName, RENAME_NOREPLACE) == 0) return 0;
    // EINVAL also when a folder would come into itself; the usual renaming says so again.
    if (errno != EINVAL && errno != ENOSYS) return errno;
    return kind == RenamedKind::kFolder ? RenameFolder(folder, hostName, newFolder, newName)
                                        : LinkAndUnlink(folder, hostName, newFolder, newName);
}

}  // namespace permora::host
