// Removes items with all that is in them, for good.
#pragma once

#include <cstddef>
#include <vector>

#include "platform/linux/shell/operation_walk.h"
#include "platform/linux/shell/tree_copy.h"

namespace permora::host {

// Questions, failures and progress go through `talk`. What cannot be removed is passed over, and the folders
// above it stay. What is mounted below is neither entered nor removed.
class TreeRemoval : public WalkHandler {
  public:
    // Everything, with a question for what is read-only or the system's.
    explicit TreeRemoval(OperationTalk& user) : talk(user) {}
    // Only what `moved` holds, which must outlive this, and the folders that become empty: the rest of a move
    // to another volume.
    TreeRemoval(OperationTalk& user, const CopiedFiles& moved) : talk(user), copied(&moved) {}

    void File(const WalkedItem& item) override;
    bool Enter(const WalkedItem& item) override;
    void Leave(const WalkedItem& item) override;

  private:
    bool MayRemove(const WalkedItem& item) const;

    OperationTalk& talk;
    const CopiedFiles* copied = nullptr;
    std::vector<std::size_t> passedOverBefore;  // for each folder that is entered
};

}  // namespace permora::host
