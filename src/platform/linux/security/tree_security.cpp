#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

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

DWORD ReadFolderList(const ObjectHandle& object, DescriptorStore& store, nt::Acl& list) {
    nt::SecurityDescriptor descriptor;
    const DWORD error = store.Read(object, descriptor);
    // Without a list there is nothing to hand down.
    if (error == ERROR_SUCCESS && descriptor.daclState == nt::DaclState::kList)
        list = std::move(descriptor.dacl);
    return error;
}

class ListSetting : public TreeChange {
  public:
    ListSetting(const nt::Acl& list, TreeListMode writing, TreeObserver& listener, TreeCounts& totals)
        : TreeChange(writing, listener, totals), explicitEntries(list) {}

    const nt::Acl& ExplicitEntries() const { return explicitEntries; }

  private:
    std::unique_ptr<VisitingThread> NewThread() override;
    DWORD Begin(const ObjectHandle& top, ChangedFolder& notes) override {
        nt::Acl list;
        const DWORD error = ReadFolderList(top, store, list);
        notes.list = ShareList(list, nullptr);
        return error;
    }

    const nt::Acl& explicitEntries;
};

class ListSettingThread : public TreeChangeThread {
  public:
    explicit ListSettingThread(ListSetting& shared)
        : TreeChangeThread(shared), explicitEntries(shared.ExplicitEntries()) {}

  private:
    // Reads once and writes at most once.
    DWORD Change(const ObjectHandle& object, const ChangedFolder& parent, Outcome& outcome) override {
        const DWORD error = store.Read(object, before);
        if (error != ERROR_SUCCESS) return error;
        if (parent.readError != ERROR_SUCCESS) return parent.readError;
        after = before;
        after.control &= static_cast<std::uint16_t>(~(nt::kDaclProtected | SE_DACL_DEFAULTED));
        after.daclState = nt::DaclState::kList;
        after.dacl = explicitEntries;
        JoinInherited(after, *parent.list, object);
        if (after == before) return ERROR_SUCCESS;
        outcome = Outcome::kChanged;
        return mode == TreeListMode::kWrite ? store.Write(object, after) : ERROR_SUCCESS;
    }

    // What is in the folder inherits from what stands on it: the new list, or where that could not be set the
    // one it has kept.
    void Remember(const ObjectHandle& folder, DWORD error, const ChangedFolder& parent,
                  ChangedFolder& notes) override {
        if (error != ERROR_SUCCESS) {
            after.dacl = {};
            notes.readError = ReadFolderList(folder, store, after.dacl);
        }
        notes.list = ShareList(after.dacl, parent.list);
    }

    const nt::Acl& explicitEntries;
    nt::SecurityDescriptor before;
    nt::SecurityDescriptor after;
};

std::unique_ptr<VisitingThread> ListSetting::NewThread() {
    return std::make_unique<ListSettingThread>(*this);
}

class OwnerSetting : public TreeChange {
  public:
    OwnerSetting(const nt::Sid& account, LinkedFiles linkedFiles, TreeObserver& listener, TreeCounts& totals)
        : TreeChange(TreeListMode::kWrite, listener, totals), owner(account), linked(linkedFiles) {}

    const nt::Sid owner;
    const LinkedFiles linked;

  private:
    std::unique_ptr<VisitingThread> NewThread() override;
};

class OwnerSettingThread : public TreeChangeThread {
  public:
    explicit OwnerSettingThread(OwnerSetting& shared) : TreeChangeThread(shared), setting(shared) {}

  private:
    DWORD Allow(const VisitedObject& visited) override {
        if (setting.linked == LinkedFiles::kChange || visited.object.IsFolder()) return ERROR_SUCCESS;
        bool hasSeveralNames = false;
        const DWORD error =
            AskSeveralNames(visited.folder, visited.hostName, visited.object, hasSeveralNames);
        return error == ERROR_SUCCESS && hasSeveralNames ? kHasFurtherNames : error;
    }

    DWORD Change(const ObjectHandle& object, const ChangedFolder& /*parent*/, Outcome& outcome) override {
        const DWORD error = store.Read(object, descriptor);
        if (error != ERROR_SUCCESS) return error;
        if (HasOwner(object, descriptor, setting.owner, store)) return ERROR_SUCCESS;
        outcome = Outcome::kChanged;
        const StoredSecurity before = store.Found(object);
        StoredSecurity after;
        SetOwnerIn(descriptor, setting.owner);
        const DWORD problem = PrepareWithOwner(object, descriptor, store, after);
        return problem == ERROR_SUCCESS ? store.Replace(object, before, after) : problem;
    }

    const OwnerSetting& setting;
    nt::SecurityDescriptor descriptor;
};

std::unique_ptr<VisitingThread> OwnerSetting::NewThread() {
    return std::make_unique<OwnerSettingThread>(*this);
}

}  // namespace
}  // namespace permora::host

namespace permora {

DWORD HeldObject::SetListsBelow(PACL list, TreeListMode mode, ChangeRecorder& /*recorder*/,
                                TreeObserver& observer, TreeCounts& counts) const {
    const std::optional<nt::Acl> entries = AclOf(list);
    if (!entries) return ERROR_INVALID_ACL;
    const nt::Acl mapped = nt::MapGenericRights(*entries, {});
    return host::ListSetting(mapped, mode, observer, counts).Run(inside->target.object);
}

DWORD HeldObject::SetOwnersBelow(PSID owner, LinkedFiles linked, ChangeRecorder& /*recorder*/,
                                 TreeObserver& observer, TreeCounts& counts) const {
    const std::optional<nt::Sid> account = SidOf(owner);
    if (!account) return ERROR_INVALID_SID;
    return host::OwnerSetting(*account, linked, observer, counts).Run(inside->target.object);
}

}  // namespace permora
