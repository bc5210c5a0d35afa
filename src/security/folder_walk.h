// Changing everything below several folders.
#pragma once

#include <functional>
#include <span>

#include "platform/held_object.h"
#include "security/outcome.h"

namespace permora {

// Calls `change` for each item that is a folder, in its turn (HeldObject::TakeTurn), with the observer for
// the walk. `begin` gets the bare name of each object before it is changed; on false, all walks end. Items
// that are no folders or cannot be found are skipped, and so are objects below that cannot be changed.
//
// The outcomes are the folders that were not walked, since their names lead to other objects now or their
// turn did not come, and the one at which the recorder has stopped the change (Step::kRecord), then the
// objects that the walks passed over: volumes mounted below, and files with further names.
Outcomes WalkFolders(std::span<const RememberedObject> items, const ChangeRecorder& recorder,
                     const std::function<bool(const char* name)>& begin,
                     const std::function<DWORD(const HeldObject& folder, TreeObserver& observer)>& change);

}  // namespace permora
