// Writes lists to the items of a place, with the boxes that belong to it.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "framework/window.h"
#include "security/object_security.h"

namespace permora {

// Calls WriteListToItems on a thread of its own. When another program has changed the list of the first item
// since it was shown, the user is asked in `window` whether to overwrite it. On false, the user refused and
// nothing was written. Once the first item is written, `shown` has its new list, also when the change was
// stopped behind it.
[[nodiscard]] bool WriteListAsking(CWnd& window, std::span<const RememberedObject> items,
                                   std::span<const ObjectPlace> places,
                                   std::optional<DaclInheritance> inheritance, const ListsByKind& lists,
                                   ReadParts& shown, ChangeRecorder& recorder, ChangeResults& results);

// Asks whether to write a list in the place of one that another program has changed since it was shown.
bool MayOverwriteList(HWND owner, const std::string& item);

}  // namespace permora
