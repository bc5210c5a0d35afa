// Moves items to another folder of their volume.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "platform/linux/shell/clash_question.h"
#include "platform/linux/shell/operation_walk.h"
#include "platform/linux/shell/target_folder.h"
#include "platform/linux/shell/tree_copy.h"

namespace permora::host {

// By renaming: what is moved stays the object that it was, with its descriptor. Only folders that meet one of
// their name are gone through. What the kernel does not rename there (from one project to another, a folder
// of an overlay's lower layer) is copied and removed instead. Questions, failures and progress go through
// `talk`; what is passed over stays where it was.
class TreeMove : public WalkHandler {
  public:
    // `target` must outlive this.
    TreeMove(OperationTalk& user, TargetFolder& target) : talk(user), top(target) {}

    void Move(const WalkedItem& item);

    void File(const WalkedItem& item) override;
    bool Enter(const WalkedItem& item) override;
    void Leave(const WalkedItem& item) override;

  private:
    struct EnteredTarget {
        std::unique_ptr<TargetFolder> folder;
        std::size_t passedOverBefore;
    };

    TargetFolder& Current() { return entered.empty() ? top : *entered.back().folder; }

    PutOutcome MoveWithRetries(const WalkedItem& item);
    PutOutcome MoveOnce(const WalkedItem& item, DWORD& error);
    PutOutcome Settle(const WalkedItem& item, Clash clash, DWORD& error);
    PutOutcome CopyInstead(const WalkedItem& item, NewFilePlace place);

    OperationTalk& talk;
    TargetFolder& top;
    std::vector<EnteredTarget> entered;
};

}  // namespace permora::host
