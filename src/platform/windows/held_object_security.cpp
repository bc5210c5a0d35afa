// The descriptor of a held object: recording and writing new parts, and putting back what was there.
#include <windows.h>

#include <aclapi.h>

#include <cstring>
#include <optional>
#include <utility>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/held_object.h"
#include "platform/security_change.h"
#include "platform/stored_security.h"
#include "platform/windows/changed_top.h"
#include "platform/windows/descriptor_write.h"
#include "platform/windows/folder_entry.h"
#include "platform/windows/held_object_inside.h"
#include "platform/windows/list_propagation.h"
#include "platform/windows/privileges.h"

namespace permora {
namespace {

// A system access list is read by those with a privilege alone.
DWORD SystemListAccess(SECURITY_INFORMATION information) {
    return (information & SACL_SECURITY_INFORMATION) != 0 ? DWORD{ACCESS_SYSTEM_SECURITY} : 0;
}

DWORD ReadFrom(HANDLE object, SECURITY_INFORMATION information, ReadParts& parts) {
    ReadParts read;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const bool withOwner = (information & OWNER_SECURITY_INFORMATION) != 0;
    const bool withList = (information & DACL_SECURITY_INFORMATION) != 0;
    const DWORD error =
        GetSecurityInfo(object, SE_FILE_OBJECT, information, withOwner ? &read.owner : nullptr, nullptr,
                        withList ? &read.dacl : nullptr, nullptr, &descriptor);
    if (error != ERROR_SUCCESS) return error;
    read.descriptor.reset(descriptor);
    parts = std::move(read);
    return ERROR_SUCCESS;
}

// Both as ReadSecurity gives them.
bool HasListOf(HANDLE object, PSECURITY_DESCRIPTOR expected) {
    ReadParts now;
    if (ReadFrom(object, DACL_SECURITY_INFORMATION, now) != ERROR_SUCCESS) return false;
    const DWORD size = GetSecurityDescriptorLength(now.descriptor.get());
    return size == GetSecurityDescriptorLength(expected) &&
           std::memcmp(now.descriptor.get(), expected, size) == 0;
}

DWORD ReadAbove(HANDLE object, nt::ObjectKind kind, std::optional<ListAbove>& above) {
    UniqueHandle folder;
    nt::SecurityDescriptor descriptor;
    DWORD error = OpenFolderOf(object, folder);
    if (error != ERROR_SUCCESS || !folder) return error;
    error = ReadDescriptor(folder.get(), descriptor);
    if (error == ERROR_SUCCESS) above = {ListOf(descriptor), kind, {}, {}};
    return error;
}

// Reads the descriptor and applies the change. The object is read last, since a change between this and the
// write is not noticed.
DWORD MakeChanged(HANDLE object, const SecurityChange& change, nt::SecurityDescriptor& before,
                  nt::SecurityDescriptor& after) {
    FILE_ATTRIBUTE_TAG_INFO tag{};
    DWORD error = TagOf(object, tag);
    if (error == ERROR_SUCCESS) error = ReadDescriptor(object, before);
    if (error != ERROR_SUCCESS) return error;
    std::optional<ListAbove> above;
    if (InheritsAfter(change, before)) {
        const bool isFolder = (tag.FileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        error = ReadAbove(object, isFolder ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile, above);
        if (error == ERROR_SUCCESS) error = ReadDescriptor(object, before);
        if (error != ERROR_SUCCESS) return error;
    }
    after = before;
    ApplyChange(change, above ? &*above : nullptr, after);
    return ERROR_SUCCESS;
}

// One object, by handles that are open for READ_CONTROL and for writing.
DWORD RecordAndWrite(HANDLE object, bool isFolder, const nt::SecurityDescriptor& before,
                     const nt::SecurityDescriptor& after, RecordedTop& top) {
    if (after == before) return ERROR_SUCCESS;
    DescriptorChange change;
    nt::SecurityDescriptor made;
    DWORD error = DescribeChange(object, isFolder, before, after, change);
    if (error == ERROR_SUCCESS) error = top.Record({&change, 1});
    if (error == ERROR_SUCCESS) error = WriteDescriptor(object, before, after);
    if (error != ERROR_SUCCESS) return error;
    // A server or a volume may have made something else of it.
    if (ReadDescriptor(object, made) != ERROR_SUCCESS || made == after) return ERROR_SUCCESS;
    error = StoreDescriptor(made, change.after);
    return error == ERROR_SUCCESS ? top.Record({&change, 1}) : error;
}

}  // namespace

DWORD HeldObject::ReadSecurity(SECURITY_INFORMATION information, ReadParts& parts) const {
    UniqueHandle object;
    const DWORD access = READ_CONTROL | SystemListAccess(information);
    const DWORD error =
        WithPrivileges(kReadingPrivileges, [&] { return OpenAgain(inside->object.get(), access, object); });
    return error == ERROR_SUCCESS ? ReadFrom(object.get(), information, parts) : error;
}

DWORD HeldObject::ReadAbove(SECURITY_INFORMATION information, ReadParts& parts) const {
    UniqueHandle folder;
    DWORD error = OpenFolderOf(inside->object.get(), folder);
    if (error != ERROR_SUCCESS) return error;
    if (folder) return ReadFrom(folder.get(), information, parts);
    parts = {};
    return ERROR_SUCCESS;
}

DWORD HeldObject::FindObstacle(SECURITY_INFORMATION information) const {
    UniqueHandle object;
    const DWORD error = WithPrivileges(kChangingPrivileges, [&] {
        return OpenAgain(inside->object.get(), WritingAccess(information), object);
    });
    return error == ERROR_ACCESS_DENIED || error == ERROR_WRITE_PROTECT ? error : ERROR_SUCCESS;
}

DWORD HeldObject::PreviewSecurity(SECURITY_INFORMATION information, const NewParts& parts,
                                  SecurityPreview& preview) const {
    SecurityChange change;
    SecurityPreview made;
    UniqueHandle object;
    DWORD error = TakeChange(information, parts, change);
    if (error == ERROR_SUCCESS && change.Has(SACL_SECURITY_INFORMATION)) error = ERROR_NOT_SUPPORTED;
    if (error == ERROR_SUCCESS) {
        error = WithPrivileges(kReadingPrivileges, [&] {
            return OpenAgain(inside->object.get(), READ_CONTROL | FILE_READ_ATTRIBUTES, object);
        });
    }
    if (error == ERROR_SUCCESS) error = MakeChanged(object.get(), change, made.before, made.after);
    made.changes = made.before != made.after;
    if (error == ERROR_SUCCESS) preview = std::move(made);
    return error;
}

DWORD HeldObject::WriteSecurity(SECURITY_INFORMATION information, const NewParts& parts,
                                PSECURITY_DESCRIPTOR expected, ChangeRecorder& recorder,
                                FailuresBelow& below) const {
    SecurityChange change;
    DWORD error = TakeChange(information, parts, change);
    if (error == ERROR_SUCCESS && change.Has(SACL_SECURITY_INFORMATION)) error = ERROR_NOT_SUPPORTED;
    if (error != ERROR_SUCCESS) return error;
    const DWORD access = READ_CONTROL | FILE_READ_ATTRIBUTES | WritingAccess(information);
    UniqueHandle object;
    UniqueHandle turns;
    error =
        WithPrivileges(kChangingPrivileges, [&] { return OpenAgain(inside->object.get(), access, object); });
    if (error == ERROR_SUCCESS && !inside->turns) error = TakeTurnOn(inside->object.get(), turns);
    nt::SecurityDescriptor before;
    nt::SecurityDescriptor after;
    if (error == ERROR_SUCCESS) error = MakeChanged(object.get(), change, before, after);
    if (error != ERROR_SUCCESS) return error;
    if (expected != nullptr && !HasListOf(object.get(), expected)) return ERROR_REVISION_MISMATCH;
    RecordedTop top(recorder, object.get(), IsFolder());
    error = RecordAndWrite(object.get(), IsFolder(), before, after, top);
    if (error == ERROR_SUCCESS && change.Has(DACL_SECURITY_INFORMATION) && IsFolder())
        error = PropagateList(object.get(), ListOf(after), top, below);
    return error;
}

SECURITY_INFORMATION HeldObject::PartsAtOnce() const {
    return kDescriptorParts;
}

DWORD HeldObject::ReadStored(StoredSecurity& stored, DamagedBytes /*damaged*/,
                             SystemList /*systemList*/) const {
    UniqueHandle object;
    nt::SecurityDescriptor descriptor;
    DWORD error = WithPrivileges(kReadingPrivileges,
                                 [&] { return OpenAgain(inside->object.get(), READ_CONTROL, object); });
    if (error == ERROR_SUCCESS) error = ReadDescriptor(object.get(), descriptor);
    return error == ERROR_SUCCESS ? StoreDescriptor(descriptor, stored) : error;
}

DWORD HeldObject::PrepareStored(const StoredSecurity& /*before*/, const nt::SecurityDescriptor& descriptor,
                                StoredSecurity& wanted) const {
    return StoreDescriptor(descriptor, wanted) == ERROR_SUCCESS ? ERROR_SUCCESS : ERROR_INVALID_ACL;
}

// The system checks what it stores.
DWORD HeldObject::ReplaceDamaged(ChangeRecorder& /*recorder*/, FailuresBelow& /*below*/) const {
    return ERROR_NOT_SUPPORTED;
}

DWORD HeldObject::WriteStored(const StoredSecurity& expected, const StoredSecurity& wanted,
                              DamagedBytes /*damaged*/) const {
    if (wanted.form != SecurityForm::kVolume || wanted.hostOwner) return ERROR_NOT_SUPPORTED;
    std::optional<nt::SecurityDescriptor> former;
    std::optional<nt::SecurityDescriptor> then;
    DWORD error = DescriptorIn(wanted, then);
    if (error == ERROR_SUCCESS && !then) error = ERROR_INVALID_SECURITY_DESCR;
    if (error != ERROR_SUCCESS) return error;
    if (DescriptorIn(expected, former) != ERROR_SUCCESS || !former) return ERROR_REVISION_MISMATCH;
    const DWORD access = READ_CONTROL | WritingAccess(DifferentParts(*former, *then));
    UniqueHandle object;
    UniqueHandle turns;
    nt::SecurityDescriptor present;
    StoredSecurity stored;
    error =
        WithPrivileges(kChangingPrivileges, [&] { return OpenAgain(inside->object.get(), access, object); });
    if (error == ERROR_SUCCESS && !inside->turns) error = TakeTurnOn(inside->object.get(), turns);
    if (error == ERROR_SUCCESS) error = ReadDescriptor(object.get(), present);
    if (error == ERROR_SUCCESS) error = StoreDescriptor(present, stored);
    if (error == ERROR_SUCCESS && stored != expected) error = ERROR_REVISION_MISMATCH;
    return error == ERROR_SUCCESS ? WriteDescriptor(object.get(), present, *then) : error;
}

}  // namespace permora
