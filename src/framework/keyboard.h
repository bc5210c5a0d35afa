// The keyboard's state, for handlers of keys.
#pragma once

namespace permora {

// Whether the Ctrl key was down at the latest event of the keyboard or mouse. User-interface thread.
bool IsControlKeyDown();

}  // namespace permora
