#include "platform/linux/security/propagation.h"

#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/files/tree_walk.h"
#include "platform/linux/security/tree_change.h"
#include "platform/security_change.h"
#include "platform/volume_loss.h"

namespace permora::host {

namespace {

class ListPropagation : public TreeChange {
  public:
    ListPropagation(TreeListMode writing, const DescriptorStore& volume, const RecordedTop& top,
                    FailuresBelow& found)
        : TreeChange(writing, top, volume), failures(found) {}

    using TreeChange::Walk;

  private:
    std::unique_ptr<VisitingThread> NewThread() override;

    void Fail(DWORD error, const std::string& path) override {
        // Another volume inherits nothing from this one.
        if (error != ERROR_NOT_SAME_DEVICE) PassOver(error, path);
    }
    void PassOver(DWORD error, const std::string& path) override {
        // It vanished after it was opened.
        if (error == ERROR_FILE_NOT_FOUND) return;
        {
            const std::lock_guard lock(guard);
            failures.Add(path, error);
        }
        if (IsVolumeLost(error)) End(error);
    }

    FailuresBelow& failures;

  protected:
    std::mutex guard;
};

// The same walk, which writes nothing and counts.
class PropagationCount : public ListPropagation {
  public:
    PropagationCount(const DescriptorStore& volume, FailuresBelow& found, TreeObserver& listener,
                     TreeCounts& totals)
        : ListPropagation(TreeListMode::kCountOnly, volume, {}, found), observer(listener), counts(totals) {}

  private:
    bool Begin(const std::string& hostName) override {
        const std::lock_guard lock(guard);
        return BeginTold(observer, hostName);
    }
    void Add(const TreeCounts& done) override { AddCounts(done, counts); }

    TreeObserver& observer;
    TreeCounts& counts;
};

class PropagationThread : public TreeChangeThread {
  public:
    using TreeChangeThread::TreeChangeThread;

  private:
    bool Concerns(const ObjectHandle& object) override { return store.CanHold(object); }

    DWORD MakePlan(const ObjectHandle& object, const HandedDown& inherited, Plan& plan) override {
        const DWORD error = store.Read(object, descriptor);
        if (error != ERROR_SUCCESS) return error;
        plan.entersFolder = descriptor.daclState == nt::DaclState::kList && !descriptor.IsDaclProtected();
        if (!plan.entersFolder) return ERROR_SUCCESS;
        before = descriptor;
        JoinInherited(descriptor, *inherited.list, object);
        plan.changes = descriptor != before;
        if (plan.changes) {
            plan.isEmptied = IsEmptiedBy(before, descriptor);
            plan.before = store.Found(object);
            const DWORD problem = store.Prepare(object, descriptor, plan.after);
            if (problem != ERROR_SUCCESS) return problem;
        }
        if (object.IsFolder()) plan.list = ShareList(descriptor.dacl, inherited.list);
        return ERROR_SUCCESS;
    }

    std::optional<HandedDown> KeptBy(const ObjectHandle& /*folder*/) override { return std::nullopt; }

    nt::SecurityDescriptor descriptor;
    nt::SecurityDescriptor before;
};

std::unique_ptr<VisitingThread> ListPropagation::NewThread() {
    return std::make_unique<PropagationThread>(*this);
}

}  // namespace

void JoinInherited(nt::SecurityDescriptor& descriptor, const nt::Acl& parent, const ObjectHandle& object) {
    const nt::Sid owner = descriptor.owner ? nt::Sid() : SidForUser(object.Status().st_uid);
    const nt::Sid group = descriptor.group ? nt::Sid() : SidForGroup(object.Status().st_gid);
    permora::JoinInherited(descriptor, parent, object.Kind(), owner, group);
}

DWORD PropagateList(const ObjectHandle& folder, const nt::Acl& list, const DescriptorStore& store,
                    const RecordedTop& top, FailuresBelow& failures, std::optional<std::size_t> threads) {
    const DWORD error =
        ListPropagation(TreeListMode::kWrite, store, top, failures)
            .Walk(folder, {.error = ERROR_SUCCESS, .list = std::make_shared<const nt::Acl>(list)}, threads);
    // The folder itself was changed, and what is in it only to a part.
    if (!IsVolumeLost(error)) return error;
    failures.Add("", error);
    return ERROR_SUCCESS;
}

DWORD CountPropagation(const ObjectHandle& folder, const nt::Acl& list, TreeObserver& observer,
                       TreeCounts& counts) {
    DescriptorStore store;
    if (!store.CanHold(folder)) return ERROR_NOT_SUPPORTED;
    FailuresBelow failures;
    const DWORD error = PropagationCount(store, failures, observer, counts)
                            .Walk(folder, {.list = std::make_shared<const nt::Acl>(list)}, std::nullopt);
    counts.passedOver += failures.count;
    return error;
}

}  // namespace permora::host
