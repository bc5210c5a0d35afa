// SetListsBelow and SetOwnersBelow: what an object inherits is computed here, as the system does when it
// carries a list down, so that each object is read and written once.
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/api/files.h"
#include "platform/nt/inheritance.h"
#include "platform/raw_security.h"
#include "platform/windows/folder_entry.h"
#include "platform/windows/held_object_inside.h"
#include "platform/windows/privileges.h"
#include "platform/windows/tree_change.h"

namespace permora {
namespace {

// What the objects in a folder inherit from.
struct FolderList {
    DWORD readError = ERROR_SUCCESS;  // why its list is not known; then nothing in it can be set
    nt::Acl list;                     // what stands on it now
};

DWORD WriteList(HANDLE object, const nt::Acl& list) {
    nt::SecurityDescriptor descriptor;
    descriptor.daclState = nt::DaclState::kList;
    descriptor.dacl = list;
    // The system keeps the mark of an inherited list only for who asks for it with the other bit.
    descriptor.control |= nt::kDaclAutoInherited | nt::kDaclAutoInheritRequest;
    std::vector<std::uint8_t> bytes;
    if (!descriptor.AppendTo(bytes)) return ERROR_INVALID_ACL;
    const SECURITY_INFORMATION parts = DACL_SECURITY_INFORMATION | UNPROTECTED_DACL_SECURITY_INFORMATION;
    return SetKernelObjectSecurity(object, parts, bytes.data()) != FALSE ? ERROR_SUCCESS : GetLastError();
}

class ListSetting : public TreeChange {
  public:
    ListSetting(const nt::Acl& list, TreeListMode writing, TreeObserver& listener, TreeCounts& totals)
        : TreeChange(listener, totals), explicitEntries(list), mode(writing) {}

  private:
    DWORD Begin(HANDLE top) override { return ReadFolder(top, lists.emplace_back()); }

    DWORD Access() const override {
        return mode == TreeListMode::kWrite ? READ_CONTROL | WRITE_DAC : READ_CONTROL;
    }

    DWORD Change(HANDLE object, std::size_t depth, Outcome& outcome) override {
        const FolderList& parent = lists[depth];
        FILE_ATTRIBUTE_TAG_INFO tag{};
        DWORD error = TagOf(object, tag);
        if (error == ERROR_SUCCESS) error = ReadDescriptor(object, before);
        if (error != ERROR_SUCCESS) return error;
        if (parent.readError != ERROR_SUCCESS) return parent.readError;
        const bool isFolder = (tag.FileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        after = before;
        after.control &= static_cast<std::uint16_t>(~(nt::kDaclProtected | SE_DACL_DEFAULTED));
        after.control |= nt::kDaclPresent | nt::kDaclAutoInherited;
        after.daclState = nt::DaclState::kList;
        after.dacl = nt::MergeInherited(explicitEntries, parent.list,
                                        isFolder ? nt::ObjectKind::kFolder : nt::ObjectKind::kFile,
                                        before.owner.value_or(nt::Sid()), before.group.value_or(nt::Sid()));
        if (after == before) return ERROR_SUCCESS;
        outcome = Outcome::kChanged;
        return mode == TreeListMode::kWrite ? WriteList(object, after.dacl) : ERROR_SUCCESS;
    }

    // What is in the folder inherits from what stands on it: the new list, or where that could not be set the
    // one it has kept.
    void Enter(HANDLE folder, DWORD error, std::size_t inside) override {
        lists.resize(inside);
        FolderList& entered = lists.emplace_back();
        if (error == ERROR_SUCCESS)
            std::swap(entered.list, after.dacl);
        else
            entered.readError = ReadFolder(folder, entered);
    }

    DWORD ReadFolder(HANDLE object, FolderList& folder) {
        nt::SecurityDescriptor descriptor;
        const DWORD error = ReadDescriptor(object, descriptor);
        // Without a list there is nothing to hand down.
        if (error == ERROR_SUCCESS && descriptor.daclState == nt::DaclState::kList)
            folder.list = std::move(descriptor.dacl);
        return error;
    }

    const nt::Acl& explicitEntries;
    const TreeListMode mode;
    std::vector<FolderList> lists;  // by depth of what stands in them
    nt::SecurityDescriptor before;
    nt::SecurityDescriptor after;
};

class OwnerSetting : public TreeChange {
  public:
    OwnerSetting(const nt::Sid& account, LinkedFiles linkedFiles, TreeObserver& listener, TreeCounts& totals)
        : TreeChange(listener, totals), owner(account), linked(linkedFiles) {}

  private:
    DWORD Begin(HANDLE /*top*/) override { return ERROR_SUCCESS; }

    DWORD Access() const override { return READ_CONTROL | WRITE_OWNER; }

    DWORD Change(HANDLE object, std::size_t /*depth*/, Outcome& outcome) override {
        BY_HANDLE_FILE_INFORMATION info{};
        if (GetFileInformationByHandle(object, &info) == FALSE) return GetLastError();
        const bool isFolder = (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (linked == LinkedFiles::kPassOver && !isFolder && info.nNumberOfLinks > 1) return kHasFurtherNames;
        nt::SecurityDescriptor descriptor;
        if (const DWORD error = ReadDescriptor(object, descriptor); error != ERROR_SUCCESS) return error;
        if (descriptor.owner == owner) return ERROR_SUCCESS;
        outcome = Outcome::kChanged;
        nt::SecurityDescriptor changed;
        changed.owner = owner;
        std::vector<std::uint8_t> bytes;
        if (!changed.AppendTo(bytes)) return ERROR_INVALID_SID;
        return WithPrivileges(kChangingPrivileges, [&] {
            return SetKernelObjectSecurity(object, OWNER_SECURITY_INFORMATION, bytes.data()) != FALSE
                       ? DWORD{ERROR_SUCCESS}
                       : GetLastError();
        });
    }

    void Enter(HANDLE /*folder*/, DWORD /*error*/, std::size_t /*inside*/) override {}

    const nt::Sid owner;
    const LinkedFiles linked;
};

}  // namespace

DWORD HeldObject::SetListsBelow(PACL list, TreeListMode mode, ChangeRecorder& /*recorder*/,
                                TreeObserver& observer, TreeCounts& counts) const {
    const std::optional<nt::Acl> entries = AclOf(list);
    if (!entries) return ERROR_INVALID_ACL;
    const nt::Acl mapped = nt::MapGenericRights(*entries, {});
    return ListSetting(mapped, mode, observer, counts).Run(inside->object.get());
}

DWORD HeldObject::SetOwnersBelow(PSID owner, LinkedFiles linked, ChangeRecorder& /*recorder*/,
                                 TreeObserver& observer, TreeCounts& counts) const {
    const std::optional<nt::Sid> account = SidOf(owner);
    if (!account) return ERROR_INVALID_SID;
    return OwnerSetting(*account, linked, observer, counts).Run(inside->object.get());
}

}  // namespace permora
