#include "platform/own_directory.h"

namespace permora {

bool TakeOwnDirectory() {
    return false;
}

}  // namespace permora
