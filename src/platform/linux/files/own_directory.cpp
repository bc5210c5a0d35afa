#include "platform/own_directory.h"

#include <sched.h>

namespace permora {

bool TakeOwnDirectory() {
    return unshare(CLONE_FS) == 0;
}

}  // namespace permora
