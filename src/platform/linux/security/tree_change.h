// What every change of all objects below a folder shares: where it may begin, telling the observer, and the
// counts.
#pragma once

#include <cstddef>
#include <string>

#include "platform/folder_trail.h"
#include "platform/linux/files/object_handle.h"
#include "platform/linux/files/tree_walk.h"
#include "platform/linux/security/descriptor_store.h"
#include "platform/linux/security/object_turn.h"
#include "platform/tree_security.h"

namespace permora::host {

class TreeChange : public TreeVisitor {
  public:
    TreeChange(TreeListMode writing, TreeObserver& listener, TreeCounts& totals)
        : mode(writing), observer(listener), counts(totals) {}

    // Walks the folder. The result is that of HeldObject::SetListsBelow.
    DWORD Run(const ObjectHandle& top);

  protected:
    enum class Outcome { kChanged, kUnchanged };

    // The walk begins; an error ends it.
    virtual DWORD Begin(const ObjectHandle& /*top*/) { return ERROR_SUCCESS; }
    // One object that can have a descriptor. A failure leaves it as it was.
    virtual DWORD Change(const ObjectHandle& object, std::size_t depth, Outcome& outcome) = 0;
    // Called before Change: 0 when the object may be changed, else an error code. `hostName` is its name.
    virtual DWORD Allow(const ObjectHandle& /*object*/, const char* /*hostName*/) { return ERROR_SUCCESS; }
    // A folder, whose contents have the depth `inside`, comes next; `error` is that of its own change.
    virtual void Enter(const ObjectHandle& /*folder*/, DWORD /*error*/, std::size_t /*inside*/) {}

    DescriptorStore store;
    const TreeListMode mode;

  private:
    WalkDecision Visit(const ObjectHandle& object, const char* hostName, std::size_t depth) override;
    void Fail(DWORD error, const char* hostName, std::size_t depth) override;
    DWORD ChangeAndCount(const ObjectHandle& object, const char* hostName, std::size_t depth);
    void PassOver(DWORD error, const std::string& name, std::size_t depth);

    TreeObserver& observer;
    TreeCounts& counts;
    WalkTurns turns;
    DWORD result = ERROR_SUCCESS;
    FolderTrail names;
};

}  // namespace permora::host
