// Objects that are held between the reading and the writing of what belongs to them: a service of our own
// beside the system's.
//
// The system's calls take names, and every name is resolved anew. A program that reads a list and writes
// another one by the same name may write it on something else: others who can write in the folder can give
// the name to another object meanwhile. Here an object is found once, and everything is read from and written
// to what was found.
//
// Every call that changes descriptors takes a recorder, which gets each change before it is written. When it
// cannot record one, nothing more is written, and its code is the result.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/api/errors.h"
#include "platform/api/security.h"
#include "platform/change_recorder.h"
#include "platform/failures_below.h"
#include "platform/list_place.h"
#include "platform/nt/security_descriptor.h"
#include "platform/remembered_object.h"
#include "platform/resources.h"
#include "platform/tree_security.h"

namespace permora {

struct HostPermissions;

// Parts of an object's descriptor, in the self-relative descriptor that holds them. Null: the object has
// none, or it was not asked for; a null list lets everyone do everything.
struct ReadParts {
    UniqueLocal<void> descriptor;
    PSID owner = nullptr;  // into `descriptor`, as is the list
    PACL dacl = nullptr;
};

// New parts for a descriptor, in the caller's memory, as SetNamedSecurityInfoA takes them.
struct NewParts {
    PSID owner = nullptr;
    PSID group = nullptr;
    PACL dacl = nullptr;
    PACL sacl = nullptr;
};

// A descriptor before a change and after it.
struct SecurityPreview {
    nt::SecurityDescriptor before;
    nt::SecurityDescriptor after;
    // Whether anything is written. What is stored may differ where the descriptors do not.
    bool changes = false;
};

// Whether bytes that are no valid descriptor are read and written like others: when damaged ones that were
// replaced are put back.
enum class DamagedBytes : std::uint8_t { kRefused, kTaken };

// An object, a link itself and never what it leads to, whatever becomes of its name. All calls answer with 0
// or a system error code, and a failed one leaves its outputs untouched. One thread at a time.
class HeldObject {
  public:
    HeldObject();
    HeldObject(HeldObject&& other) noexcept;
    HeldObject& operator=(HeldObject&& other) noexcept;
    ~HeldObject();

    bool IsHeld() const { return inside != nullptr; }

    // Finds what a path of files.h names. What stands below a folder that is held is FolderHandle's to find.
    static DWORD Hold(const std::string& path, HeldObject& object);

    // Finds again where a change began (FindTop). ERROR_FILE_NOT_FOUND or ERROR_PATH_NOT_FOUND when nothing
    // is there now, ERROR_FILE_INVALID when it is another object or on another volume.
    static DWORD HoldTop(const ChangedTop& top, HeldObject& object);
    // Holds what stands below this folder: names with backslashes between them, or nothing for the folder
    // itself. Never through a link (ERROR_CANT_RESOLVE_FILENAME), and never what is mounted below
    // (ERROR_NOT_SAME_DEVICE). ERROR_INVALID_NAME for what is no such path.
    DWORD HoldBelow(const std::string& path, HeldObject& object) const;
    // Holds the folder that holds the object. No object (IsHeld) for the root of a volume, whatever its path
    // may be.
    DWORD HoldAbove(HeldObject& folder) const;
    // Before thousands of objects are held below this folder: where that is safe, files are opened from then
    // on so that their descriptors are reached in half the time. What is mounted below later is not noticed.
    void ExpectManyBelow();

    bool IsFolder() const;
    FolderEntryKind Kind() const;
    // The volume's own number of the object.
    std::uint64_t FileNumber() const;
    // What HoldTop needs to find the object again, also by another process and after the volume was mounted
    // anew: its path from the root of the system, and what distinguishes it from every object that may get
    // that path or its number. Where the volume has no lasting marks (FUSE other than NTFS, an overlay), the
    // number must do. ERROR_PATH_NOT_FOUND when no path leads to it.
    DWORD FindTop(ChangedTop& top) const;
    // Whether the object was made later than so many seconds after 1970, and so is not the one that was
    // there at the time: file numbers are given again. False where the volume does not know.
    DWORD WasBornAfter(std::int64_t seconds, bool& wasBornAfter) const;

    // Whether a file that HoldBelow has found has further names (hard links), as FileHandle::HasSeveralNames
    // says it. A folder has none.
    DWORD HasSeveralNames(bool& answer) const;

    // Whether the volume that holds the object has access lists: FILE_PERSISTENT_ACLS in the flags of
    // GetVolumeInformationA.
    DWORD AskAccessControl(bool& isSupported) const;

    // The parts that are read together, at the price of one: all, but on a server not the system access list.
    [[nodiscard]] SECURITY_INFORMATION PartsAtOnce() const;

    // The parts asked for in one self-relative block. An object without a stored descriptor has one made from
    // its owner, group and mode. ERROR_INVALID_SECURITY_DESCR for a damaged one, ERROR_PRIVILEGE_NOT_HELD
    // for a system access list that a server gives to others only.
    DWORD ReadSecurity(SECURITY_INFORMATION information, ReadParts& parts) const;

    // The same of the folder that holds the object and hands entries down to it. Nothing in `parts` for the
    // root of a volume, to which nobody does.
    DWORD ReadAbove(SECURITY_INFORMATION information, ReadParts& parts) const;

    // The security of the object exactly as it is kept. ERROR_INVALID_SECURITY_DESCR for a damaged one,
    // unless it is taken; ERROR_PRIVILEGE_NOT_HELD as above.
    DWORD ReadStored(StoredSecurity& stored, DamagedBytes damaged = DamagedBytes::kRefused,
                     SystemList systemList = SystemList::kLeftOut) const;
    // What the object, which has `before`, keeps when it gets this descriptor as it is, with nothing
    // inherited anew: for WriteStored. A system access list that `before` leaves out stays as it is. Where
    // the host has owners of its own, a new owner who is one of its users gets the object there as well:
    // ERROR_ACCESS_DENIED for another's object without the right to give it away. ERROR_NOT_SUPPORTED when it
    // cannot have one, ERROR_INVALID_ACL when a list is too large for any.
    DWORD PrepareStored(const StoredSecurity& before, const nt::SecurityDescriptor& descriptor,
                        StoredSecurity& wanted) const;

    // Where the list that ReadSecurity gives is kept, also when it is damaged.
    DWORD FindListPlace(ListPlace& place) const;

    // What the host lets its users do with the object, whatever its list says (platform/host_permissions.h).
    // ERROR_NOT_SUPPORTED on Windows, which has nothing of the kind.
    DWORD ReadHostPermissions(HostPermissions& permissions) const;

    // The code that a change of these parts is known to fail with before it is tried: ERROR_WRITE_PROTECT on
    // a volume that is there for reading alone, ERROR_ACCESS_DENIED without the right. 0 promises nothing.
    DWORD FindObstacle(SECURITY_INFORMATION information) const;

    // Waits until no other program of this user is at work on the object through this layer; from then on
    // none is, until the object is let go of. ERROR_BUSY after ten seconds: nobody waits for ever. Other
    // users' programs and those of other makers do not wait; what they change is noticed by WriteSecurity.
    DWORD TakeTurn();

    // Writes the parts of the descriptor that `information` names, as SetNamedSecurityInfoA would, and
    // carries a new list to everything that inherits below. `expected`, which may be null, is the descriptor
    // that ReadSecurity gave for DACL_SECURITY_INFORMATION: ERROR_REVISION_MISMATCH, and nothing is written,
    // when another program has changed the list since. 0 when the object itself was written; `below` has what
    // could not be written below it. On Windows system access lists are not written (ERROR_NOT_SUPPORTED):
    // the history does not keep them there.
    DWORD WriteSecurity(SECURITY_INFORMATION information, const NewParts& parts,
                        PSECURITY_DESCRIPTOR expected, ChangeRecorder& recorder, FailuresBelow& below) const;
    DWORD WriteOwner(PSID owner, ChangeRecorder& recorder) const {
        FailuresBelow none;
        return WriteSecurity(OWNER_SECURITY_INFORMATION, {.owner = owner}, nullptr, recorder, none);
    }

    // What WriteSecurity would make of the object itself, by the same steps: its descriptor now and then.
    // Nothing is written, and nobody is waited for.
    DWORD PreviewSecurity(SECURITY_INFORMATION information, const NewParts& parts,
                          SecurityPreview& preview) const;
    // What would become of everything below this folder if it had the list `list`, by the steps that change
    // it. Nothing is written. Results and counts are those of SetListsBelow with kCountOnly.
    [[nodiscard]] DWORD PreviewBelow(const nt::Acl& list, BelowChange change, TreeObserver& observer,
                                     TreeCounts& counts) const;

    // Gives an object whose stored descriptor is damaged the security of one that is newly made in its
    // folder: what that hands down, or nothing stored. Carries a list to everything below, as WriteSecurity
    // does. ERROR_REVISION_MISMATCH, and nothing is written, when the descriptor is not damaged. The recorder
    // gets the damaged bytes, which WriteStored refuses unless it is told to take them. ERROR_NOT_SUPPORTED
    // on Windows, which keeps no damaged descriptors.
    DWORD ReplaceDamaged(ChangeRecorder& recorder, FailuresBelow& below) const;

    // Puts back what was kept at another time, byte for byte, and nothing below the object: removes what is
    // kept when nothing was, and gives the object back to its owner on the host.
    // ERROR_REVISION_MISMATCH, and nothing is written, when the object no longer has `expected`.
    // The system access list is replaced where both include it, and stays where neither does.
    // ERROR_NOT_SUPPORTED when this volume or this process keeps descriptors elsewhere than `wanted` was
    // kept, ERROR_INVALID_SECURITY_DESCR when `wanted`, or what the object has, is damaged and that is not
    // taken. Nobody is told: who calls this has
    // recorded it.
    DWORD WriteStored(const StoredSecurity& expected, const StoredSecurity& wanted,
                      DamagedBytes damaged = DamagedBytes::kRefused) const;

    // Gives every object below this folder the list `list`, unprotected, joined by what the object's own
    // folder hands down: as SetNamedSecurityInfoA with UNPROTECTED_DACL_SECURITY_INFORMATION would for each
    // object in turn, a folder before what is in it. The folder itself keeps its list.
    //
    // A link is an object like any other and gets the list where the volume can hold one for it; it is never
    // followed. What is mounted below is passed over with ERROR_NOT_SAME_DEVICE. A folder whose list cannot
    // be set is entered all the same. An object that vanishes counts as nothing, one that appears in the
    // middle is reached or not. A folder that is moved or replaced in the middle leads nowhere else. The
    // current directory stays what it is. Memory and open descriptors grow with the depth only.
    //
    // 0 when the walk came to its end, with any number of objects passed over; ERROR_OPERATION_ABORTED when
    // `observer` ended it. Another code is about the folder itself: it cannot be read or listed to its end,
    // is a link (ERROR_CANT_RESOLVE_FILENAME) or a file (ERROR_DIRECTORY), or its volume holds no lists
    // (ERROR_NOT_SUPPORTED); or `list` is not valid (ERROR_INVALID_ACL). What was done is added to `counts`,
    // whatever the result.
    [[nodiscard]] DWORD SetListsBelow(PACL list, TreeListMode mode, ChangeRecorder& recorder,
                                      TreeObserver& observer, TreeCounts& counts) const;

    // Gives every object below this folder the owner `owner`, as SetNamedSecurityInfoA with
    // OWNER_SECURITY_INFORMATION would for each; the folder itself keeps its owner. It walks and answers as
    // SetListsBelow does. ERROR_INVALID_SID when `owner` is not valid.
    [[nodiscard]] DWORD SetOwnersBelow(PSID owner, LinkedFiles linked, TreeListMode mode,
                                       ChangeRecorder& recorder, TreeObserver& observer,
                                       TreeCounts& counts) const;

  private:
    friend class FolderHandle;
    friend class RememberedObject;
    friend class TreeFolder;
    struct Inside;
    std::unique_ptr<Inside> inside;  // null: no object
};

}  // namespace permora
