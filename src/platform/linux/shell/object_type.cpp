#include "platform/linux/shell/object_type.h"

#include <sys/stat.h>

#include <string_view>

#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/shell/mime_database.h"

namespace permora::host {
namespace {

// The object itself, or what it leads to. A link that leads nowhere stays one.
mode_t ModeBehind(const ResolvedObject& found, const std::string& hostName) {
    struct stat target {};
    const bool leadsSomewhere = found.object.IsLink() && found.parent &&
                                fstatat(found.parent.Descriptor(), hostName.c_str(), &target, 0) == 0;
    return leadsSomewhere ? target.st_mode : found.object.Status().st_mode;
}

std::string TypeOfFile(const std::string& hostName, mode_t mode) {
    std::string type = MimeDatabase::Shared().TypeOfName(hostName);
    if (!type.empty()) return type;
    return (mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0 ? "application/x-executable"
                                                       : "application/octet-stream";
}

}  // namespace

DWORD TypeOfObject(const char* path, std::string& type) {
    ResolvedObject found;
    const DWORD error = ResolvePath(path, found);
    if (error != ERROR_SUCCESS) return error;
    const std::string_view text = path;
    std::string hostName;
    // The root of a drive has no name; it is a folder.
    (void)DecodeName(text.substr(text.find_last_of("\\/:") + 1), hostName);
    const mode_t mode = ModeBehind(found, hostName);
    switch (mode & S_IFMT) {
        case S_IFDIR:
            type = "inode/directory";
            break;
        case S_IFLNK:
            type = "inode/symlink";
            break;
        case S_IFCHR:
            type = "inode/chardevice";
            break;
        case S_IFBLK:
            type = "inode/blockdevice";
            break;
        case S_IFIFO:
            type = "inode/fifo";
            break;
        case S_IFSOCK:
            type = "inode/socket";
            break;
        default:
            type = TypeOfFile(hostName, mode);
            break;
    }
    return ERROR_SUCCESS;
}

}  // namespace permora::host
