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
#include "platform/windows/change_batch.h"
#include "platform/windows/folder_listing.h"

namespace permora {

class TreeChange : public DescriptorChanger {
  public:
    // `parts` are those that the change writes. All outlive this.
    TreeChange(SECURITY_INFORMATION parts, TreeListMode writing, RecordedTop& records, TreeObserver& listener,
               TreeCounts& totals);

    // `top` is the held folder. The result and the calls of the observer are those of
    // HeldObject::SetListsBelow.
    DWORD Run(HANDLE top);

  private:
    // The walked folder, before anything else; it is open for READ_CONTROL. Fills in what the objects in it
    // inherit from.
    virtual DWORD Begin(HANDLE top, WalkedFolder& folder) = 0;
    void PassOver(const std::string& where, DWORD error) override;

    // The result is that of Run.
    DWORD Walk();
    // 0, or the failure of a record, which ends the walk.
    DWORD Visit(const FoundEntry& entry);
    // Opens an entry of the current folder and computes what it is to get. An error is about this object.
    DWORD Compute(const FoundEntry& entry, WaitingObject& found, WayOn& wayOn);
    DWORD Open(const std::wstring& name, UniqueHandle& object, bool& mayWrite) const;
    // Puts a folder that Compute has found before the rest of the current one. As Visit.
    DWORD Enter(const std::wstring& name, WaitingObject found, DWORD error);
    DWORD OpenFolder(const std::wstring& name, HANDLE object, UniqueHandle& folder) const;

    struct Level {
        std::unique_ptr<FolderListing> listing;
        std::shared_ptr<WalkedFolder> folder;
        std::size_t pathLength;  // of the folder's path below the walked one, with a separator
    };

    const TreeListMode mode;
    const DWORD writingAccess;
    TreeObserver& observer;
    TreeCounts& counts;
    ChangeBatch batch;
    PassedOverObjects passedOver;
    std::vector<Level> levels;  // from the walked folder down to the current one
    std::string path;           // of the current folder, for reports
};

// What is in the folder inherits from the list that stands on it. `folder` is open for READ_CONTROL.
DWORD ReadFolderList(HANDLE folder, WalkedFolder& read);

}  // namespace permora
