// Gives whole folder trees the lists that their topmost folders hand down.
#pragma once

#include <span>

#include "platform/tree_security.h"

namespace permora {

enum class TreeApplyResult {
    kDone,         // every tree was walked to its end
    kStopped,      // the observer ended it; the counts tell what was done
    kCannotStart,  // an error box was shown and nothing was touched
};

// Resets every object below each of `folders` (paths, or names relative to the current directory): it loses
// its explicit entries and any protection and keeps only what it inherits. The folders themselves keep their
// lists. A name that is no folder, a link to one, or a folder that cannot be entered is told to `observer` as
// passed over, under the name given, and the next one is walked. Links are never followed. `counts` are added
// to. Ends the process, after its box, when there is no memory for the empty list.
TreeApplyResult ApplyToTrees(HWND owner, std::span<const char* const> folders, TreeListMode mode,
                             TreeObserver& observer, TreeCounts& counts);

}  // namespace permora
