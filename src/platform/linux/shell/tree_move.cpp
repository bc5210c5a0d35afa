#include "platform/linux/shell/tree_move.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/files/new_name.h"
#include "platform/linux/shell/move_by_copy.h"

namespace permora::host {

void TreeMove::Move(const WalkedItem& item) {
    talk.progress.toFolder = top.ShownPath();
    WalkItem(item, talk, *this);
    entered.clear();
}

PutOutcome TreeMove::MoveWithRetries(const WalkedItem& item) {
    return PutWithRetries(item, Current(), talk, [&](DWORD& error) { return MoveOnce(item, error); });
}

PutOutcome TreeMove::MoveOnce(const WalkedItem& item, DWORD& error) {
    TargetFolder& target = Current();
    std::optional<Clash> clash;
    error = target.FindClash(item.hostName, clash);
    if (error != ERROR_SUCCESS) return PutOutcome::kFailed;
    if (clash) {
        const ClashAnswer answer = AskAboutClash(item, target, *clash, talk, error);
        if (answer != ClashAnswer::kGoOn)
            return answer == ClashAnswer::kFail ? PutOutcome::kFailed : PutOutcome::kPassedOver;
        return Settle(item, std::move(*clash), error);
    }
    const RenamedKind kind = item.object.IsFolder() ? RenamedKind::kFolder : RenamedKind::kOther;
    const int problem = RenameToFreeName(item.folder, item.hostName.c_str(), target.Descriptor(),
                                         item.hostName.c_str(), kind);
    if (problem == 0) {
        target.Took(item.hostName, item.object);
        return PutOutcome::kDone;
    }
    if (problem == EXDEV) return CopyInstead(item, NewFilePlace::kFree);
    error = ErrorFromErrno(problem);
    return PutOutcome::kFailed;
}

PutOutcome TreeMove::Settle(const WalkedItem& item, Clash clash, DWORD& error) {
    TargetFolder& target = Current();
    if (item.object.IsFolder()) {
        entered.push_back({target.UseSubfolder(std::move(clash)), talk.PassedOver()});
        return PutOutcome::kMerges;
    }
    // Renaming a file to another name of its own does nothing.
    const bool isOwnName = item.object.IsSameObject(clash.object);
    const bool isDone = isOwnName ? unlinkat(item.folder, item.hostName.c_str(), 0) == 0
                                  : renameat(item.folder, item.hostName.c_str(), target.Descriptor(),
                                             clash.hostName.c_str()) == 0;
    if (isDone) {
        target.Took(clash.hostName, item.object);
        return PutOutcome::kDone;
    }
    if (errno == EXDEV) return CopyInstead(item, NewFilePlace::kReplacing);
    error = ErrorFromErrno(errno);
    return PutOutcome::kFailed;
}

// Until now it counted as one item.
PutOutcome TreeMove::CopyInstead(const WalkedItem& item, NewFilePlace place) {
    const std::size_t passedOverBefore = talk.PassedOver();
    talk.totals.AddTrees({item.ShownPath()});
    TreeCopy copy(talk, Current());
    MoveByCopying(item, item.hostName, Current(), copy, place, talk);
    return talk.PassedOver() == passedOverBefore ? PutOutcome::kDone : PutOutcome::kPassedOver;
}

void TreeMove::File(const WalkedItem& item) {
    MoveWithRetries(item);
}

bool TreeMove::Enter(const WalkedItem& item) {
    if (MoveWithRetries(item) != PutOutcome::kMerges) return false;
    talk.progress.toFolder = Current().ShownPath();
    return true;
}

void TreeMove::Leave(const WalkedItem& item) {
    const EnteredTarget left = std::move(entered.back());
    entered.pop_back();
    talk.progress.toFolder = Current().ShownPath();
    // What was passed over in it has been reported.
    if (left.passedOverBefore == talk.PassedOver()) RemoveName(item, AT_REMOVEDIR, talk);
}

}  // namespace permora::host
