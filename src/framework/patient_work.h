// PatientWork: questions of a window that it cannot go on without, to a volume that may never answer.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <string>

#include "framework/repeated_work.h"
#include "platform/volume_question.h"

namespace permora {

// The window lives while it waits: it is painted, and takes input. Its commands must therefore begin with
// GiveUp, so that no two of them are at work at a time. User-interface thread only.
class PatientWork {
  public:
    // What work and window tell each other.
    struct Running {
        // Nobody will see what is found, and nothing may be changed any more.
        std::atomic<bool> isGivenUp = false;
        // Of many things: the work counts them while it goes on.
        std::atomic<std::size_t> done = 0;
    };
    // Runs on another thread, perhaps for ever, so it must own all that it uses.
    using Work = std::function<void(Running& running)>;
    // Shows how far the work is; called often while the window waits.
    using Progress = std::function<void(std::size_t done)>;

    // Runs `work` and returns when it has ended: 0. Returns sooner with ERROR_TIMEOUT when `volume`
    // (VolumeOfPath) does not answer: for so long that nobody would wait any more, without progress, or still
    // not since an earlier question was given up. Returns ERROR_CANCELLED after GiveUp, when the program is
    // to end, and when a modal window opens meanwhile, after that is closed. `work` has a current directory
    // of its own. Where no thread can have that, it runs on this one.
    //
    // Over a modal window, input is dropped meanwhile, since that window does not give anything up.
    DWORD Do(const std::string& volume, Work work, const Progress& progress = {});

    // The same for what can be left out: false, without an answer within a moment. Nothing is served
    // meanwhile.
    bool DoAtOnce(const std::string& volume, Work work);

    // How long Do waits without progress. As long as a mount over a slow line may need, unless it is
    // shortened.
    std::chrono::milliseconds patience{30'000};
    // False: input is always dropped while Do waits.
    bool takesInput = true;

    bool IsWaiting() const { return current != nullptr; }
    // Whether the user can give up what is waited for.
    bool CanBeStopped() const;
    // Lets Do return with ERROR_CANCELLED. `next`, if any, runs when its callers have returned as well, and
    // have closed what modal windows they show. False, and `next` never runs, when nothing waits.
    bool GiveUp(std::function<void()> next = {});

  private:
    struct Current;

    void RunLater(std::function<void()> next);

    Current* current = nullptr;  // null: nothing waits
    RepeatedWork later;
};

}  // namespace permora
