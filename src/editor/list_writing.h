// Writing lists to the items of a place, with what the user is asked and shown then.
#pragma once

#include <optional>

#include "framework/window.h"
#include "security/object_security.h"

namespace permora {

// As WriteListToItems, on a thread of its own; then shows what failed. When another program has changed the
// list of the first item since it was shown, asks whether that is to be overwritten. On false, it is not:
// nothing was written, and the page shows the item anew.
[[nodiscard]] bool WriteListAsking(CWnd& page, const RememberedPlace& place,
                                   std::optional<DaclInheritance> inheritance, const ListsByKind& lists,
                                   PSECURITY_DESCRIPTOR shown);

}  // namespace permora
