#include "platform/linux/security/descriptor_store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/extended_attributes.h"
#include "platform/linux/files/linux_volume.h"
#include "platform/linux/security/mode_descriptor.h"
#include "platform/linux/security/samba_attribute.h"
#include "platform/security_change.h"
#include "platform/stored_security.h"

namespace permora::host {

namespace {

DWORD Take(std::optional<nt::SecurityDescriptor> parsed, nt::SecurityDescriptor& descriptor) {
    if (!parsed) return ERROR_INVALID_SECURITY_DESCR;
    descriptor = std::move(*parsed);
    return ERROR_SUCCESS;
}

// From where a descriptor is read: an object that is held, or an entry of a folder that is.
struct HeldSource {
    int Attribute(const char* name, std::vector<std::uint8_t>& value) const {
        return ReadExtendedAttribute(object, name, value);
    }
    bool Examine(struct stat& status) const { return fstat(object.Descriptor(), &status) == 0; }

    const ObjectHandle& object;
};
struct EntrySource {
    int Attribute(const char* name, std::vector<std::uint8_t>& value) const {
        return ReadExtendedAttributeAt(folder, hostName, name, value);
    }
    bool Examine(struct stat& status) const {
        return fstatat(folder, hostName, &status, AT_SYMLINK_NOFOLLOW) == 0;
    }

    int folder;
    const char* hostName;
};

bool CanHoldUserAttributes(mode_t mode) {
    return S_ISDIR(mode) || S_ISREG(mode);
}

nt::SecurityDescriptor FromMode(const struct stat& status) {
    const nt::ObjectKind kind = S_ISDIR(status.st_mode) ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile;
    return DescriptorFromMode(status.st_mode, kind, SidForUser(status.st_uid), SidForGroup(status.st_gid));
}

DWORD WriteError(const ObjectHandle& object, int problem) {
    // After ntfs-3g has failed to store a list on a full volume, it treats every new list as one that it
    // already has, until the volume is mounted again.
    if (problem == EEXIST) return ERROR_IO_DEVICE;
    const bool isTooLarge = problem == E2BIG || problem == ERANGE || (problem == ENOSPC && HasRoom(object));
    return isTooLarge ? ERROR_ALLOTTED_SPACE_EXCEEDED : ErrorFromErrno(problem);
}

SecurityForm FormOf(DescriptorStoreKind kind) {
    switch (kind) {
        case DescriptorStoreKind::kNone:
            return SecurityForm::kNone;
        case DescriptorStoreKind::kNtfs3g:
        case DescriptorStoreKind::kNtfs3:
        case DescriptorStoreKind::kSmb:
            return SecurityForm::kVolume;
        case DescriptorStoreKind::kSamba:
            return SecurityForm::kSamba;
        case DescriptorStoreKind::kUser:
            return SecurityForm::kUser;
    }
    return SecurityForm::kNone;
}

const char* VolumeAttributeOf(DescriptorStoreKind kind, SystemList systemList) {
    switch (kind) {
        case DescriptorStoreKind::kNtfs3:
            return kNtfs3Attribute;
        case DescriptorStoreKind::kSmb:
            return systemList == SystemList::kIncluded ? kSmbWholeAttribute : kSmbListAttribute;
        default:
            return kNtfs3gAttribute;
    }
}

// Null for what is in no attribute.
const char* AttributeOf(SecurityForm form, DescriptorStoreKind kind,
                        SystemList systemList = SystemList::kLeftOut) {
    switch (form) {
        case SecurityForm::kVolume:
            return VolumeAttributeOf(kind, systemList);
        case SecurityForm::kSamba:
            return kSambaAttribute;
        case SecurityForm::kUser:
            return kUserAttribute;
        case SecurityForm::kNone:
        case SecurityForm::kShare:
            return nullptr;
    }
    return nullptr;
}

// What the control word says of its inheritance stays: servers hand that out with the rest.
void LeaveSystemListOut(nt::SecurityDescriptor& descriptor) {
    descriptor.control &= static_cast<std::uint16_t>(~(nt::kSaclPresent | nt::kSaclDefaulted));
    descriptor.saclBytes.clear();
}

// The form in which is kept what a server has. It lays descriptors out in its own way and answers none of the
// requests in the control word. Without both, what was read, and what was written and is read again, can be
// compared byte for byte. The flag of the system access list says that it is included, also where there is
// none.
bool LayOut(nt::SecurityDescriptor descriptor, SystemList systemList, std::vector<std::uint8_t>& bytes) {
    constexpr unsigned kRequests = nt::kDaclAutoInheritRequest | nt::kSaclAutoInheritRequest;
    descriptor.control &= static_cast<std::uint16_t>(~kRequests);
    if (systemList == SystemList::kIncluded)
        descriptor.control |= nt::kSaclPresent;
    else
        LeaveSystemListOut(descriptor);
    bytes.clear();
    return descriptor.AppendTo(bytes);
}

// The server writes that a list was inherited automatically only where that is requested. Samba's servers
// take from every write what the control word says of the system access list, also when that list stays.
bool MakeRequest(std::span<const std::uint8_t> kept, SystemList systemList,
                 std::vector<std::uint8_t>& request) {
    auto descriptor = nt::SecurityDescriptor::FromBytes(kept);
    if (!descriptor) return false;
    if (systemList == SystemList::kLeftOut) LeaveSystemListOut(*descriptor);
    if ((descriptor->control & nt::kDaclAutoInherited) != 0)
        descriptor->control |= nt::kDaclAutoInheritRequest;
    if ((descriptor->control & nt::kSaclAutoInherited) != 0)
        descriptor->control |= nt::kSaclAutoInheritRequest;
    request.clear();
    return descriptor->AppendTo(request);
}

bool HaveSameSystemLists(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other) {
    const auto first = nt::SecurityDescriptor::FromBytes(one);
    const auto second = nt::SecurityDescriptor::FromBytes(other);
    return first && second && HasSameSystemList(*first, *second);
}

bool HaveSameOwners(std::span<const std::uint8_t> one, std::span<const std::uint8_t> other) {
    const auto first = nt::SecurityDescriptor::FromBytes(one);
    const auto second = nt::SecurityDescriptor::FromBytes(other);
    return first && second && first->owner == second->owner && first->group == second->group;
}

// Whether lists were inherited automatically is a remark for editors.
bool HasKept(const nt::SecurityDescriptor& kept, const nt::SecurityDescriptor& wanted) {
    constexpr unsigned kProtected = nt::kDaclProtected | nt::kSaclProtected;
    return kept.owner == wanted.owner && kept.group == wanted.group && kept.daclState == wanted.daclState &&
           kept.dacl == wanted.dacl && kept.saclBytes == wanted.saclBytes &&
           ((kept.control ^ wanted.control) & kProtected) == 0;
}

DWORD GiveToUser(const ObjectHandle& object, uid_t user) {
    constexpr gid_t kSameGroup = static_cast<gid_t>(-1);
    if (fchownat(object.Descriptor(), "", user, kSameGroup, AT_EMPTY_PATH) == 0) return ERROR_SUCCESS;
    return ErrorFromErrno(errno);
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
            return CanHoldUserAttributes(object.Status().st_mode);
        case DescriptorStoreKind::kNtfs3g:
        case DescriptorStoreKind::kNtfs3:
        case DescriptorStoreKind::kSmb:
        case DescriptorStoreKind::kSamba:
            return true;
    }
    return false;
}

bool DescriptorStore::HasHostOwners(const ObjectHandle& object) {
    return KindFor(object) == DescriptorStoreKind::kSamba || KindFor(object) == DescriptorStoreKind::kUser;
}

// Whether the volume itself keeps descriptors; `stored` then holds the object's attribute, or `problem` says
// why not.
bool DescriptorStore::ReadVolume(const ObjectHandle& object, SystemList systemList, int& problem) {
    if (!kind) {
        if (IsOnLinuxVolume(object)) return false;
        // Each request to ntfs-3g is a round trip to another process, so reading itself is the test.
        problem = ReadExtendedAttribute(object, kNtfs3gAttribute, stored);
        if (problem == 0) {
            kind = DescriptorStoreKind::kNtfs3g;
            return true;
        }
    }
    if (FormOf(KindFor(object)) != SecurityForm::kVolume) return false;
    problem = ReadExtendedAttribute(object, VolumeAttributeOf(*kind, systemList), stored);
    return true;
}

// From `stored`, which a volume has handed out.
DWORD DescriptorStore::TakeFromVolume(SystemList systemList, nt::SecurityDescriptor& descriptor) {
    auto parsed = nt::SecurityDescriptor::FromBytes(stored);
    if (parsed && kind == DescriptorStoreKind::kSmb) {
        if (!LayOut(*parsed, systemList, stored)) return ERROR_INVALID_SECURITY_DESCR;
        parsed = nt::SecurityDescriptor::FromBytes(stored);
        if (parsed && parsed->saclBytes.empty())
            parsed->control &= static_cast<std::uint16_t>(~nt::kSaclPresent);
    }
    return Take(std::move(parsed), descriptor);
}

// A server that keeps back the system access list refuses the whole, and the kernel tells that as it tells
// any failure of the server. It is a refusal where the rest can be read, and the whole still cannot.
template <typename Source>
DWORD DescriptorStore::WhyNotRead(const Source& source, SystemList systemList, int problem) {
    const bool mayBeRefusal = problem == EIO || problem == EACCES || problem == EPERM;
    if (kind != DescriptorStoreKind::kSmb || systemList == SystemList::kLeftOut || !mayBeRefusal)
        return ErrorFromErrno(problem);
    const int problemOfRest = source.Attribute(kSmbListAttribute, inner);
    if (problemOfRest != 0) return ErrorFromErrno(problemOfRest);
    const bool isRefused = source.Attribute(kSmbWholeAttribute, inner) == problem;
    return isRefused ? DWORD{ERROR_PRIVILEGE_NOT_HELD} : ErrorFromErrno(problem);
}

DWORD DescriptorStore::Read(const ObjectHandle& object, nt::SecurityDescriptor& descriptor,
                            SystemList systemList) {
    int problem = 0;
    form = SecurityForm::kVolume;
    if (ReadVolume(object, systemList, problem))
        return problem == 0 ? TakeFromVolume(systemList, descriptor)
                            : WhyNotRead(HeldSource{object}, systemList, problem);
    // To be asked for only where that is needed.
    return ReadFrom(
        HeldSource{object}, [&] { return KindFor(object); }, descriptor);
}

DWORD DescriptorStore::ReadEntry(int folder, const char* hostName, nt::SecurityDescriptor& descriptor,
                                 SystemList systemList) {
    const char* const onVolume = AttributeOf(SecurityForm::kVolume, *kind, systemList);
    const EntrySource entry{folder, hostName};
    if (FormOf(*kind) != SecurityForm::kVolume)
        return ReadFrom(
            entry, [&] { return *kind; }, descriptor);
    form = SecurityForm::kVolume;
    const int problem = entry.Attribute(onVolume, stored);
    return problem == 0 ? TakeFromVolume(systemList, descriptor) : WhyNotRead(entry, systemList, problem);
}

// Where the volume keeps none itself: Samba's, or that of an ordinary user, or the present mode and owners,
// which may have changed since the object was found.
template <typename Source, typename AskKind>
DWORD DescriptorStore::ReadFrom(const Source& source, AskKind askKind, nt::SecurityDescriptor& descriptor) {
    form = SecurityForm::kSamba;
    int problem = source.Attribute(kSambaAttribute, stored);
    if (problem == 0) {
        if (!DescriptorFromSambaAttribute(stored, inner)) return ERROR_INVALID_SECURITY_DESCR;
        return Take(nt::SecurityDescriptor::FromBytes(inner), descriptor);
    }
    if (!IsAbsent(problem)) return ErrorFromErrno(problem);
    struct stat status {};
    if (!source.Examine(status)) return ErrorFromErrno(errno);
    if (askKind() == DescriptorStoreKind::kUser && CanHoldUserAttributes(status.st_mode)) {
        form = SecurityForm::kUser;
        problem = source.Attribute(kUserAttribute, stored);
        if (problem == 0) return Take(nt::SecurityDescriptor::FromBytes(stored), descriptor);
        if (!IsAbsent(problem)) return ErrorFromErrno(problem);
    }
    form = SecurityForm::kNone;
    descriptor = FromMode(status);
    return ERROR_SUCCESS;
}

StoredSecurity DescriptorStore::Found(const ObjectHandle& object) {
    StoredSecurity found{.form = form, .bytes = {}, .hostOwner = std::nullopt};
    if (form != SecurityForm::kNone) found.bytes = stored;
    if (HasHostOwners(object)) found.hostOwner = object.Status().st_uid;
    return found;
}

bool DescriptorStore::Has(const ObjectHandle& object, const StoredSecurity& kept) {
    // These win over all others, so nothing else is to be read, and equal bytes need not be understood.
    const bool wins = kept.form == SecurityForm::kVolume || kept.form == SecurityForm::kSamba;
    if (wins && KindFor(object) != DescriptorStoreKind::kSmb)
        return ReadExtendedAttribute(object, AttributeOf(kept.form, KindFor(object)), stored) == 0 &&
               stored == kept.bytes;
    nt::SecurityDescriptor present;
    return Read(object, present, SystemListIn(kept)) == ERROR_SUCCESS && form == kept.form &&
           (form == SecurityForm::kNone || stored == kept.bytes);
}

DWORD DescriptorStore::Prepare(const ObjectHandle& object, const nt::SecurityDescriptor& descriptor,
                               StoredSecurity& prepared, SystemList systemList) {
    if (!CanHold(object)) return ERROR_NOT_SUPPORTED;
    inner.clear();
    if (KindFor(object) == DescriptorStoreKind::kSmb) {
        if (!LayOut(descriptor, systemList, inner)) return ERROR_INVALID_ACL;
    } else if (!descriptor.AppendTo(inner)) {
        return ERROR_INVALID_ACL;
    }
    prepared.form = FormOf(KindFor(object));
    if (prepared.form == SecurityForm::kSamba)
        MakeSambaAttribute(inner, prepared.bytes);
    else
        prepared.bytes = inner;
    prepared.hostOwner.reset();
    if (HasHostOwners(object)) prepared.hostOwner = object.Status().st_uid;
    return ERROR_SUCCESS;
}

DWORD DescriptorStore::Examine(const ObjectHandle& object, const StoredSecurity& kept,
                               std::optional<nt::SecurityDescriptor>& descriptor) {
    if (kept.hostOwner.has_value() != HasHostOwners(object)) return ERROR_NOT_SUPPORTED;
    if (kept.form == SecurityForm::kNone) {
        // On NTFS every object has a descriptor.
        if (!HasHostOwners(object)) return ERROR_NOT_SUPPORTED;
        descriptor.reset();
        return kept.bytes.empty() ? ERROR_SUCCESS : ERROR_INVALID_SECURITY_DESCR;
    }
    if (!CanHold(object) || kept.form != FormOf(KindFor(object))) return ERROR_NOT_SUPPORTED;
    const bool isSamba = kept.form == SecurityForm::kSamba;
    if (isSamba && !DescriptorFromSambaAttribute(kept.bytes, inner)) return ERROR_INVALID_SECURITY_DESCR;
    descriptor = nt::SecurityDescriptor::FromBytes(isSamba ? inner : kept.bytes);
    return descriptor ? ERROR_SUCCESS : ERROR_INVALID_SECURITY_DESCR;
}

DWORD DescriptorStore::Replace(const ObjectHandle& object, const StoredSecurity& before,
                               const StoredSecurity& after) {
    const bool changesHands = before.hostOwner && after.hostOwner && before.hostOwner != after.hostOwner;
    DWORD error = changesHands ? GiveToUser(object, *after.hostOwner) : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) return error;
    error = WriteAttribute(object, before, after);
    if (error != ERROR_SUCCESS && changesHands) GiveToUser(object, *before.hostOwner);
    return error;
}

DWORD DescriptorStore::SendToServer(const ObjectHandle& object, std::span<const std::uint8_t> kept,
                                    const char* attribute) {
    // What the attribute can carry; the kernel calls a larger one not supported.
    constexpr std::size_t kMostBytes = 65535;
    const bool isWhole = std::string_view(attribute) == kSmbWholeAttribute;
    if (!MakeRequest(kept, isWhole ? SystemList::kIncluded : SystemList::kLeftOut, inner))
        return ERROR_INVALID_SECURITY_DESCR;
    if (inner.size() > kMostBytes) return ERROR_ALLOTTED_SPACE_EXCEEDED;
    const int problem = WriteExtendedAttribute(object, attribute, inner);
    return problem == 0 ? ERROR_SUCCESS : WriteError(object, problem);
}

// A server may keep less than it was given, as Samba does where it makes mode bits of lists, and say nothing.
DWORD DescriptorStore::WriteToServer(const ObjectHandle& object, const StoredSecurity& before,
                                     const StoredSecurity& after) {
    const SystemList systemList = SystemListIn(after);
    const bool isWhole =
        systemList == SystemList::kIncluded && !HaveSameSystemLists(before.bytes, after.bytes);
    // Nobody could put back what is not known.
    if (isWhole && SystemListIn(before) == SystemList::kLeftOut) return ERROR_NOT_SUPPORTED;
    // Only who may change the owner may write it, also the one that is there already.
    const char* const attribute = isWhole                                     ? kSmbWholeAttribute
                                  : HaveSameOwners(before.bytes, after.bytes) ? kSmbListAttribute
                                                                              : kSmbOwnerAttribute;
    DWORD error = SendToServer(object, after.bytes, attribute);
    const auto wanted = nt::SecurityDescriptor::FromBytes(after.bytes);
    if (error != ERROR_SUCCESS || !wanted) return error;
    nt::SecurityDescriptor kept;
    error = Read(object, kept, systemList);
    // Who has taken the right to read from themselves, or has lost a privilege, cannot see what is kept.
    if (error == ERROR_ACCESS_DENIED || error == ERROR_PRIVILEGE_NOT_HELD) return ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) return error;
    if (HasKept(kept, *wanted)) return ERROR_SUCCESS;
    (void)SendToServer(object, before.bytes, attribute);
    return ERROR_NOT_SUPPORTED;
}

DWORD DescriptorStore::WriteAttribute(const ObjectHandle& object, const StoredSecurity& before,
                                      const StoredSecurity& after) {
    if (KindFor(object) == DescriptorStoreKind::kSmb && after.form == SecurityForm::kVolume)
        return WriteToServer(object, before, after);
    int problem = 0;
    if (after.form != SecurityForm::kNone) {
        const char* name = AttributeOf(after.form, KindFor(object));
        if (name == nullptr) return ERROR_NOT_SUPPORTED;
        // Samba's would win.
        if (after.form == SecurityForm::kUser && AskExtendedAttribute(object, kSambaAttribute) == 0)
            return ERROR_ACCESS_DENIED;
        problem = WriteExtendedAttribute(object, name, after.bytes);
    } else if (const char* name = AttributeOf(before.form, KindFor(object))) {
        problem = RemoveExtendedAttribute(object, name);
    }
    return problem == 0 ? ERROR_SUCCESS : WriteError(object, problem);
}

}  // namespace permora::host
