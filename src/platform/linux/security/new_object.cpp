#include "platform/linux/security/new_object.h"

#include <unistd.h>

#include <utility>

#include "platform/linux/accounts/unix_accounts.h"
#include "platform/nt/ace_bits.h"
#include "platform/nt/inheritance.h"
#include "platform/nt/sid.h"

namespace permora::host {
namespace {

void AddFullControl(const nt::Sid& account, nt::Acl& list) {
    nt::Ace entry;
    entry.mask = nt::kFileAllAccess;
    entry.sid = account;
    list.entries.push_back(std::move(entry));
}

}  // namespace

DWORD NewObjectSecurity::Of(const ObjectHandle& folder, NewObjectSecurity& security) {
    NewObjectSecurity made;
    const DWORD error = made.store.Read(folder, made.parent);
    if (error == ERROR_SUCCESS) security = std::move(made);
    return error;
}

DWORD NewObjectSecurity::Give(const ObjectHandle& object) {
    if (!store.CanHold(object)) return ERROR_SUCCESS;
    const bool hasHostOwners = store.HasHostOwners(object);
    const nt::Sid owner = SidForUser(hasHostOwners ? object.Status().st_uid : geteuid());
    const nt::Sid group = SidForGroup(hasHostOwners ? object.Status().st_gid : getegid());
    nt::SecurityDescriptor descriptor = nt::NewObjectDescriptor(parent, object.Kind(), owner, group);
    if (descriptor.daclState == nt::DaclState::kAbsent) {
        if (hasHostOwners) return ERROR_SUCCESS;
        AddFullControl(owner, descriptor.dacl);
        if (const auto system = nt::Sid::FromText("S-1-5-18")) AddFullControl(*system, descriptor.dacl);
        descriptor.daclState = nt::DaclState::kList;
        descriptor.control |= nt::kDaclPresent;
    }
    return store.Write(object, descriptor);
}

}  // namespace permora::host
