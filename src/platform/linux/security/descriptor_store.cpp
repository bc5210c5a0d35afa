#include "platform/linux/security/descriptor_store.h"

#include <sys/stat.h>

#include <cerrno>
#include <optional>
#include <span>
#include <utility>

#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/extended_attributes.h"
#include "platform/linux/files/linux_volume.h"
#include "platform/linux/security/mode_descriptor.h"
#include "platform/linux/security/samba_attribute.h"

namespace permora::host {

namespace {

DWORD Take(std::optional<nt::SecurityDescriptor> parsed, nt::SecurityDescriptor& descriptor) {
    if (!parsed) return ERROR_INVALID_SECURITY_DESCR;
    descriptor = std::move(*parsed);
    return ERROR_SUCCESS;
}

// From the present mode and owners, which may have changed since the object was opened.
DWORD MakeFromMode(const ObjectHandle& object, nt::SecurityDescriptor& descriptor) {
    struct stat status {};
    if (fstat(object.Descriptor(), &status) != 0) return ErrorFromErrno(errno);
    descriptor = DescriptorFromMode(status.st_mode, object.Kind(), SidForUser(status.st_uid),
                                    SidForGroup(status.st_gid));
    return ERROR_SUCCESS;
}

DWORD WriteError(const ObjectHandle& object, int problem) {
    // After ntfs-3g has failed to store a list on a full volume, it treats every new list as one that it
    // already has, until the volume is mounted again.
    if (problem == EEXIST) return ERROR_IO_DEVICE;
    const bool isTooLarge = problem == E2BIG || problem == ERANGE || (problem == ENOSPC && HasRoom(object));
    return isTooLarge ? ERROR_ALLOTTED_SPACE_EXCEEDED : ErrorFromErrno(problem);
}

}  // namespace

DescriptorStoreKind DescriptorStore::KindFor(const ObjectHandle& object) {
    if (!kind) kind = StoreKindOf(object);
    return *kind;
}

bool DescriptorStore::CanHold(const ObjectHandle& object) {
    switch (KindFor(object)) {
        case DescriptorStoreKind::kNone:
            return false;
        case DescriptorStoreKind::kUser:
            return object.IsFolder() || S_ISREG(object.Status().st_mode);
        case DescriptorStoreKind::kNtfs3g:
        case DescriptorStoreKind::kNtfs3:
        case DescriptorStoreKind::kSamba:
            return true;
    }
    return false;
}

bool DescriptorStore::HasHostOwners(const ObjectHandle& object) {
    return KindFor(object) == DescriptorStoreKind::kSamba || KindFor(object) == DescriptorStoreKind::kUser;
}

// Whether the volume is NTFS; `stored` then holds the object's attribute, or `problem` says why not.
bool DescriptorStore::ReadNtfs(const ObjectHandle& object, int& problem) {
    if (!kind) {
        if (IsOnLinuxVolume(object)) return false;
        // Each request to ntfs-3g is a round trip to another process, so reading itself is the test.
        problem = ReadExtendedAttribute(object, kNtfs3gAttribute, stored);
        if (problem == 0) {
            kind = DescriptorStoreKind::kNtfs3g;
            return true;
        }
    }
    switch (KindFor(object)) {
        case DescriptorStoreKind::kNtfs3g:
            problem = ReadExtendedAttribute(object, kNtfs3gAttribute, stored);
            return true;
        case DescriptorStoreKind::kNtfs3:
            problem = ReadExtendedAttribute(object, kNtfs3Attribute, stored);
            return true;
        default:
            return false;
    }
}

DWORD DescriptorStore::Read(const ObjectHandle& object, nt::SecurityDescriptor& descriptor) {
    int problem = 0;
    if (ReadNtfs(object, problem)) {
        if (problem != 0) return ErrorFromErrno(problem);
        return Take(nt::SecurityDescriptor::FromBytes(stored), descriptor);
    }
    problem = ReadExtendedAttribute(object, kSambaAttribute, stored);
    if (problem == 0) {
        if (!DescriptorFromSambaAttribute(stored, inner)) return ERROR_INVALID_SECURITY_DESCR;
        return Take(nt::SecurityDescriptor::FromBytes(inner), descriptor);
    }
    if (!IsAbsent(problem)) return ErrorFromErrno(problem);
    if (KindFor(object) == DescriptorStoreKind::kUser && CanHold(object)) {
        problem = ReadExtendedAttribute(object, kUserAttribute, stored);
        if (problem == 0) return Take(nt::SecurityDescriptor::FromBytes(stored), descriptor);
        if (!IsAbsent(problem)) return ErrorFromErrno(problem);
    }
    return MakeFromMode(object, descriptor);
}

DWORD DescriptorStore::Write(const ObjectHandle& object, const nt::SecurityDescriptor& descriptor) {
    if (!CanHold(object)) return ERROR_NOT_SUPPORTED;
    inner.clear();
    if (!descriptor.AppendTo(inner)) return ERROR_INVALID_ACL;
    const char* name = nullptr;
    std::span<const std::uint8_t> value = inner;
    switch (KindFor(object)) {
        case DescriptorStoreKind::kNone:
            return ERROR_NOT_SUPPORTED;
        case DescriptorStoreKind::kNtfs3g:
            name = kNtfs3gAttribute;
            break;
        case DescriptorStoreKind::kNtfs3:
            name = kNtfs3Attribute;
            break;
        case DescriptorStoreKind::kSamba:
            name = kSambaAttribute;
            MakeSambaAttribute(inner, stored);
            value = stored;
            break;
        case DescriptorStoreKind::kUser:
            if (AskExtendedAttribute(object, kSambaAttribute) == 0) return ERROR_ACCESS_DENIED;
            name = kUserAttribute;
            break;
    }
    const int problem = WriteExtendedAttribute(object, name, value);
    return problem == 0 ? ERROR_SUCCESS : WriteError(object, problem);
}

}  // namespace permora::host
