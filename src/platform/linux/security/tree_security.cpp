#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "platform/api/errors.h"
#include "platform/linux/files/several_names.h"
#include "platform/linux/security/held_object_inside.h"
#include "platform/linux/security/object_turn.h"
#include "platform/linux/security/owner_setting.h"
#include "platform/linux/security/propagation.h"
#include "platform/linux/security/tree_change.h"
#include "platform/nt/inheritance.h"
#include "platform/nt/security_descriptor.h"
#include "platform/raw_security.h"

namespace permora::host {
namespace {

// What the objects in a folder inherit from.
struct FolderList {
    DWORD readError = ERROR_SUCCESS;  // why its list is not known; then nothing in it can be set
    nt::Acl list;                     // what stands on it now
};

class ListSetting : public TreeChange {
  public:
    ListSetting(const nt::Acl& list, TreeListMode writing, TreeObserver& listener, TreeCounts& totals)
        : TreeChange(writing, listener, totals), explicitEntries(list) {}

  private:
    DWORD Begin(const ObjectHandle& top) override { return ReadFolder(top, lists.emplace_back()); }

    // Reads once and writes at most once.
    DWORD Change(const ObjectHandle& object, std::size_t depth, Outcome& outcome) override {
        const FolderList& parent = lists[depth];
        const DWORD error = store.Read(object, before);
        if (error != ERROR_SUCCESS) return error;
        if (parent.readError != ERROR_SUCCESS) return parent.readError;
        after = before;
        after.control &= static_cast<std::uint16_t>(~(nt::kDaclProtected | SE_DACL_DEFAULTED));
        after.daclState = nt::DaclState::kList;
        after.dacl = explicitEntries;
        JoinInherited(after, parent.list, object);
        if (after == before) return ERROR_SUCCESS;
        outcome = Outcome::kChanged;
        return mode == TreeListMode::kWrite ? store.Write(object, after) : ERROR_SUCCESS;
    }

    // What is in the folder inherits from what stands on it: the new list, or where that could not be set the
    // one it has kept.
    void Enter(const ObjectHandle& object, DWORD error, std::size_t inside) override {
        lists.resize(inside);
        FolderList& folder = lists.emplace_back();
        if (error == ERROR_SUCCESS)
            std::swap(folder.list, after.dacl);
        else
            folder.readError = ReadFolder(object, folder);
    }

    DWORD ReadFolder(const ObjectHandle& object, FolderList& folder) {
        nt::SecurityDescriptor descriptor;
        const DWORD error = store.Read(object, descriptor);
        // Without a list there is nothing to hand down.
        if (error == ERROR_SUCCESS && descriptor.daclState == nt::DaclState::kList)
            folder.list = std::move(descriptor.dacl);
        return error;
    }

    const nt::Acl& explicitEntries;
    std::vector<FolderList> lists;  // by depth of what stands in them
    nt::SecurityDescriptor before;
    nt::SecurityDescriptor after;
};

class OwnerSetting : public TreeChange {
  public:
    OwnerSetting(const nt::Sid& account, LinkedFiles linkedFiles, TreeObserver& listener, TreeCounts& totals)
        : TreeChange(TreeListMode::kWrite, listener, totals), owner(account), linked(linkedFiles) {}

  private:
    DWORD Allow(const ObjectHandle& object, const char* hostName) override {
        if (linked == LinkedFiles::kChange || object.IsFolder()) return ERROR_SUCCESS;
        bool hasSeveralNames = false;
        const DWORD error = AskSeveralNames(Folder(), hostName, object, hasSeveralNames);
        return error == ERROR_SUCCESS && hasSeveralNames ? kHasFurtherNames : error;
    }

    DWORD Change(const ObjectHandle& object, std::size_t /*depth*/, Outcome& outcome) override {
        const DWORD error = store.Read(object, descriptor);
        if (error != ERROR_SUCCESS) return error;
        if (HasOwner(object, descriptor, owner, store)) return ERROR_SUCCESS;
        outcome = Outcome::kChanged;
        SetOwnerIn(descriptor, owner);
        return WriteWithOwner(object, descriptor, store);
    }

    const nt::Sid owner;
    const LinkedFiles linked;
    nt::SecurityDescriptor descriptor;
};

}  // namespace
}  // namespace permora::host

namespace permora {

DWORD HeldObject::SetListsBelow(PACL list, TreeListMode mode, TreeObserver& observer,
                                TreeCounts& counts) const {
    const std::optional<nt::Acl> entries = AclOf(list);
    if (!entries) return ERROR_INVALID_ACL;
    const nt::Acl mapped = nt::MapGenericRights(*entries, {});
    return host::ListSetting(mapped, mode, observer, counts).Run(inside->target.object);
}

DWORD HeldObject::SetOwnersBelow(PSID owner, LinkedFiles linked, TreeObserver& observer,
                                 TreeCounts& counts) const {
    const std::optional<nt::Sid> account = SidOf(owner);
    if (!account) return ERROR_INVALID_SID;
    return host::OwnerSetting(*account, linked, observer, counts).Run(inside->target.object);
}

}  // namespace permora
