// Putting items where something may stand already, and the questions about that.
#pragma once

#include <utility>

#include "platform/api/errors.h"
#include "platform/linux/shell/operation_walk.h"
#include "platform/linux/shell/target_folder.h"

namespace permora::host {

// Read-only or the system's: `source` is asked about before it is moved, renamed, deleted or replaced. True
// when it may be. Links have nothing to protect.
bool MayTouch(FileOperationObject source, const ObjectHandle& object, OperationTalk& talk);

enum class ClashAnswer { kGoOn, kPassOver, kFail };

// Whether `item` may take the place of, or as a folder go into, what `clash` found in `target`.
// ClashAnswer::kFail, with `error` set, when a file and a folder meet, or when this operation put there what
// it found.
ClashAnswer AskAboutClash(const WalkedItem& item, const TargetFolder& target, const Clash& clash,
                          OperationTalk& talk, DWORD& error);

// What a try to put an item into a folder came to.
enum class PutOutcome { kDone, kMerges, kPassedOver, kFailed };

// Runs `put`, which sets the error code when it answers PutOutcome::kFailed, until it is settled, the user
// passes the item over, or the operation is cancelled.
template <typename Put>
PutOutcome PutWithRetries(const WalkedItem& item, TargetFolder& target, OperationTalk& talk, const Put& put) {
    for (bool isNameChecked = false;;) {
        DWORD error = ERROR_SUCCESS;
        const PutOutcome outcome = put(error);
        if (outcome != PutOutcome::kFailed || talk.IsCancelled()) return outcome;
        // Someone put something of its name there meanwhile: now it is a matter of replacing.
        if (error == ERROR_ALREADY_EXISTS && !std::exchange(isNameChecked, true)) {
            target.Forget();
            continue;
        }
        if (talk.Fails(item.Described(), error) == OperationTalk::AfterFailure::kPassOver)
            return PutOutcome::kPassedOver;
    }
}

}  // namespace permora::host
