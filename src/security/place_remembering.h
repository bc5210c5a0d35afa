// Remembering the items of a place for a window.
#pragma once

#include "framework/window.h"
#include "platform/place.h"
#include "security/object_security.h"

namespace permora {

// RememberPlace as long work of `window` (DoLongWork), since ten thousand items take a second. Without a
// window on the caller's thread. User-interface thread.
RememberedPlace RememberPlaceFor(CWnd* window, const Place& place);

}  // namespace permora
