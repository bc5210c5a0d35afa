#include "platform/held_object.h"

#include <fcntl.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/descriptor_support.h"
#include "platform/linux/files/folder_handle.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/linux/security/held_object_inside.h"

namespace permora {

HeldObject::HeldObject() = default;
HeldObject::HeldObject(HeldObject&& other) noexcept = default;
HeldObject& HeldObject::operator=(HeldObject&& other) noexcept = default;
HeldObject::~HeldObject() = default;

DWORD HeldObject::Hold(const std::string& path, HeldObject& object) {
    auto held = std::make_unique<Inside>();
    const DWORD error = host::ResolvePath(path.c_str(), held->target);
    if (error == ERROR_SUCCESS) object.inside = std::move(held);
    return error;
}

bool HeldObject::IsFolder() const {
    return inside->target.object.IsFolder();
}

FolderEntryKind HeldObject::Kind() const {
    return host::KindOfMode(inside->target.object.Status().st_mode);
}

DWORD HeldObject::AskAccessControl(bool& isSupported) const {
    // Links and devices cannot hold every kind of list of their volume, but their folder can.
    const host::ResolvedObject& target = inside->target;
    const host::ObjectHandle& asked =
        target.object.IsFolder() || !target.parent ? target.object : target.parent;
    struct statfs volume {};
    if (fstatfs(asked.Descriptor(), &volume) != 0) return host::ErrorFromErrno(errno);
    isSupported = host::StoreKindOf(asked) != host::DescriptorStoreKind::kNone;
    return ERROR_SUCCESS;
}

DWORD HeldObject::FindObstacle(SECURITY_INFORMATION /*information*/) const {
    const host::ObjectHandle& object = inside->target.object;
    struct statvfs volume {};
    if (fstatvfs(object.Descriptor(), &volume) == 0 && (volume.f_flag & ST_RDONLY) != 0)
        return ERROR_WRITE_PROTECT;
    if (host::StoreKindOf(object) != host::DescriptorStoreKind::kUser) return ERROR_SUCCESS;
    // A descriptor for Samba is not this process's to change, and user attributes follow the mode bits.
    host::DescriptorStore store;
    nt::SecurityDescriptor descriptor;
    const bool isForSamba =
        store.Read(object, descriptor) == ERROR_SUCCESS && store.Found(object).form == SecurityForm::kSamba;
    const bool isClosed =
        faccessat(object.Descriptor(), "", W_OK, AT_EACCESS | AT_EMPTY_PATH) != 0 && errno == EACCES;
    return isForSamba || isClosed ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
}

DWORD HeldObject::TakeTurn() {
    return inside->turn ? ERROR_SUCCESS : inside->turn.Take(inside->target.object);
}

}  // namespace permora
