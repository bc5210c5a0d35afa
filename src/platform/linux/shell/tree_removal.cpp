#include "platform/linux/shell/tree_removal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/shell/clash_question.h"

namespace permora::host {

// What has the name just now: it may have been replaced while a question stood, and what was changed, or
// came, while the rest of a move was copied is nowhere else.
bool TreeRemoval::MayRemove(const WalkedItem& item) const {
    struct stat status {};
    if (fstatat(item.folder, item.hostName.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return true;  // it vanished, or its removal reports why not
    if (!AreOneObject(status, item.object.Status())) return false;
    return copied == nullptr || copied->Hold(status);
}

void TreeRemoval::File(const WalkedItem& item) {
    if (copied == nullptr && !MayTouch(item.Described(), item.object, talk)) return;
    if (!MayRemove(item)) {
        talk.FailsForGood(item.Described(), ERROR_FILE_INVALID);
        return;
    }
    RemoveName(item, 0, talk);
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
    // What was passed over in it has been reported.
    if (isWhole) RemoveName(item, AT_REMOVEDIR, talk);
}

}  // namespace permora::host
