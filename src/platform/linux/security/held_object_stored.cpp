// The security of a held object byte for byte: reading what is kept, and putting it back.
#include <cstdint>
#include <optional>
#include <utility>

#include "platform/api/errors.h"
#include "platform/held_object.h"
#include "platform/linux/files/descriptor_support.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/linux/security/held_object_inside.h"
#include "platform/linux/security/new_object.h"
#include "platform/linux/security/owner_setting.h"
#include "platform/linux/security/propagation.h"
#include "platform/linux/security/recorded_top.h"
#include "platform/security_change.h"
#include "platform/stored_security.h"

namespace permora {

using host::DescriptorStore;

namespace {

// Before the store is asked what the object has. Of its status only the host's owner belongs to that.
DWORD RefreshOwner(host::ObjectHandle& object, DescriptorStore& store) {
    return store.HasHostOwners(object) ? object.Refresh() : ERROR_SUCCESS;
}

// What is kept of a damaged descriptor; ERROR_REVISION_MISMATCH for one that is not.
DWORD FindDamaged(const host::ObjectHandle& object, DescriptorStore& store, StoredSecurity& found) {
    nt::SecurityDescriptor whole;
    const DWORD error = store.Read(object, whole);
    if (error == ERROR_SUCCESS) return ERROR_REVISION_MISMATCH;
    if (error != ERROR_INVALID_SECURITY_DESCR) return error;
    found = store.Found(object);
    return ERROR_SUCCESS;
}

// What a reading comes to where damaged bytes are taken for what they are.
DWORD Allowing(DamagedBytes damaged, DWORD error) {
    const bool isTaken = damaged == DamagedBytes::kTaken && error == ERROR_INVALID_SECURITY_DESCR;
    return isTaken ? DWORD{ERROR_SUCCESS} : error;
}

// A server takes them from every write, and a descriptor without its system access list may have lost them.
void KeepSystemListFlags(const StoredSecurity& before, nt::SecurityDescriptor& descriptor) {
    constexpr unsigned kFlags = nt::kSaclAutoInherited | nt::kSaclProtected;
    const auto present = nt::SecurityDescriptor::FromBytes(before.bytes);
    const unsigned flags = present ? present->control & kFlags : 0U;
    descriptor.control = static_cast<std::uint16_t>((descriptor.control & ~kFlags) | flags);
}

ListPlace PlaceOnVolume(host::DescriptorStoreKind kind) {
    if (kind == host::DescriptorStoreKind::kSmb) return ListPlace::kSmb;
    return kind == host::DescriptorStoreKind::kNtfs3 ? ListPlace::kNtfs3 : ListPlace::kNtfs3g;
}

}  // namespace

DWORD HeldObject::ReadStored(StoredSecurity& stored, DamagedBytes damaged, SystemList systemList) const {
    host::ObjectHandle& object = inside->target.object;
    DescriptorStore store(inside->storeKind);
    nt::SecurityDescriptor descriptor;
    DWORD error = RefreshOwner(object, store);
    if (error == ERROR_SUCCESS) error = Allowing(damaged, store.Read(object, descriptor, systemList));
    if (error == ERROR_SUCCESS) stored = store.Found(object);
    return error;
}

DWORD HeldObject::FindListPlace(ListPlace& place) const {
    const host::ObjectHandle& object = inside->target.object;
    StoredSecurity stored;
    if (const DWORD error = ReadStored(stored, DamagedBytes::kTaken); error != ERROR_SUCCESS) return error;
    switch (stored.form) {
        case SecurityForm::kVolume:
            place = PlaceOnVolume(host::StoreKindOf(object));
            return ERROR_SUCCESS;
        case SecurityForm::kSamba:
            place = ListPlace::kSamba;
            return ERROR_SUCCESS;
        case SecurityForm::kUser:
            place = ListPlace::kUser;
            return ERROR_SUCCESS;
        case SecurityForm::kNone:
        case SecurityForm::kShare:
            break;
    }
    place = ListPlace::kNowhere;
    return ERROR_SUCCESS;
}

DWORD HeldObject::PrepareStored(const StoredSecurity& before, const nt::SecurityDescriptor& given,
                                StoredSecurity& wanted) const {
    host::ObjectHandle& object = inside->target.object;
    DescriptorStore store(inside->storeKind);
    const SystemList systemList = SystemListIn(before);
    nt::SecurityDescriptor descriptor = given;
    if (store.IsGivenByServer(object) && systemList == SystemList::kLeftOut)
        KeepSystemListFlags(before, descriptor);
    if (const DWORD error = object.Refresh(); error != ERROR_SUCCESS) return error;
    const bool changesOwner =
        descriptor.owner && !host::HasOwner(object, descriptor, *descriptor.owner, store);
    StoredSecurity prepared;
    const DWORD error = changesOwner ? host::PrepareWithOwner(object, descriptor, store, prepared, systemList)
                                     : store.Prepare(object, descriptor, prepared, systemList);
    if (error == ERROR_SUCCESS) wanted = std::move(prepared);
    return error;
}

DWORD HeldObject::WriteStored(const StoredSecurity& expected, const StoredSecurity& wanted,
                              DamagedBytes damaged) const {
    host::ObjectHandle& object = inside->target.object;
    host::ObjectTurn turn(inside->lockFiles);
    DescriptorStore store(inside->storeKind);
    nt::SecurityDescriptor present;
    std::optional<nt::SecurityDescriptor> then;
    DWORD error = inside->turn ? ERROR_SUCCESS : turn.Take(object);
    if (error == ERROR_SUCCESS) error = RefreshOwner(object, store);
    if (error == ERROR_SUCCESS)
        error = Allowing(damaged, store.Read(object, present, SystemListIn(expected)));
    if (error == ERROR_SUCCESS && store.Found(object) != expected) error = ERROR_REVISION_MISMATCH;
    if (error == ERROR_SUCCESS) error = Allowing(damaged, store.Examine(object, wanted, then));
    if (error != ERROR_SUCCESS) return error;
    // Nothing is known of the owner in damaged bytes.
    const bool changesOwner = !then ? wanted.hostOwner != expected.hostOwner : then->owner != present.owner;
    if (changesOwner && store.HasHostOwners(object) && !host::MayChangeOwner(object))
        return ERROR_ACCESS_DENIED;
    return store.Replace(object, expected, wanted);
}

DWORD HeldObject::ReplaceDamaged(ChangeRecorder& recorder, FailuresBelow& below) const {
    host::ResolvedObject& target = inside->target;
    host::ObjectTurn turn;
    host::RecordedTop top;
    host::NewObjectSecurity folder;
    DescriptorStore store(inside->storeKind);
    DescriptorChange change;
    change.isFolder = target.object.IsFolder();
    StoredSecurity now;
    DWORD error = inside->turn ? ERROR_SUCCESS : turn.Take(target.object);
    if (error == ERROR_SUCCESS) error = target.object.Refresh();
    if (error == ERROR_SUCCESS) error = FindDamaged(target.object, store, change.before);
    if (error == ERROR_SUCCESS && target.parent) error = host::NewObjectSecurity::Of(target.parent, folder);
    if (error == ERROR_SUCCESS) error = folder.Prepare(target.object, change.after);
    if (error == ERROR_SUCCESS) error = top.Begin(*this, recorder);
    change.fileNumber = target.object.Status().st_ino;
    if (error == ERROR_SUCCESS && top.BatchSize() > 0) error = top.Record({&change, 1});
    // Recording takes long enough for others to change it.
    if (error == ERROR_SUCCESS) error = FindDamaged(target.object, store, now);
    if (error == ERROR_SUCCESS && now != change.before) error = ERROR_REVISION_MISMATCH;
    if (error == ERROR_SUCCESS) error = store.Replace(target.object, change.before, change.after);
    nt::SecurityDescriptor made;
    if (error == ERROR_SUCCESS) error = store.Read(target.object, made);
    if (error != ERROR_SUCCESS || !change.isFolder) return error;
    FailuresBelow failures;
    error = host::PropagateList(target.object, ListOf(made), store, top, failures);
    if (error == ERROR_SUCCESS) below = std::move(failures);
    return error;
}

}  // namespace permora
