// The turn to change one share among the programs of one user that change shares through this layer.
#pragma once

#include <memory>
#include <string>

#include "platform/api/errors.h"

namespace permora {

// The list of a share is read, changed and written as a whole, as an object's is (HeldObject::TakeTurn).
class ShareTurn {
  public:
    // Waits until no other program of this user is at work on the share `name`, in any spelling; from then
    // on none is, until this ends. ERROR_BUSY after ten seconds. Where no lock can be had there are no turns,
    // and the result is 0. Whoever has a turn may not wait for another one.
    DWORD Take(const std::string& name);

  private:
    std::shared_ptr<void> lock;  // the system's; null: no turn
};

}  // namespace permora
