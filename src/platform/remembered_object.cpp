#include "platform/remembered_object.h"

#include <utility>

#include "platform/api/errors.h"
#include "platform/held_object.h"

namespace permora {

DWORD RememberedObject::FindByName(HeldObject& object) const {
    return start ? start->HoldObject(path, object) : HeldObject::Hold(path, object);
}

DWORD RememberedObject::Find(HeldObject& object) const {
    if (Error() != ERROR_SUCCESS) return Error();
    HeldObject found;
    DWORD error = FindByName(found);
    if (error == ERROR_SUCCESS) error = Verify(found);
    if (error == ERROR_SUCCESS) object = std::move(found);
    return error;
}

}  // namespace permora
