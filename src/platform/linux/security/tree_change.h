// What every change of all objects below a folder shares: where it may begin, telling the observer, and the
// counts.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "platform/linux/files/object_handle.h"
#include "platform/linux/files/tree_walk.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/linux/security/object_turn.h"
#include "platform/nt/acl.h"
#include "platform/passed_over.h"
#include "platform/tree_security.h"

namespace permora::host {

// What a walk remembers of a folder for what is in it.
struct ChangedFolder : FolderNotes {
    ObjectTurn turn;
    DWORD readError = ERROR_SUCCESS;      // why its list is not known; then nothing in it can be set
    std::shared_ptr<const nt::Acl> list;  // what stands on it now; null where nobody needs it
};

// The list of a folder, which mostly is that of the one above it: deep trees then have one list in memory.
std::shared_ptr<const nt::Acl> ShareList(nt::Acl& list, const std::shared_ptr<const nt::Acl>& above);

// What all threads share.
class TreeChange : public TreeVisitor {
  public:
    TreeChange(TreeListMode writing, TreeObserver& listener, TreeCounts& totals)
        : mode(writing), observer(listener), counts(totals) {}

    // Walks the folder. The result is that of HeldObject::SetListsBelow.
    DWORD Run(const ObjectHandle& top);

  protected:
    // The walk begins, with what is to be remembered of its folder; an error ends it.
    virtual DWORD Begin(const ObjectHandle& /*top*/, ChangedFolder& /*notes*/) { return ERROR_SUCCESS; }

    DescriptorStore store;  // of the top; each thread has a copy
    const TreeListMode mode;

  private:
    friend class TreeChangeThread;
    bool WantsReadableFiles() const override { return true; }
    void Fail(DWORD error, const std::string& path) override;
    bool BeginObject(const std::string& name);
    void PassOver(DWORD error, const std::string& path);

    LockFile folderTurns;
    std::mutex guard;  // of what follows
    TreeObserver& observer;
    TreeCounts& counts;
    PassedOverObjects passedOver;
    DWORD result = ERROR_SUCCESS;
};

// What one thread does.
class TreeChangeThread : public VisitingThread {
  public:
    explicit TreeChangeThread(TreeChange& shared)
        : store(shared.store), mode(shared.mode), change(shared), turns(shared.folderTurns) {}
    ~TreeChangeThread() override;

  protected:
    enum class Outcome { kChanged, kUnchanged };

    // One object that can have a descriptor, in a folder of which `parent` is remembered. A failure leaves it
    // as it was.
    virtual DWORD Change(const ObjectHandle& object, const ChangedFolder& parent, Outcome& outcome) = 0;
    // Called before Change: 0 when the object may be changed, else an error code.
    virtual DWORD Allow(const VisitedObject& /*visited*/) { return ERROR_SUCCESS; }
    // The walk goes into a folder; `error` is that of its own change.
    virtual void Remember(const ObjectHandle& /*folder*/, DWORD /*error*/, const ChangedFolder& /*parent*/,
                          ChangedFolder& /*notes*/) {}

    DescriptorStore store;
    const TreeListMode mode;

  private:
    WalkDecision Visit(const VisitedObject& visited, std::unique_ptr<FolderNotes>& notes) override;
    void Rest() override { turns.LeaveAll(); }
    DWORD ChangeAndCount(const VisitedObject& visited);

    TreeChange& change;
    WalkTurns turns;
    TreeCounts counts;
};

}  // namespace permora::host
