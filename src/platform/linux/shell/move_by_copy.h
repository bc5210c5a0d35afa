// Moving what cannot be renamed: to another volume, or where the kernel refuses it within one.
#pragma once

#include <string>

#include "platform/linux/shell/operation_walk.h"
#include "platform/linux/shell/target_folder.h"
#include "platform/linux/shell/tree_copy.h"

namespace permora::host {

// Copies an item into `target`, which is where `copy` puts things, under the name `newName`, and then removes
// it. Only when nothing of it was passed over and the target's volume has written all of it; and of it only
// what was copied and has not changed since. Questions, failures and progress go through `talk`, every object
// counts as an item once. `place` is about a file that has the name already.
void MoveByCopying(const WalkedItem& item, const std::string& newName, TargetFolder& target, TreeCopy& copy,
                   NewFilePlace place, OperationTalk& talk);

}  // namespace permora::host
