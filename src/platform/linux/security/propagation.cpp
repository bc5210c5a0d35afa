#include "platform/linux/security/propagation.h"

#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "platform/linux/accounts/unix_accounts.h"
#include "platform/linux/files/tree_walk.h"
#include "platform/linux/security/object_turn.h"
#include "platform/linux/security/tree_change.h"
#include "platform/security_change.h"

namespace permora::host {

namespace {

class ListPropagation : public TreeVisitor {
  public:
    explicit ListPropagation(const DescriptorStore& volume) : store(volume), folderTurns(OpenLockFile()) {}

    std::unique_ptr<VisitingThread> NewThread() override;
    bool WantsReadableFiles() const override { return true; }

    void Fail(DWORD error, const std::string& path) override {
        // Another volume inherits nothing from this one. And an object may vanish after it was opened.
        if (error == ERROR_NOT_SAME_DEVICE || error == ERROR_FILE_NOT_FOUND) return;
        const std::lock_guard lock(guard);
        if (failures.count++ > 0 && failures.firstPath <= path) return;
        failures.firstError = error;
        failures.firstPath = path;
    }

    const FailuresBelow& Failures() const { return failures; }

    const DescriptorStore store;  // each thread has a copy
    const LockFile folderTurns;

  private:
    std::mutex guard;
    FailuresBelow failures;
};

class PropagationThread : public VisitingThread {
  public:
    explicit PropagationThread(ListPropagation& shared)
        : propagation(shared), store(shared.store), turns(shared.folderTurns) {}

    WalkDecision Visit(const VisitedObject& visited, std::unique_ptr<FolderNotes>& notes) override {
        const ObjectHandle& object = visited.object;
        if (!store.CanHold(object)) return WalkDecision::kPassOver;
        const auto& parent = static_cast<const ChangedFolder&>(*visited.place->Notes());
        bool inherits = false;
        DWORD error = turns.Take(object);
        if (error == ERROR_SUCCESS) error = Update(object, *parent.list, inherits);
        if (error != ERROR_SUCCESS) propagation.Fail(error, visited.Path());
        if (error != ERROR_SUCCESS || !inherits || !object.IsFolder()) {
            turns.Leave();
            return WalkDecision::kPassOver;
        }
        auto folder = std::make_unique<ChangedFolder>();
        folder->turn = turns.Keep();
        folder->list = ShareList(descriptor.dacl, parent.list);
        notes = std::move(folder);
        return WalkDecision::kDescend;
    }

    void Rest() override { turns.LeaveAll(); }

  private:
    DWORD Update(const ObjectHandle& object, const nt::Acl& parent, bool& inherits) {
        const DWORD error = store.Read(object, descriptor);
        if (error != ERROR_SUCCESS) return error;
        inherits = descriptor.daclState == nt::DaclState::kList && !descriptor.IsDaclProtected();
        before = descriptor;
        if (inherits) JoinInherited(descriptor, parent, object);
        return descriptor == before ? ERROR_SUCCESS : store.Write(object, descriptor);
    }

    ListPropagation& propagation;
    DescriptorStore store;
    WalkTurns turns;
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

FailuresBelow PropagateList(const ObjectHandle& folder, const nt::Acl& list, const DescriptorStore& store,
                            std::optional<std::size_t> threads) {
    auto notes = std::make_unique<ChangedFolder>();
    notes->list = std::make_shared<const nt::Acl>(list);
    ListPropagation propagation(store);
    WalkTree(folder, std::move(notes), propagation, threads);
    return propagation.Failures();
}

}  // namespace permora::host
