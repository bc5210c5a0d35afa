// The security of a held object byte for byte: reading what is kept, and putting it back.
#include <optional>

#include "platform/api/errors.h"
#include "platform/held_object.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/linux/security/held_object_inside.h"
#include "platform/linux/security/owner_setting.h"

namespace permora {

using host::DescriptorStore;

DWORD HeldObject::ReadStored(StoredSecurity& stored) const {
    host::ObjectHandle& object = inside->target.object;
    DescriptorStore store(inside->storeKind);
    nt::SecurityDescriptor descriptor;
    DWORD error = object.Refresh();
    if (error == ERROR_SUCCESS) error = store.Read(object, descriptor);
    if (error == ERROR_SUCCESS) stored = store.Found(object);
    return error;
}

DWORD HeldObject::PrepareStored(const nt::SecurityDescriptor& descriptor, StoredSecurity& wanted) const {
    host::ObjectHandle& object = inside->target.object;
    DescriptorStore store(inside->storeKind);
    if (const DWORD error = object.Refresh(); error != ERROR_SUCCESS) return error;
    const bool changesOwner =
        descriptor.owner && !host::HasOwner(object, descriptor, *descriptor.owner, store);
    StoredSecurity prepared;
    const DWORD error = changesOwner ? host::PrepareWithOwner(object, descriptor, store, prepared)
                                     : store.Prepare(object, descriptor, prepared);
    if (error == ERROR_SUCCESS) wanted = std::move(prepared);
    return error;
}

DWORD HeldObject::WriteStored(const StoredSecurity& expected, const StoredSecurity& wanted) const {
    host::ObjectHandle& object = inside->target.object;
    host::ObjectTurn turn = inside->lockFile ? host::ObjectTurn(inside->lockFile) : host::ObjectTurn();
    DescriptorStore store(inside->storeKind);
    nt::SecurityDescriptor present;
    std::optional<nt::SecurityDescriptor> then;
    DWORD error = inside->turn ? ERROR_SUCCESS : turn.Take(object);
    if (error == ERROR_SUCCESS) error = object.Refresh();
    if (error == ERROR_SUCCESS) error = store.Read(object, present);
    if (error == ERROR_SUCCESS && store.Found(object) != expected) error = ERROR_REVISION_MISMATCH;
    if (error == ERROR_SUCCESS) error = store.Examine(object, wanted, then);
    if (error != ERROR_SUCCESS) return error;
    const bool changesOwner = then && then->owner != present.owner;
    if (changesOwner && store.HasHostOwners(object) && !host::MayChangeOwner(object))
        return ERROR_ACCESS_DENIED;
    return store.Replace(object, expected, wanted);
}

}  // namespace permora
