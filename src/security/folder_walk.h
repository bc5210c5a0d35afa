// Changing everything below several folders.
#pragma once

#include <functional>
#include <span>

#include "platform/held_object.h"
#include "security/change_results.h"

namespace permora {

// A change of whole trees. Each function returns 0 or a system error code.
struct TreeWork {
    // All that is below a folder, as HeldObject::SetListsBelow reports it.
    std::function<DWORD(const HeldObject& folder, TreeObserver& observer)> below;
    // One object below an item, when it is tried again: what `below` would have done with it.
    std::function<DWORD(const HeldObject& object)> object;
};

// Works on what is below the items among `places`, each in its turn (HeldObject::TakeTurn), and on single
// objects below them; items themselves are not its own. `begin` gets the bare name of each object before it
// is changed; on false, all walks end. Items that are no folders are skipped, and so are objects that can
// have no list or owner.
//
// Results are those that were not changed, and single objects that were: an item that cannot be found, or
// whose name leads to another object now (Step::kFindFolderAgain), or whose contents could not be reached
// (Step::kChangeContents), the one at which the recorder has stopped the change (Step::kRecord), objects
// below that failed, and those left alone: volumes mounted below, and files with further names. An item that
// cannot be found is skipped (ChangeResults::Skip) if `results` say already that it has failed itself.
void WalkFolders(std::span<const RememberedObject> items, std::span<const ObjectPlace> places,
                 const ChangeRecorder& recorder, const std::function<bool(const char* name)>& begin,
                 const TreeWork& work, ChangeResults& results);

}  // namespace permora
