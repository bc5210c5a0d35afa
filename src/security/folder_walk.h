// Changing everything below several folders.
#pragma once

#include <functional>
#include <span>

#include "platform/held_object.h"
#include "security/outcome.h"

namespace permora {

// Calls `change` for each item that is a folder, in its turn (HeldObject::TakeTurn); the observer that it
// gets is for the walk. `begin` is called with the bare name of each object that a walk comes to, and ends
// all walks with false. Items that are no folders or cannot be found are passed over, and so is what cannot
// be changed below one.
//
// The outcomes are folders that were not walked, since another object has their name by now or their turn did
// not come, and at the end what a walk left alone: volumes that are mounted below, files with further names.
Outcomes WalkFolders(std::span<const RememberedObject> items,
                     const std::function<bool(const char* name)>& begin,
                     const std::function<DWORD(const HeldObject& folder, TreeObserver& observer)>& change);

}  // namespace permora
