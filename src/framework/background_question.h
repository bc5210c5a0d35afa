// BackgroundQuestion: a question of a window that is answered in the background, and may be forgotten.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/volume_question.h"

namespace permora {

// Unlike a WorkerThread it never waits for its thread, which may go on after the window and then answers
// nobody. User-interface thread only.
class BackgroundQuestion {
  public:
    // Forgets an earlier question. Runs `ask` on a new thread, then `use` on the user-interface thread,
    // unless the question has been forgotten by then. `ask` may outlive this object: it must own all that it
    // uses. Returns 0, or a system error code as VolumeQuestion::Ask does for `volume`; nothing runs then.
    DWORD Ask(std::function<void()> ask, std::function<void()> use, const std::string& volume = {});
    void Forget() {
        pending.reset();
        question.GiveUp();
    }
    bool IsAsking() const { return pending != nullptr; }

  private:
    std::shared_ptr<std::function<void()>> pending;  // what to do with the answer; null: nobody asks
    VolumeQuestion question;
};

}  // namespace permora
