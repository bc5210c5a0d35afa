// Who shares new folders where the system has no program for it.
//
// ShellExecuteA starts the system's wizard for new shares under its name "shrpubw". On Linux there is none: a
// call for an owner window runs the one that is set here, and answers as for a missing program while none is.
// On Windows the system has its own, and this header has nothing behind it.
#pragma once

#include <functional>

namespace permora {

// Shows the wizard and returns when it is closed.
using ShareWizard = std::function<void()>;

// Both on the user-interface thread. An empty function: none.
void SetShareWizard(ShareWizard wizard);

}  // namespace permora
