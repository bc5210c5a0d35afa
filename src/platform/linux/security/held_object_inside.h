// What is behind a HeldObject.
#pragma once

#include "platform/held_object.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/security/object_turn.h"

namespace permora {

struct HeldObject::Inside {
    host::ResolvedObject target;
    host::ObjectTurn turn;
};

}  // namespace permora
