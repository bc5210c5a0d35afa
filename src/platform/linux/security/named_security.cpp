// Security descriptors of named objects: GetNamedSecurityInfoA and SetNamedSecurityInfoA.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/memory.h"
#include "platform/api/security.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/linux/security/descriptor_view.h"
#include "platform/linux/security/owner_setting.h"
#include "platform/linux/security/propagation.h"
#include "platform/nt/inheritance.h"
#include "platform/nt/security_descriptor.h"
#include "platform/resources.h"

namespace {

using permora::UniqueLocal;
using permora::host::ClaimedBytes;
using permora::host::DescriptorStore;
using permora::host::DescriptorView;
using permora::host::ResolvedObject;
namespace host = permora::host;
namespace nt = permora::nt;

constexpr SECURITY_INFORMATION kParts = OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION |
                                        DACL_SECURITY_INFORMATION | SACL_SECURITY_INFORMATION;
constexpr SECURITY_INFORMATION kProtection =
    PROTECTED_DACL_SECURITY_INFORMATION | UNPROTECTED_DACL_SECURITY_INFORMATION;

constexpr WORD kDaclControl = SE_DACL_PRESENT | SE_DACL_DEFAULTED | SE_DACL_AUTO_INHERIT_REQ |
                              SE_DACL_AUTO_INHERITED | SE_DACL_PROTECTED;
constexpr WORD kSaclControl = SE_SACL_PRESENT | SE_SACL_DEFAULTED | SE_SACL_AUTO_INHERIT_REQ |
                              SE_SACL_AUTO_INHERITED | SE_SACL_PROTECTED;

void ClearControl(nt::SecurityDescriptor& descriptor, WORD bits) {
    descriptor.control &= static_cast<WORD>(~bits);
}

// --- Reading.

// Leaves only the parts asked for, and of the control word only what speaks of them.
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

DWORD ReadNamed(LPCSTR name, nt::SecurityDescriptor& descriptor) {
    host::ObjectHandle object;
    const DWORD error = host::OpenObject(name, object);
    return error == ERROR_SUCCESS ? DescriptorStore().Read(object, descriptor) : error;
}

// --- Writing.

// What a caller wants to be written, checked and taken out of the caller's memory.
struct Change {
    SECURITY_INFORMATION information = 0;
    nt::Sid owner;
    nt::Sid group;
    std::optional<nt::Acl> dacl;     // nothing: a null list
    std::vector<std::uint8_t> sacl;  // empty: no list

    bool Has(SECURITY_INFORMATION bit) const { return (information & bit) != 0; }
};

bool TakeSid(PSID sid, nt::Sid& taken) {
    const std::optional<nt::Sid> copy = host::SidOf(sid);
    if (copy) taken = *copy;
    return copy.has_value();
}

DWORD TakeChange(SECURITY_INFORMATION information, PSID owner, PSID group, PACL dacl, PACL sacl,
                 Change& change) {
    const bool contradictsItself = (information & kProtection) == kProtection;
    if ((information & kParts) == 0 || (information & ~(kParts | kProtection)) != 0 || contradictsItself) {
        return ERROR_INVALID_PARAMETER;
    }
    change.information = information;
    if (change.Has(OWNER_SECURITY_INFORMATION) && !TakeSid(owner, change.owner)) return ERROR_INVALID_SID;
    if (change.Has(GROUP_SECURITY_INFORMATION) && !TakeSid(group, change.group)) return ERROR_INVALID_SID;
    if (change.Has(DACL_SECURITY_INFORMATION) && dacl != nullptr) {
        change.dacl = host::EntriesOf(dacl);
        if (!change.dacl) return ERROR_INVALID_ACL;
    }
    if (change.Has(SACL_SECURITY_INFORMATION) && sacl != nullptr) {
        if (!IsValidAcl(sacl)) return ERROR_INVALID_ACL;
        const auto bytes = ClaimedBytes(sacl);
        change.sacl.assign(bytes.begin(), bytes.end());
    }
    return ERROR_SUCCESS;
}

// What a folder hands down comes from its list; a folder that lets everyone do everything has none.
const nt::Acl& ListOf(const nt::SecurityDescriptor& descriptor) {
    static const nt::Acl kNothing;
    return descriptor.daclState == nt::DaclState::kList ? descriptor.dacl : kNothing;
}

// A list that is not protected gets what the parent hands down now in place of the inherited entries given:
// those may come from another object. The root of a volume has no parent, so its list stays as given.
DWORD SetList(const Change& change, const ResolvedObject& target, DescriptorStore& store,
              nt::SecurityDescriptor& descriptor) {
    if (change.Has(PROTECTED_DACL_SECURITY_INFORMATION)) descriptor.control |= SE_DACL_PROTECTED;
    if (change.Has(UNPROTECTED_DACL_SECURITY_INFORMATION)) ClearControl(descriptor, SE_DACL_PROTECTED);
    ClearControl(descriptor, SE_DACL_DEFAULTED);
    descriptor.control |= SE_DACL_AUTO_INHERITED;
    if (!change.dacl) {
        descriptor.daclState = nt::DaclState::kNull;
        return ERROR_SUCCESS;
    }
    nt::Acl list = nt::MapGenericRights(*change.dacl, ListOf(descriptor));
    descriptor.daclState = nt::DaclState::kList;
    descriptor.dacl = std::move(list);
    if (descriptor.IsDaclProtected() || !target.parent) return ERROR_SUCCESS;
    nt::SecurityDescriptor parent;
    const DWORD error = store.Read(target.parent, parent);
    if (error != ERROR_SUCCESS) return error;
    host::JoinInherited(descriptor, ListOf(parent), target.object);
    return ERROR_SUCCESS;
}

DWORD Apply(const Change& change, const ResolvedObject& target, DescriptorStore& store,
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
    if (change.Has(DACL_SECURITY_INFORMATION)) return SetList(change, target, store, descriptor);
    return ERROR_SUCCESS;
}

}  // namespace

DWORD WINAPI GetNamedSecurityInfoA(LPCSTR name, SE_OBJECT_TYPE type, SECURITY_INFORMATION information,
                                   PSID* owner, PSID* group, PACL* dacl, PACL* sacl,
                                   PSECURITY_DESCRIPTOR* descriptor) {
    // Without the descriptor nobody could free what the other outputs point to.
    if (name == nullptr || type != SE_FILE_OBJECT || descriptor == nullptr) return ERROR_INVALID_PARAMETER;
    nt::SecurityDescriptor found;
    const DWORD error = ReadNamed(name, found);
    if (error != ERROR_SUCCESS) return error;
    ReduceToParts(found, information);
    std::vector<std::uint8_t> bytes;
    if (!found.AppendTo(bytes)) return ERROR_INVALID_SECURITY_DESCR;
    UniqueLocal<void> block(LocalAlloc(LMEM_FIXED, bytes.size()));
    if (!block) return ERROR_NOT_ENOUGH_MEMORY;
    std::memcpy(block.get(), bytes.data(), bytes.size());
    const auto parts = DescriptorView::Of(block.get());
    if (!parts) return ERROR_INVALID_SECURITY_DESCR;
    if (owner != nullptr && (information & OWNER_SECURITY_INFORMATION) != 0) *owner = parts->owner;
    if (group != nullptr && (information & GROUP_SECURITY_INFORMATION) != 0) *group = parts->group;
    if (dacl != nullptr && (information & DACL_SECURITY_INFORMATION) != 0) *dacl = parts->dacl;
    if (sacl != nullptr && (information & SACL_SECURITY_INFORMATION) != 0) *sacl = parts->sacl;
    *descriptor = block.release();
    return ERROR_SUCCESS;
}

DWORD WINAPI SetNamedSecurityInfoA(LPSTR name, SE_OBJECT_TYPE type, SECURITY_INFORMATION information,
                                   PSID owner, PSID group, PACL dacl, PACL sacl) {
    if (name == nullptr || type != SE_FILE_OBJECT) return ERROR_INVALID_PARAMETER;
    Change change;
    DWORD error = TakeChange(information, owner, group, dacl, sacl, change);
    if (error != ERROR_SUCCESS) return error;
    ResolvedObject target;
    error = host::ResolvePath(name, target);
    if (error != ERROR_SUCCESS) return error;
    DescriptorStore store;
    nt::SecurityDescriptor descriptor;
    error = store.Read(target.object, descriptor);
    if (error == ERROR_SUCCESS) error = Apply(change, target, store, descriptor);
    if (error == ERROR_SUCCESS) {
        error = change.Has(OWNER_SECURITY_INFORMATION)
                    ? host::WriteWithOwner(target.object, descriptor, store)
                    : store.Write(target.object, descriptor);
    }
    const bool handsDown = change.Has(DACL_SECURITY_INFORMATION) && target.object.IsFolder();
    if (error != ERROR_SUCCESS || !handsDown) return error;
    return host::PropagateList(target.object, ListOf(descriptor), store);
}
