// The descriptor of a held object: reading parts of it, and writing new ones.
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/memory.h"
#include "platform/held_object.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/linux/security/descriptor_view.h"
#include "platform/linux/security/held_object_inside.h"
#include "platform/linux/security/owner_setting.h"
#include "platform/linux/security/propagation.h"
#include "platform/nt/inheritance.h"
#include "platform/raw_security.h"

namespace permora {
namespace {

using host::DescriptorStore;
using host::ResolvedObject;

constexpr SECURITY_INFORMATION kParts = OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION |
                                        DACL_SECURITY_INFORMATION | SACL_SECURITY_INFORMATION;
constexpr SECURITY_INFORMATION kProtection =
    PROTECTED_DACL_SECURITY_INFORMATION | UNPROTECTED_DACL_SECURITY_INFORMATION;

constexpr WORD kDaclControl = SE_DACL_PRESENT | SE_DACL_DEFAULTED | SE_DACL_AUTO_INHERIT_REQ |
                              SE_DACL_AUTO_INHERITED | SE_DACL_PROTECTED;
constexpr WORD kSaclControl = SE_SACL_PRESENT | SE_SACL_DEFAULTED | SE_SACL_AUTO_INHERIT_REQ |
                              SE_SACL_AUTO_INHERITED | SE_SACL_PROTECTED;

// New parts, checked and copied from the caller's memory.
struct SecurityChange {
    SECURITY_INFORMATION information = 0;
    nt::Sid owner;
    nt::Sid group;
    std::optional<nt::Acl> dacl;     // nothing: a null list
    std::vector<std::uint8_t> sacl;  // empty: no list

    bool Has(SECURITY_INFORMATION bit) const { return (information & bit) != 0; }
};

void ClearControl(nt::SecurityDescriptor& descriptor, WORD bits) {
    descriptor.control &= static_cast<WORD>(~bits);
}

// Keeps only the requested parts, and of the control word only their flags.
void ReduceToParts(nt::SecurityDescriptor& descriptor, SECURITY_INFORMATION parts) {
    if ((parts & OWNER_SECURITY_INFORMATION) == 0) {
        descriptor.owner.reset();
        ClearControl(descriptor, SE_OWNER_DEFAULTED);
    }
    if ((parts & GROUP_SECURITY_INFORMATION) == 0) {
        descriptor.group.reset();
        ClearControl(descriptor, SE_GROUP_DEFAULTED);
    }
    if ((parts & DACL_SECURITY_INFORMATION) == 0) {
        descriptor.daclState = nt::DaclState::kAbsent;
        ClearControl(descriptor, kDaclControl);
    }
    if ((parts & SACL_SECURITY_INFORMATION) == 0) {
        descriptor.saclBytes.clear();
        ClearControl(descriptor, kSaclControl);
    }
}

bool TakeSid(PSID sid, nt::Sid& taken) {
    const std::optional<nt::Sid> copy = SidOf(sid);
    if (copy) taken = *copy;
    return copy.has_value();
}

// A folder hands down entries of its list. A folder that lets everyone do everything has no list.
const nt::Acl& ListOf(const nt::SecurityDescriptor& descriptor) {
    static const nt::Acl kNothing;
    return descriptor.daclState == nt::DaclState::kList ? descriptor.dacl : kNothing;
}

// The list from which the object inherits; the root of a volume has no parent.
DWORD ReadParentList(const ResolvedObject& target, DescriptorStore& store, nt::Acl& list) {
    if (!target.parent) return ERROR_SUCCESS;
    nt::SecurityDescriptor parent;
    const DWORD error = store.Read(target.parent, parent);
    if (error == ERROR_SUCCESS) list = ListOf(parent);
    return error;
}

bool InheritsAfter(const SecurityChange& change, const nt::SecurityDescriptor& descriptor) {
    if (!change.Has(DACL_SECURITY_INFORMATION) || !change.dacl ||
        change.Has(PROTECTED_DACL_SECURITY_INFORMATION))
        return false;
    return change.Has(UNPROTECTED_DACL_SECURITY_INFORMATION) || !descriptor.IsDaclProtected();
}

// A list that is not protected gets the entries that the parent hands down now. They replace the inherited
// entries that were given, which may come from another object. Without a parent, the list stays as given.
void SetList(const SecurityChange& change, const ResolvedObject& target, const nt::Acl& parentList,
             nt::SecurityDescriptor& descriptor) {
    if (change.Has(PROTECTED_DACL_SECURITY_INFORMATION)) descriptor.control |= SE_DACL_PROTECTED;
    if (change.Has(UNPROTECTED_DACL_SECURITY_INFORMATION)) ClearControl(descriptor, SE_DACL_PROTECTED);
    ClearControl(descriptor, SE_DACL_DEFAULTED);
    descriptor.control |= SE_DACL_AUTO_INHERITED;
    if (!change.dacl) {
        descriptor.daclState = nt::DaclState::kNull;
        return;
    }
    nt::Acl list = nt::MapGenericRights(*change.dacl, ListOf(descriptor));
    descriptor.daclState = nt::DaclState::kList;
    descriptor.dacl = std::move(list);
    if (!descriptor.IsDaclProtected() && target.parent)
        host::JoinInherited(descriptor, parentList, target.object);
}

void Apply(const SecurityChange& change, const ResolvedObject& target, const nt::Acl& parentList,
           nt::SecurityDescriptor& descriptor) {
    if (change.Has(OWNER_SECURITY_INFORMATION)) host::SetOwnerIn(descriptor, change.owner);
    if (change.Has(GROUP_SECURITY_INFORMATION)) {
        descriptor.group = change.group;
        ClearControl(descriptor, SE_GROUP_DEFAULTED);
    }
    if (change.Has(SACL_SECURITY_INFORMATION)) {
        descriptor.saclBytes = change.sacl;
        ClearControl(descriptor, SE_SACL_PRESENT | SE_SACL_DEFAULTED);
        if (!change.sacl.empty()) descriptor.control |= SE_SACL_PRESENT;
    }
    if (change.Has(DACL_SECURITY_INFORMATION)) SetList(change, target, parentList, descriptor);
}

bool DaclBytes(nt::SecurityDescriptor descriptor, std::vector<std::uint8_t>& bytes) {
    ReduceToParts(descriptor, DACL_SECURITY_INFORMATION);
    return descriptor.AppendTo(bytes);
}

// Whether the object's list is still the one that was read as `expected`.
bool HasListOf(const nt::SecurityDescriptor& descriptor, PSECURITY_DESCRIPTOR expected) {
    const std::optional<nt::SecurityDescriptor> before = host::DescriptorValue(expected);
    std::vector<std::uint8_t> bytesBefore;
    std::vector<std::uint8_t> bytesNow;
    return before && DaclBytes(*before, bytesBefore) && DaclBytes(descriptor, bytesNow) &&
           bytesBefore == bytesNow;
}

// Reads the descriptor and applies the change. The object is read last, since a change between this and the
// write is not noticed.
DWORD MakeChanged(const ResolvedObject& target, const SecurityChange& change, PSECURITY_DESCRIPTOR expected,
                  DescriptorStore& store, nt::SecurityDescriptor& descriptor) {
    DWORD error = store.Read(target.object, descriptor);
    if (error != ERROR_SUCCESS) return error;
    nt::Acl parentList;
    if (InheritsAfter(change, descriptor)) {
        error = ReadParentList(target, store, parentList);
        // Reading the parent through another process took a while.
        if (error == ERROR_SUCCESS) error = store.Read(target.object, descriptor);
        if (error != ERROR_SUCCESS) return error;
    }
    if (expected != nullptr && !HasListOf(descriptor, expected)) return ERROR_REVISION_MISMATCH;
    Apply(change, target, parentList, descriptor);
    return ERROR_SUCCESS;
}

// By the contract of SetNamedSecurityInfoA. On failure, `change` is incomplete.
DWORD TakeChange(SECURITY_INFORMATION information, const NewParts& parts, SecurityChange& change) {
    const bool contradictsItself = (information & kProtection) == kProtection;
    if ((information & kParts) == 0 || (information & ~(kParts | kProtection)) != 0 || contradictsItself)
        return ERROR_INVALID_PARAMETER;
    change.information = information;
    if (change.Has(OWNER_SECURITY_INFORMATION) && !TakeSid(parts.owner, change.owner))
        return ERROR_INVALID_SID;
    if (change.Has(GROUP_SECURITY_INFORMATION) && !TakeSid(parts.group, change.group))
        return ERROR_INVALID_SID;
    if (change.Has(DACL_SECURITY_INFORMATION) && parts.dacl != nullptr) {
        change.dacl = AclOf(parts.dacl);
        if (!change.dacl) return ERROR_INVALID_ACL;
    }
    if (change.Has(SACL_SECURITY_INFORMATION) && parts.sacl != nullptr) {
        if (!IsValidAcl(parts.sacl)) return ERROR_INVALID_ACL;
        const auto bytes = ClaimedBytes(parts.sacl);
        change.sacl.assign(bytes.begin(), bytes.end());
    }
    return ERROR_SUCCESS;
}

// The requested parts, self-relative.
DWORD HandOut(nt::SecurityDescriptor descriptor, SECURITY_INFORMATION parts, UniqueLocal<void>& block) {
    ReduceToParts(descriptor, parts);
    std::vector<std::uint8_t> bytes;
    if (!descriptor.AppendTo(bytes)) return ERROR_INVALID_SECURITY_DESCR;
    UniqueLocal<void> made(LocalAlloc(LMEM_FIXED, bytes.size()));
    if (!made) return ERROR_NOT_ENOUGH_MEMORY;
    std::memcpy(made.get(), bytes.data(), bytes.size());
    block = std::move(made);
    return ERROR_SUCCESS;
}

}  // namespace

DWORD HeldObject::ReadSecurity(SECURITY_INFORMATION information, ReadParts& parts) const {
    nt::SecurityDescriptor found;
    ReadParts read;
    DWORD error = DescriptorStore().Read(inside->target.object, found);
    if (error == ERROR_SUCCESS) error = HandOut(std::move(found), information, read.descriptor);
    if (error != ERROR_SUCCESS) return error;
    const auto view = host::DescriptorView::Of(read.descriptor.get());
    if (!view) return ERROR_INVALID_SECURITY_DESCR;
    read.owner = view->owner;
    read.dacl = view->dacl;
    parts = std::move(read);
    return ERROR_SUCCESS;
}

DWORD HeldObject::WriteSecurity(SECURITY_INFORMATION information, const NewParts& parts,
                                PSECURITY_DESCRIPTOR expected, ChangeRecorder& /*recorder*/,
                                FailuresBelow& below) const {
    host::ObjectHandle& object = inside->target.object;
    SecurityChange change;
    host::ObjectTurn turn;
    DescriptorStore store;
    nt::SecurityDescriptor descriptor;
    DWORD error = TakeChange(information, parts, change);
    if (error == ERROR_SUCCESS && !inside->turn) error = turn.Take(object);
    if (error == ERROR_SUCCESS) error = object.Refresh();
    if (error == ERROR_SUCCESS) error = MakeChanged(inside->target, change, expected, store, descriptor);
    if (error != ERROR_SUCCESS) return error;
    const StoredSecurity before = store.Found(object);
    StoredSecurity after;
    error = change.Has(OWNER_SECURITY_INFORMATION) ? host::PrepareWithOwner(object, descriptor, store, after)
                                                   : store.Prepare(object, descriptor, after);
    if (error == ERROR_SUCCESS) error = store.Replace(object, before, after);
    const bool handsDown = change.Has(DACL_SECURITY_INFORMATION) && object.IsFolder();
    if (error == ERROR_SUCCESS && handsDown) below = host::PropagateList(object, ListOf(descriptor), store);
    return error;
}

}  // namespace permora
