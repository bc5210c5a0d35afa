#include "platform/linux/shell/tree_removal.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/base/host_errors.h"
#include "platform/linux/shell/clash_question.h"

namespace permora::host {

// `flags` are those of unlinkat(2).
void TreeRemoval::Remove(const WalkedItem& item, int flags) {
    while (unlinkat(item.folder, item.hostName.c_str(), flags) != 0 && errno != ENOENT) {
        const DWORD error = ErrorFromErrno(errno);
        if (talk.Fails(item.Described(), error) == OperationTalk::AfterFailure::kPassOver) return;
    }
}

void TreeRemoval::File(const WalkedItem& item) {
    const bool isKept = copied != nullptr && !copied->Hold(item.object.Status());
    if (isKept) {
        // It was changed, or came, while the others were copied: nothing of it is anywhere else.
        talk.Fails(item.Described(), ERROR_FILE_INVALID);
        return;
    }
    if (copied == nullptr && !MayTouch(item.Described(), item.object, talk)) return;
    Remove(item, 0);
    if (copied == nullptr && S_ISREG(item.object.Status().st_mode))
        talk.progress.bytesDone += static_cast<ULONGLONG>(item.object.Status().st_size);
}

bool TreeRemoval::Enter(const WalkedItem& item) {
    if (copied == nullptr && !MayTouch(item.Described(), item.object, talk)) return false;
    passedOverBefore.push_back(talk.PassedOver());
    return true;
}

void TreeRemoval::Leave(const WalkedItem& item) {
    const bool isWhole = passedOverBefore.back() == talk.PassedOver();
    passedOverBefore.pop_back();
    // What was passed over in it was told already.
    if (isWhole) Remove(item, AT_REMOVEDIR);
}

}  // namespace permora::host
