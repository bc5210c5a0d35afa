#include "platform/linux/security/tree_setting.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/files/several_names.h"
#include "platform/linux/security/held_object_inside.h"
#include "platform/linux/security/owner_setting.h"
#include "platform/linux/security/propagation.h"
#include "platform/linux/security/tree_change.h"
#include "platform/nt/inheritance.h"
#include "platform/nt/security_descriptor.h"
#include "platform/passed_over.h"
#include "platform/raw_security.h"
#include "platform/security_change.h"
#include "platform/volume_loss.h"

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

// What setting lists and setting owners have in common beside the walk: the observer and the counts.
class TreeSetting : public TreeChange {
  public:
    TreeSetting(TreeListMode writing, const RecordedTop& top, const DescriptorStore& volume,
                TreeObserver& listener, TreeCounts& totals)
        : TreeChange(writing, top, volume), observer(listener), counts(totals) {}

    // The result is that of HeldObject::SetListsBelow.
    DWORD Run(const ObjectHandle& folder, HandedDown handedDown, std::optional<std::size_t> threads) {
        const DWORD error = Walk(folder, std::move(handedDown), threads);
        passedOver.Tell(observer);
        return error;
    }

  private:
    bool Begin(const std::string& hostName) override {
        const std::lock_guard lock(guard);
        return BeginTold(observer, hostName);
    }

    void Fail(DWORD error, const std::string& path) override {
        if (path.empty()) return End(error);
        PassOver(error, path);
    }

    void PassOver(DWORD error, const std::string& path) override {
        // It vanished after it was opened.
        if (error == ERROR_FILE_NOT_FOUND) return;
        {
            const std::lock_guard lock(guard);
            ++counts.passedOver;
            passedOver.Add(path, error);
        }
        if (IsVolumeLost(error)) End(error);
    }

    void Add(const TreeCounts& done) override {
        const std::lock_guard lock(guard);
        AddCounts(done, counts);
    }

    std::mutex guard;
    TreeObserver& observer;
    TreeCounts& counts;
    PassedOverObjects passedOver;
};

class ListSetting : public TreeSetting {
  public:
    ListSetting(const ListBelow& wanted, const RecordedTop& top, const DescriptorStore& volume,
                TreeObserver& listener, TreeCounts& totals)
        : TreeSetting(wanted.mode, top, volume, listener, totals), explicitEntries(wanted.list) {}

    const nt::Acl& explicitEntries;

  private:
    std::unique_ptr<VisitingThread> NewThread() override;
};

class ListSettingThread : public TreeChangeThread {
  public:
    explicit ListSettingThread(ListSetting& shared)
        : TreeChangeThread(shared), explicitEntries(shared.explicitEntries) {}

  private:
    DWORD Allow(const VisitedObject& visited) override {
        return store.CanHold(visited.object) ? ERROR_SUCCESS : ERROR_NOT_SUPPORTED;
    }

    // Reads once.
    DWORD MakePlan(const ObjectHandle& object, const HandedDown& inherited, Plan& plan) override {
        const DWORD error = store.Read(object, before);
        if (error != ERROR_SUCCESS) return error;
        if (inherited.error != ERROR_SUCCESS) return inherited.error;
        after = before;
        after.control &= static_cast<std::uint16_t>(~(nt::kDaclProtected | SE_DACL_DEFAULTED));
        after.daclState = nt::DaclState::kList;
        after.dacl = explicitEntries;
        JoinInherited(after, *inherited.list, object);
        plan.changes = after != before;
        if (plan.changes) {
            plan.losesOwn = mode == TreeListMode::kCountOnly && !LostOwnEntries(before, after).empty();
            plan.isEmptied = IsEmptiedBy(before, after);
            plan.before = store.Found(object);
            const DWORD problem = store.Prepare(object, after, plan.after);
            if (problem != ERROR_SUCCESS) return problem;
        }
        if (object.IsFolder()) plan.list = ShareList(after.dacl, inherited.list);
        return ERROR_SUCCESS;
    }

    // The list that it has kept.
    std::optional<HandedDown> KeptBy(const ObjectHandle& folder) override {
        HandedDown kept;
        nt::Acl list;
        kept.error = ReadFolderList(folder, store, list);
        kept.list = ShareList(list, nullptr);
        return kept;
    }

    const nt::Acl& explicitEntries;
    nt::SecurityDescriptor before;
    nt::SecurityDescriptor after;
};

std::unique_ptr<VisitingThread> ListSetting::NewThread() {
    return std::make_unique<ListSettingThread>(*this);
}

class OwnerSetting : public TreeSetting {
  public:
    OwnerSetting(const OwnerBelow& owner, const RecordedTop& top, const DescriptorStore& volume,
                 TreeObserver& listener, TreeCounts& totals)
        : TreeSetting(owner.mode, top, volume, listener, totals), wanted(owner) {}

    const OwnerBelow& wanted;

  private:
    std::unique_ptr<VisitingThread> NewThread() override;
};

class OwnerSettingThread : public TreeChangeThread {
  public:
    explicit OwnerSettingThread(OwnerSetting& shared) : TreeChangeThread(shared), wanted(shared.wanted) {}

  private:
    DWORD Allow(const VisitedObject& visited) override {
        if (!store.CanHold(visited.object)) return ERROR_NOT_SUPPORTED;
        if (wanted.linked == LinkedFiles::kChange || visited.object.IsFolder()) return ERROR_SUCCESS;
        bool hasSeveralNames = false;
        const DWORD error =
            AskSeveralNames(visited.folder, visited.hostName, visited.object, hasSeveralNames);
        return error == ERROR_SUCCESS && hasSeveralNames ? kHasFurtherNames : error;
    }

    DWORD MakePlan(const ObjectHandle& object, const HandedDown& /*inherited*/, Plan& plan) override {
        const DWORD error = store.Read(object, descriptor);
        if (error != ERROR_SUCCESS) return error;
        if (HasOwner(object, descriptor, wanted.owner, store)) return ERROR_SUCCESS;
        plan.changes = true;
        plan.before = store.Found(object);
        SetOwnerIn(descriptor, wanted.owner);
        return PrepareWithOwner(object, descriptor, store, plan.after);
    }

    std::optional<HandedDown> KeptBy(const ObjectHandle& /*folder*/) override { return HandedDown{}; }
    bool DependsOnFolders() const override { return false; }

    const OwnerBelow& wanted;
    nt::SecurityDescriptor descriptor;
};

std::unique_ptr<VisitingThread> OwnerSetting::NewThread() {
    return std::make_unique<OwnerSettingThread>(*this);
}

// A folder whose contents can be set.
DWORD RequireChangeable(const ObjectHandle& folder, DescriptorStore& store) {
    const DWORD error = folder.RequireFolder();
    return error == ERROR_SUCCESS && !store.CanHold(folder) ? ERROR_NOT_SUPPORTED : error;
}

}  // namespace

DWORD SetBelow(const ObjectHandle& folder, const ListBelow& wanted, const RecordedTop& top,
               TreeObserver& observer, TreeCounts& counts, std::optional<std::size_t> threads) {
    DescriptorStore store;
    nt::Acl list;
    DWORD error = RequireChangeable(folder, store);
    if (error == ERROR_SUCCESS && wanted.handedDown == nullptr) error = ReadFolderList(folder, store, list);
    if (error != ERROR_SUCCESS) return error;
    if (wanted.handedDown != nullptr) list = *wanted.handedDown;
    return ListSetting(wanted, top, store, observer, counts)
        .Run(folder, {.error = ERROR_SUCCESS, .list = ShareList(list, nullptr)}, threads);
}

DWORD SetBelow(const ObjectHandle& folder, const OwnerBelow& wanted, const RecordedTop& top,
               TreeObserver& observer, TreeCounts& counts, std::optional<std::size_t> threads) {
    DescriptorStore store;
    const DWORD error = RequireChangeable(folder, store);
    if (error != ERROR_SUCCESS) return error;
    return OwnerSetting(wanted, top, store, observer, counts).Run(folder, {}, threads);
}

}  // namespace permora::host

namespace permora {

DWORD HeldObject::SetListsBelow(PACL list, TreeListMode mode, ChangeRecorder& recorder,
                                TreeObserver& observer, TreeCounts& counts) const {
    const std::optional<nt::Acl> entries = AclOf(list);
    if (!entries) return ERROR_INVALID_ACL;
    host::RecordedTop top;
    if (mode == TreeListMode::kWrite)
        if (const DWORD error = top.Begin(*this, recorder); error != ERROR_SUCCESS) return error;
    return host::SetBelow(inside->target.object,
                          host::ListBelow{.list = nt::MapGenericRights(*entries, {}), .mode = mode}, top,
                          observer, counts);
}

DWORD HeldObject::PreviewBelow(const nt::Acl& list, BelowChange change, TreeObserver& observer,
                               TreeCounts& counts) const {
    const host::ObjectHandle& folder = inside->target.object;
    if (change == BelowChange::kCarryDown) return host::CountPropagation(folder, list, observer, counts);
    return host::SetBelow(folder,
                          host::ListBelow{.list = {}, .mode = TreeListMode::kCountOnly, .handedDown = &list},
                          {}, observer, counts);
}

DWORD HeldObject::SetOwnersBelow(PSID owner, LinkedFiles linked, TreeListMode mode, ChangeRecorder& recorder,
                                 TreeObserver& observer, TreeCounts& counts) const {
    const std::optional<nt::Sid> account = SidOf(owner);
    if (!account) return ERROR_INVALID_SID;
    host::RecordedTop top;
    if (mode == TreeListMode::kWrite)
        if (const DWORD error = top.Begin(*this, recorder); error != ERROR_SUCCESS) return error;
    return host::SetBelow(inside->target.object,
                          host::OwnerBelow{.owner = *account, .linked = linked, .mode = mode}, top, observer,
                          counts);
}

}  // namespace permora
