#include "platform/linux/shell/object_type.h"

#include <sys/stat.h>

#include <string_view>

#include "platform/file_types.h"
#include "platform/linux/files/name_mapping.h"
#include "platform/linux/files/paths.h"

namespace permora::host {
namespace {

// The type of a link's target; a broken link stays a link.
mode_t ModeBehindLink(const char* path, const std::string& hostName, mode_t mode) {
    ResolvedObject link;
    if (ResolvePath(path, link) != ERROR_SUCCESS || !link.parent) return mode;
    struct stat target {};
    return fstatat(link.parent.Descriptor(), hostName.c_str(), &target, 0) == 0 ? target.st_mode : mode;
}

std::string TypeOfFile(const std::string& hostName, mode_t mode) {
    const FileTypes* types = thePresenters.fileTypes;
    std::string type = types != nullptr ? types->TypeOfName(hostName) : "";
    if (!type.empty()) return type;
    return (mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0 ? "application/x-executable"
                                                       : "application/octet-stream";
}

}  // namespace

DWORD TypeOfObject(const char* path, std::string& type) {
    ObjectHandle object;
    const DWORD error = OpenObject(path, object);
    if (error != ERROR_SUCCESS) return error;
    const std::string_view text = path;
    std::string hostName;
    // The root of a drive has no name; it is a folder.
    (void)DecodeName(text.substr(text.find_last_of("\\/:") + 1), hostName);
    mode_t mode = object.Status().st_mode;
    if (object.IsLink()) mode = ModeBehindLink(path, hostName, mode);
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
