#include "platform/linux/files/object_identity.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

#include <cstddef>
#include <cstring>

#include "platform/linux/files/extended_attributes.h"

namespace permora::host {
namespace {

// On FUSE, an object's handle changes after the kernel has forgotten the object. On an overlay, its time of
// birth changes when the lower layer is copied up.
bool HasLastingMarks(const ObjectHandle& object) {
    struct statfs volume {};
    if (fstatfs(object.Descriptor(), &volume) != 0) return false;
    return volume.f_type != FUSE_SUPER_MAGIC && volume.f_type != OVERLAYFS_SUPER_MAGIC;
}

// The file system's own handle of the object, which contains its generation; empty when it has none.
std::vector<std::uint8_t> FileHandleOf(const ObjectHandle& object) {
    alignas(file_handle) std::uint8_t block[sizeof(file_handle) + MAX_HANDLE_SZ];
    file_handle header{};
    header.handle_bytes = MAX_HANDLE_SZ;
    std::memcpy(block, &header, sizeof header);
    int mountId = 0;
    auto* handle = reinterpret_cast<file_handle*>(block);
    if (name_to_handle_at(object.Descriptor(), "", handle, &mountId, AT_EMPTY_PATH) != 0) return {};
    std::memcpy(&header, block, sizeof header);
    return {block, block + offsetof(file_handle, f_handle) + header.handle_bytes};
}

std::vector<std::uint8_t> BirthOf(const ObjectHandle& object) {
    struct statx status {};
    if (statx(object.Descriptor(), "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_BTIME, &status) != 0 ||
        (status.stx_mask & STATX_BTIME) == 0) {
        return {};
    }
    std::vector<std::uint8_t> birth(sizeof status.stx_btime.tv_sec + sizeof status.stx_btime.tv_nsec);
    std::memcpy(birth.data(), &status.stx_btime.tv_sec, sizeof status.stx_btime.tv_sec);
    std::memcpy(birth.data() + sizeof status.stx_btime.tv_sec, &status.stx_btime.tv_nsec,
                sizeof status.stx_btime.tv_nsec);
    return birth;
}

}  // namespace

ObjectIdentity::ObjectIdentity(const ObjectHandle& object)
    : device(object.Status().st_dev), number(object.Status().st_ino) {
    // ntfs-3g reports the volume's own time of creation.
    if (!HasLastingMarks(object)) {
        if (ReadExtendedAttribute(object, "system.ntfs_crtime", mark) != 0) mark.clear();
        return;
    }
    mark = FileHandleOf(object);
    if (mark.empty()) mark = BirthOf(object);
}

}  // namespace permora::host
