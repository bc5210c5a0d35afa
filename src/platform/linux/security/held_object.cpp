#include "platform/held_object.h"

#include <sys/vfs.h>

#include <cerrno>
#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/descriptor_support.h"
#include "platform/linux/security/descriptor_view.h"
#include "platform/linux/security/held_object_inside.h"
#include "platform/linux/security/security_change.h"

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

DWORD HeldObject::AskAccessControl(bool& isSupported) const {
    // Links and devices cannot hold every kind of list that their volume keeps: their folder is asked.
    const host::ResolvedObject& target = inside->target;
    const host::ObjectHandle& asked =
        target.object.IsFolder() || !target.parent ? target.object : target.parent;
    struct statfs volume {};
    if (fstatfs(asked.Descriptor(), &volume) != 0) return host::ErrorFromErrno(errno);
    isSupported = host::StoreKindOf(asked) != host::DescriptorStoreKind::kNone;
    return ERROR_SUCCESS;
}

DWORD HeldObject::ReadSecurity(SECURITY_INFORMATION information, ReadParts& parts) const {
    nt::SecurityDescriptor found;
    ReadParts read;
    DWORD error = host::DescriptorStore().Read(inside->target.object, found);
    if (error == ERROR_SUCCESS)
        error = host::HandOutDescriptor(std::move(found), information, read.descriptor);
    if (error != ERROR_SUCCESS) return error;
    const auto view = host::DescriptorView::Of(read.descriptor.get());
    if (!view) return ERROR_INVALID_SECURITY_DESCR;
    read.owner = view->owner;
    read.dacl = view->dacl;
    parts = std::move(read);
    return ERROR_SUCCESS;
}

DWORD HeldObject::TakeTurn() {
    return inside->turn ? ERROR_SUCCESS : inside->turn.Take(inside->target.object);
}

DWORD HeldObject::WriteList(SECURITY_INFORMATION information, PACL list, PSECURITY_DESCRIPTOR expected,
                            FailuresBelow& below) const {
    host::SecurityChange change;
    host::ObjectTurn turn;
    DWORD error = host::TakeChange(information, nullptr, nullptr, list, nullptr, change);
    if (error == ERROR_SUCCESS && !inside->turn) error = turn.Take(inside->target.object);
    return error == ERROR_SUCCESS ? host::ChangeSecurity(inside->target, change, expected, below) : error;
}

DWORD HeldObject::WriteOwner(PSID owner) const {
    host::SecurityChange change;
    host::ObjectTurn turn;
    FailuresBelow below;
    DWORD error = host::TakeChange(OWNER_SECURITY_INFORMATION, owner, nullptr, nullptr, nullptr, change);
    if (error == ERROR_SUCCESS && !inside->turn) error = turn.Take(inside->target.object);
    return error == ERROR_SUCCESS ? host::ChangeSecurity(inside->target, change, nullptr, below) : error;
}

}  // namespace permora
