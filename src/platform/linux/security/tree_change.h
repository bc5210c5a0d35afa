// The common part of changes to all objects below a folder: where they may begin, the reports to the
// observer, and the counts.
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

// A walk's notes on a folder, for the objects in it.
struct ChangedFolder : FolderNotes {
    ObjectTurn turn;
    DWORD readError = ERROR_SUCCESS;      // why its list is not known; then nothing in it can be set
    std::shared_ptr<const nt::Acl> list;  // what stands on it now; null where nobody needs it
};

// The list of a folder. Most folders have the list of their parent, so deep trees then need one list in
// memory.
std::shared_ptr<const nt::Acl> ShareList(nt::Acl& list, const std::shared_ptr<const nt::Acl>& above);

// The state that all threads share.
class TreeChange : public TreeVisitor {
  public:
    TreeChange(TreeListMode writing, TreeObserver& listener, TreeCounts& totals)
        : mode(writing), observer(listener), counts(totals) {}

    // Walks the folder. The result is that of HeldObject::SetListsBelow.
    DWORD Run(const ObjectHandle& top);

  protected:
    // Called at the start of the walk; fills the notes on its folder. An error ends the walk.
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

// The work of one thread.
class TreeChangeThread : public VisitingThread {
  public:
    explicit TreeChangeThread(TreeChange& shared)
        : store(shared.store), mode(shared.mode), change(shared), turns(shared.folderTurns) {}
    ~TreeChangeThread() override;

  protected:
    enum class Outcome { kChanged, kUnchanged };

    // Changes one object that can have a descriptor. `parent` are the notes on its folder. A failure leaves
    // the object as it was.
    virtual DWORD Change(const ObjectHandle& object, const ChangedFolder& parent, Outcome& outcome) = 0;
    // Called before Change: 0 when the object may be changed, else an error code.
    virtual DWORD Allow(const VisitedObject& /*visited*/) { return ERROR_SUCCESS; }
    // Called before the walk enters a folder; `error` is the result of the folder's own change.
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
