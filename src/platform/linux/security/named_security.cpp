// Security descriptors of named objects: GetNamedSecurityInfoA and SetNamedSecurityInfoA.
#include <utility>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/linux/security/descriptor_view.h"
#include "platform/linux/security/object_turn.h"
#include "platform/linux/security/security_change.h"
#include "platform/nt/security_descriptor.h"

namespace host = permora::host;
namespace nt = permora::nt;

DWORD WINAPI GetNamedSecurityInfoA(LPCSTR name, SE_OBJECT_TYPE type, SECURITY_INFORMATION information,
                                   PSID* owner, PSID* group, PACL* dacl, PACL* sacl,
                                   PSECURITY_DESCRIPTOR* descriptor) {
    // Without the descriptor nobody could free what the other outputs point to.
    if (name == nullptr || type != SE_FILE_OBJECT || descriptor == nullptr) return ERROR_INVALID_PARAMETER;
    host::ObjectHandle object;
    nt::SecurityDescriptor found;
    permora::UniqueLocal<void> block;
    DWORD error = host::OpenObject(name, object);
    if (error == ERROR_SUCCESS) error = host::DescriptorStore().Read(object, found);
    if (error == ERROR_SUCCESS) error = host::HandOutDescriptor(std::move(found), information, block);
    if (error != ERROR_SUCCESS) return error;
    const auto parts = host::DescriptorView::Of(block.get());
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
    host::SecurityChange change;
    host::ResolvedObject target;
    host::ObjectTurn turn;
    permora::FailuresBelow below;
    DWORD error = host::TakeChange(information, owner, group, dacl, sacl, change);
    if (error == ERROR_SUCCESS) error = host::ResolvePath(name, target);
    if (error == ERROR_SUCCESS) error = turn.Take(target.object);
    if (error == ERROR_SUCCESS) error = host::ChangeSecurity(target, change, nullptr, below);
    return error != ERROR_SUCCESS ? error : below.firstError;
}
