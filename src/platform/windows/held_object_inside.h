// The inside of a HeldObject.
#pragma once

#include <cstdint>

#include "platform/held_object.h"

namespace permora {

struct HeldObject::Inside {
    // For its attributes only. Whatever else is done opens the object again by this handle, never by a name.
    UniqueHandle object;
    UniqueHandle turns;  // the file with a lock for each object; null: no turn
};

// Opens the object of `object` again.
DWORD OpenAgain(HANDLE object, DWORD access, UniqueHandle& opened);

// Waits for the turn on what `number` stands for, which lasts as long as `turns` is open: ERROR_BUSY after
// ten seconds. Where there is no place for the file, or no locks, there are no turns: the result is 0, and
// `turns` stays as it was.
DWORD TakeTurnAt(ULONGLONG number, UniqueHandle& turns);
// The turn on an object. Where objects have no identity there are no turns either.
DWORD TakeTurnOn(HANDLE object, UniqueHandle& turns);

}  // namespace permora
