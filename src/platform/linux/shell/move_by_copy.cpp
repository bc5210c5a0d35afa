#include "platform/linux/shell/move_by_copy.h"

#include <unistd.h>

#include <cerrno>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/shell/tree_removal.h"

namespace permora::host {
namespace {

// Writes all changes on a folder's volume to the disk. On an error, some may be lost.
DWORD SyncVolume(const ObjectHandle& folder) {
    UniqueFd opened;
    const DWORD error = folder.OpenForListing(opened);
    if (error != ERROR_SUCCESS) return error;
    return syncfs(opened.Get()) == 0 ? ERROR_SUCCESS : ErrorFromErrno(errno);
}

}  // namespace

void MoveByCopying(const WalkedItem& item, const std::string& newName, TargetFolder& target, TreeCopy& copy,
                   NewFilePlace place, OperationTalk& talk) {
    CopiedFiles copied;
    const std::size_t passedOverBefore = talk.PassedOver();
    copy.Copy(item, newName, place, &copied);
    // The move is complete, or everything stays.
    if (talk.IsCancelled() || talk.PassedOver() != passedOverBefore) return;
    // The kernel reports lost writes only once, so a second call would succeed.
    if (const DWORD error = SyncVolume(target.Handle()); error != ERROR_SUCCESS) {
        talk.FailsForGood(DescribeObject(target.ShownPath(), target.Handle()), error);
        return;
    }
    const ULONGLONG itemsDone = talk.progress.itemsDone;
    TreeRemoval removal(talk, copied);
    WalkItem(item, talk, removal);
    talk.progress.itemsDone = itemsDone;
}

}  // namespace permora::host
