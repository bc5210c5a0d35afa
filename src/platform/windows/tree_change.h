// One change to everything below a folder, by handles: each object is opened in the folder that is held,
// never by a path and never through a reparse point, so that no name that is swapped meanwhile leads
// elsewhere.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/nt/security_descriptor.h"
#include "platform/passed_over.h"
#include "platform/tree_security.h"
#include "platform/windows/folder_listing.h"

namespace permora {

// Owner, group and access list of an object that is open for READ_CONTROL. ERROR_INVALID_SECURITY_DESCR for a
// damaged descriptor.
DWORD ReadDescriptor(HANDLE object, nt::SecurityDescriptor& descriptor);

class TreeChange {
  public:
    TreeChange(TreeObserver& listener, TreeCounts& totals) : observer(listener), counts(totals) {}
    virtual ~TreeChange() = default;

    // `top` is the held folder. The result and the calls of the observer are those of
    // HeldObject::SetListsBelow.
    DWORD Run(HANDLE top);

  protected:
    enum class Outcome { kUnchanged, kChanged };

  private:
    // The walked folder, before anything else; it is open for READ_CONTROL.
    virtual DWORD Begin(HANDLE top) = 0;
    // The access that the change of an object takes.
    virtual DWORD Access() const = 0;
    // `object` is open for Access(). `depth`: the number of folders between the walked one and the object.
    virtual DWORD Change(HANDLE object, std::size_t depth, Outcome& outcome) = 0;
    // The walk goes into the folder that was changed last, with this error, or could not be opened for it.
    // What is in it has the depth `inside`.
    virtual void Enter(HANDLE folder, DWORD error, std::size_t inside) = 0;

    // The result is that of Run.
    DWORD Walk();
    void Visit(const FoundEntry& entry);
    void EnterFolder(const FoundEntry& entry, HANDLE object, DWORD error);
    void PassOver(const std::string& name, DWORD error);

    struct Level {
        std::unique_ptr<FolderListing> listing;
        std::size_t pathLength;  // of the folder's path below the walked one, with a separator
    };

    TreeObserver& observer;
    TreeCounts& counts;
    PassedOverObjects passedOver;
    std::vector<Level> levels;  // from the walked folder down to the current one
    std::string path;           // of the current folder, for reports
};

}  // namespace permora
