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
#include "platform/linux/shell/clash_question.h"

namespace permora::host {
void TreeMove::Move(const WalkedItem& item) {
    talk.progress.toFolder = top.ShownPath();
    WalkItem(item, talk, *this);
    entered.clear();
}

TreeMove::Outcome TreeMove::MoveWithRetries(const WalkedItem& item) {
    for (bool isNameChecked = false;;) {
        DWORD error = ERROR_SUCCESS;
        const Outcome outcome = MoveOnce(item, error);
        if (outcome != Outcome::kFailed) return outcome;
        // Someone put it there meanwhile.
        if (error == ERROR_ALREADY_EXISTS && !std::exchange(isNameChecked, true)) {
            Current().Forget();
            continue;
        }
        if (talk.Fails(item.Described(), error) == OperationTalk::AfterFailure::kPassOver)
            return Outcome::kPassedOver;
    }
}

TreeMove::Outcome TreeMove::MoveOnce(const WalkedItem& item, DWORD& error) {
    TargetFolder& target = Current();
    std::optional<Clash> clash;
    error = target.FindClash(item.hostName, clash);
    if (error != ERROR_SUCCESS) return Outcome::kFailed;
    if (clash) {
        const ClashAnswer answer = AskAboutClash(item, target, *clash, talk, error);
        if (answer != ClashAnswer::kGoOn)
            return answer == ClashAnswer::kFail ? Outcome::kFailed : Outcome::kPassedOver;
        return Settle(item, std::move(*clash), error);
    }
    const RenamedKind kind = item.object.IsFolder() ? RenamedKind::kFolder : RenamedKind::kOther;
    const int problem = RenameToFreeName(item.folder, item.hostName.c_str(), target.Descriptor(),
                                         item.hostName.c_str(), kind);
    if (problem == 0) {
        target.Took(item.hostName, item.object);
        return Outcome::kDone;
    }
    error = ErrorFromErrno(problem);
    return Outcome::kFailed;
}

TreeMove::Outcome TreeMove::Settle(const WalkedItem& item, Clash clash, DWORD& error) {
    TargetFolder& target = Current();
    if (item.object.IsFolder()) {
        entered.push_back({target.UseSubfolder(std::move(clash)), talk.PassedOver()});
        return Outcome::kMerges;
    }
    // Renaming a file to another name of its own does nothing.
    const bool isOwnName = item.object.IsSameObject(clash.object);
    const bool isDone = isOwnName ? unlinkat(item.folder, item.hostName.c_str(), 0) == 0
                                  : renameat(item.folder, item.hostName.c_str(), target.Descriptor(),
                                             clash.hostName.c_str()) == 0;
    if (isDone) {
        target.Took(clash.hostName, item.object);
        return Outcome::kDone;
    }
    error = ErrorFromErrno(errno);
    return Outcome::kFailed;
}

void TreeMove::File(const WalkedItem& item) {
    MoveWithRetries(item);
}

bool TreeMove::Enter(const WalkedItem& item) {
    if (MoveWithRetries(item) != Outcome::kMerges) return false;
    talk.progress.toFolder = Current().ShownPath();
    return true;
}

void TreeMove::Leave(const WalkedItem& item) {
    const EnteredTarget left = std::move(entered.back());
    entered.pop_back();
    talk.progress.toFolder = Current().ShownPath();
    // What was passed over in it was told already.
    if (left.passedOverBefore != talk.PassedOver()) return;
    while (unlinkat(item.folder, item.hostName.c_str(), AT_REMOVEDIR) != 0 && errno != ENOENT) {
        const DWORD error = ErrorFromErrno(errno);
        if (talk.Fails(item.Described(), error) == OperationTalk::AfterFailure::kPassOver) return;
    }
}

}  // namespace permora::host
