// The list that everything below a folder gets when it is to keep only what it inherits.
#pragma once

#include "platform/api/security.h"
#include "platform/resources.h"

namespace permora {

// A list without entries, for HeldObject::SetListsBelow. Null after an error box; ends the process, after its
// box, when there is no memory for it.
UniqueLocal<ACL> MakeEmptyList(HWND owner);

}  // namespace permora
