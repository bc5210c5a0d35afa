// Waits that are usually over in milliseconds.
#pragma once

#include <functional>

namespace permora::qt {

// As ServeBusyWindowsUntil, but keys and clicks are obeyed afterwards, in their order: what the user types
// after a paste follows what is pasted.
void ServeBeforeInputUntil(const std::function<bool()>& hasEnded);
// Drops the input that has come meanwhile, when it was meant for something that will not be.
void DropInput();

}  // namespace permora::qt
