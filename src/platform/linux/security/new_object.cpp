#include "platform/linux/security/new_object.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <utility>

#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/linux_volume.h"
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

bool HandsDown(const nt::SecurityDescriptor& parent) {
    constexpr std::uint8_t kHandedDown = nt::kObjectInherit | nt::kContainerInherit;
    return parent.daclState == nt::DaclState::kList &&
           std::any_of(parent.dacl.entries.begin(), parent.dacl.entries.end(),
                       [](const nt::Ace& entry) { return (entry.flags & kHandedDown) != 0; });
}

}  // namespace

DWORD NewObjectSecurity::Of(const ObjectHandle& folder, NewObjectSecurity& security) {
    NewObjectSecurity made;
    const DWORD error = made.store.Read(folder, made.parent);
    if (error != ERROR_SUCCESS) return error;
    made.handsDown = HandsDown(made.parent);
    // The folder determines the store, since it can hold a descriptor if any object can.
    (void)made.store.CanHold(folder);
    security = std::move(made);
    return ERROR_SUCCESS;
}

DWORD NewObjectSecurity::Prepare(const ObjectHandle& object, StoredSecurity& prepared) {
    const bool hasHostOwners = store.HasHostOwners(object);
    const uid_t user = hasHostOwners ? object.Status().st_uid : geteuid();
    const gid_t ownGroup = hasHostOwners ? object.Status().st_gid : getegid();
    nt::SecurityDescriptor descriptor =
        nt::NewObjectDescriptor(parent, object.Kind(), SidForUser(user), SidForGroup(ownGroup));
    if (descriptor.daclState == nt::DaclState::kAbsent) {
        if (hasHostOwners) {
            prepared = {.form = SecurityForm::kNone, .bytes = {}, .hostOwner = user};
            return ERROR_SUCCESS;
        }
        AddFullControl(*descriptor.owner, descriptor.dacl);
        if (const auto system = nt::Sid::FromText("S-1-5-18")) AddFullControl(*system, descriptor.dacl);
        descriptor.daclState = nt::DaclState::kList;
        descriptor.control |= nt::kDaclPresent;
    }
    return store.Prepare(object, descriptor, prepared);
}

DWORD NewObjectSecurity::Give(const ObjectHandle& object) {
    if (!store.CanHold(object) || store.IsGivenByServer(object)) return ERROR_SUCCESS;
    // The usual case, also with many small files.
    if (store.HasHostOwners(object) && !handsDown) return ERROR_SUCCESS;
    StoredSecurity prepared;
    const DWORD error = Prepare(object, prepared);
    return error == ERROR_SUCCESS && prepared.form != SecurityForm::kNone
               ? store.Replace(object, {}, prepared)
               : error;
}

DWORD NewObjectSecurity::MakeFolder(const ObjectHandle& folder, const std::string& hostName, mode_t mode,
                                    ObjectHandle& made) {
    if (mkdirat(folder.Descriptor(), hostName.c_str(), mode) != 0) return ErrorFromErrno(errno);
    ObjectHandle object;
    DWORD error = ObjectHandle::OpenUnmountedAt(folder.Descriptor(), hostName.c_str(), object, O_DIRECTORY);
    // Another object may have taken its place. Then it must be neither changed nor removed.
    if (error != ERROR_SUCCESS) return error;
    if (IsOnLinuxVolume(object) && object.Status().st_uid != geteuid()) return ERROR_FILE_INVALID;
    error = Give(object);
    if (error != ERROR_SUCCESS) {
        unlinkat(folder.Descriptor(), hostName.c_str(), AT_REMOVEDIR);
        return error;
    }
    made = std::move(object);
    return ERROR_SUCCESS;
}

}  // namespace permora::host
