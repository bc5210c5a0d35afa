// What pages ask the volumes of their items, which may never answer (security/volume_asking.h).
#pragma once

#include <string>
#include <vector>

#include "framework/window.h"
#include "security/object_security.h"

namespace permora {

// The volume of an item of the place.
std::string VolumeOfItem(const RememberedPlace& place, const RememberedObject& item);

// The place in parts of one volume each, since each is waited for by itself.
std::vector<RememberedPlace> ByVolume(const RememberedPlace& place);

// ReadOnlyReason of the items, for which `window` waits. Empty as well when a volume does not answer.
std::string AskReadOnlyReason(CWnd& window, const RememberedPlace& place, SECURITY_INFORMATION information);

}  // namespace permora
