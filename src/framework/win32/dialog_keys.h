// The keyboard of dialogs, before the system's dialog manager sees it.
#pragma once

#include "platform/api/base.h"

namespace permora::win32 {

class DialogWindow;

// True: `message` was a key that `dialog` or one of its controls has used.
bool UseDialogKey(DialogWindow& dialog, const MSG& message);

}  // namespace permora::win32
