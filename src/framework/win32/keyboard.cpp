#include "framework/keyboard.h"

#include "platform/api/base.h"

namespace permora {

bool IsControlKeyDown() {
    return GetKeyState(VK_CONTROL) < 0;
}

}  // namespace permora
