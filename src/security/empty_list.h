// The list that everything below a folder gets when it is to keep only what it inherits.
#pragma once

#include "platform/api/security.h"
#include "platform/resources.h"
#include "security/outcome.h"

namespace permora {

// Makes a list without entries, for HeldObject::SetListsBelow. Step::kTakeBuffer or Step::kInitializeList
// when it cannot; `list` is then untouched.
Outcome MakeEmptyList(UniqueLocal<ACL>& list);

}  // namespace permora
