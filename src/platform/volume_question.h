// VolumeQuestion: a call to a volume that may never return, since the volume's server is gone.
//
// Whoever makes such a call does it on a thread of its own and stops waiting at some time. The thread then
// stays in the system, and nobody can end it. So that such threads do not pile up, a volume that owes an
// answer is asked nothing more until it has given it.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/api/base.h"

namespace permora {

// The volume of a full path, as a name for the questions below: what is mounted there, by the text of the
// path alone. What a path reaches by a link is not known. On the system's own volume the name is therefore
// that of the object, so that a link to a volume that hangs makes nothing else there unreachable.
std::string VolumeOfPath(const std::string& path);

// One thread at a time uses an object. Destroying it, or asking anew, gives up what was asked before.
class VolumeQuestion {
  public:
    VolumeQuestion() = default;
    ~VolumeQuestion() { GiveUp(); }
    VolumeQuestion(const VolumeQuestion&) = delete;
    VolumeQuestion& operator=(const VolumeQuestion&) = delete;

    // Runs `ask` on a new thread, and then `tell`, if any, when IsAnswered is true. `ask` may run for ever,
    // also during the end of the process, so both must own all that they use. Returns 0; ERROR_TIMEOUT when
    // `volume` (empty: none that could hang) still owes the answer to a question that was given up; otherwise
    // why there is no thread. Nothing runs after a failure.
    DWORD Ask(const std::string& volume, std::function<void()> ask, std::function<void()> tell = {});

    // Whether `ask` has returned, or returns within `patience`. True when nothing was asked.
    bool IsAnswered(std::chrono::milliseconds patience);

    // From now on, nobody waits for the answer.
    void GiveUp();

  private:
    struct Asked;

    std::shared_ptr<Asked> asked;  // null: nothing, or given up
};

}  // namespace permora
