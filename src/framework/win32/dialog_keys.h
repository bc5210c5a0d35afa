// The keyboard of dialogs, before the system's dialog manager sees it.
#pragma once

#include "platform/api/base.h"

namespace permora::win32 {

// True: `message` was a key that a dialog of the framework or one of its controls has used.
bool UseDialogKey(const MSG& message);

}  // namespace permora::win32
