// What is asked when something stands where an item shall be put.
#pragma once

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

}  // namespace permora::host
