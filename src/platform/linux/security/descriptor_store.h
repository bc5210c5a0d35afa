// Reads and writes the whole security descriptor of an object, wherever its volume keeps it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/change_recorder.h"
#include "platform/linux/files/descriptor_support.h"
#include "platform/linux/files/object_handle.h"
#include "platform/nt/security_descriptor.h"

namespace permora::host {

// The store of one volume. The first object that it meets decides which one, and what follows must lie on the
// same mount. It keeps buffers between calls, so a walk uses one store and a thread its own.
class DescriptorStore {
  public:
    DescriptorStore() = default;
    // Of the mount that StoreKindOf has been asked about; nothing: it is still to be asked.
    explicit DescriptorStore(std::optional<DescriptorStoreKind> known) : kind(known) {}

    // Whether this kind of object can have a descriptor here at all. Links and devices cannot on volumes that
    // keep them in user attributes.
    bool CanHold(const ObjectHandle& object);

    // Whether objects here have an owner of the host beside the one in their descriptors. On NTFS the
    // descriptor's is the only one: the driver makes the host's of it, if any.
    bool HasHostOwners(const ObjectHandle& object);

    // Whether a server gives new objects their descriptors.
    bool IsGivenByServer(const ObjectHandle& object) { return KindFor(object) == DescriptorStoreKind::kSmb; }

    // The object's descriptor, or the one that its owner, group and mode give when none is stored. 0 or an
    // error code: ERROR_INVALID_SECURITY_DESCR when the stored one is damaged. `descriptor` is replaced only
    // on success.
    //
    // Where this process cannot use security.NTACL (it runs as an ordinary user), a descriptor there still
    // wins over one in user.permora.sd, since it is the one that a Samba server goes by.
    //
    // ERROR_PRIVILEGE_NOT_HELD when a server gives all but the system access list.
    DWORD Read(const ObjectHandle& object, nt::SecurityDescriptor& descriptor,
               SystemList systemList = SystemList::kLeftOut);

    // The same for the entry `hostName` of an open folder, a link itself, for those who go through many. The
    // store has met the folder before; nothing is known of what was Found here.
    DWORD ReadEntry(int folder, const char* hostName, nt::SecurityDescriptor& descriptor,
                    SystemList systemList = SystemList::kLeftOut);

    // Whether what Read or ReadEntry has found last is stored, and not made from the mode.
    bool HasFoundStored() const { return form != SecurityForm::kNone; }

    // What the last Read, which has succeeded, has found on this object, exactly as it is kept.
    StoredSecurity Found(const ObjectHandle& object);

    // Whether the object still has this descriptor, read anew.
    bool Has(const ObjectHandle& object, const StoredSecurity& kept);

    // What will be kept when the object gets this descriptor; the host's owner stays. ERROR_NOT_SUPPORTED
    // when it cannot hold one, ERROR_INVALID_ACL when a list is too large for any.
    DWORD Prepare(const ObjectHandle& object, const nt::SecurityDescriptor& descriptor,
                  StoredSecurity& prepared, SystemList systemList = SystemList::kLeftOut);
    // Whether something that was kept at another time can be kept here: ERROR_NOT_SUPPORTED when this kind of
    // volume or this process keeps descriptors elsewhere, ERROR_INVALID_SECURITY_DESCR when it is damaged.
    // `descriptor` is the one in it, or empty when nothing is kept.
    DWORD Examine(const ObjectHandle& object, const StoredSecurity& kept,
                  std::optional<nt::SecurityDescriptor>& descriptor);

    // Replaces what the object has (Found, or what Found had given for it) by what Prepare has made or
    // Examine has approved. The descriptor is replaced in one write: after a failure the object has the one
    // it had. ERROR_ACCESS_DENIED when it has one of Samba's and this process may not change it,
    // ERROR_ALLOTTED_SPACE_EXCEEDED when it is larger than the volume allows.
    //
    // The host's owner changes first, by the kernel's rules, and is put back when the descriptor cannot be
    // written, as far as the kernel lets us. Setuid and setgid bits and capabilities, which the kernel takes
    // away when a file changes hands, are not put back.
    DWORD Replace(const ObjectHandle& object, const StoredSecurity& before, const StoredSecurity& after);

  private:
    DescriptorStoreKind KindFor(const ObjectHandle& object);
    bool ReadVolume(const ObjectHandle& object, SystemList systemList, int& problem);
    DWORD TakeFromVolume(SystemList systemList, nt::SecurityDescriptor& descriptor);
    template <typename Source>
    DWORD WhyNotRead(const Source& source, SystemList systemList, int problem);
    template <typename Source, typename AskKind>
    DWORD ReadFrom(const Source& source, AskKind askKind, nt::SecurityDescriptor& descriptor);
    DWORD SendToServer(const ObjectHandle& object, std::span<const std::uint8_t> kept, const char* attribute);
    DWORD WriteToServer(const ObjectHandle& object, const StoredSecurity& before,
                        const StoredSecurity& after);
    DWORD WriteAttribute(const ObjectHandle& object, const StoredSecurity& before,
                         const StoredSecurity& after);

    std::optional<DescriptorStoreKind> kind;  // nothing as long as nobody had to know
    SecurityForm form = SecurityForm::kNone;  // what the last Read has found
    std::vector<std::uint8_t> stored;         // an attribute as it is on disk
    std::vector<std::uint8_t> inner;          // a descriptor taken from, or to be put into, Samba's attribute
};

}  // namespace permora::host
