// Carries a folder's changed access list down to all objects that inherit from it.
#pragma once

#include "platform/held_object.h"
#include "platform/nt/acl.h"
#include "platform/tree_security.h"
#include "platform/windows/changed_top.h"

namespace permora {

// Gives every object below `folder` the inherited entries that `list`, the folder's own list, now hands down;
// explicit entries stay. Left alone with everything below them: objects whose list is protected and objects
// without a list, which have nothing to hand on. A failure leaves that object and what is below it as they
// were, and the walk goes on; `below` has the failures. Another result than 0 is the failure of a record,
// which ends the walk.
DWORD PropagateList(HANDLE folder, const nt::Acl& list, RecordedTop& top, FailuresBelow& below);

// Counts what PropagateList would do, by the same walk, and writes nothing. The result is that of
// HeldObject::SetListsBelow.
DWORD CountPropagation(HANDLE folder, const nt::Acl& list, TreeObserver& observer, TreeCounts& counts);

}  // namespace permora
