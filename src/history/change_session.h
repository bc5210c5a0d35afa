// The changes that a program makes for its user, and their place in the history.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "history/history.h"
#include "history/history_limits.h"

namespace permora {

// One change at a time: Begin, then the work with Recorder(), then End. What the user asks for at once is one
// change, whatever it is about: three items, a tree. The history is opened for each change and closed again.
class ChangeSession {
  public:
    // `historyPath` as History::Open takes it.
    ChangeSession(std::string historyPath, const HistoryLimits& historyLimits);

    // 0, or why the history cannot be written: a code of History::Open, or what stopped the change before
    // this one. No change has begun then; the next call tries anew.
    DWORD Begin(ChangeKind kind);
    // Of the change that has begun.
    ChangeRecorder& Recorder();
    // Its number in the history; 0 as long as nothing was recorded.
    std::int64_t Number() const { return change ? change->Number() : 0; }
    // Ends the change, and removes from the history what exceeds its limits. Returns why one of these cannot
    // be done; the change that was made stays. What has stopped it is not reported again.
    DWORD End();

    // From now on nothing is recorded.
    void GoOnWithout() { isWithout = true; }

  private:
    DWORD Shorten() const;

    const std::string path;
    const HistoryLimits limits;
    bool isWithout = false;
    DWORD failure = ERROR_SUCCESS;  // of the last change, until it was reported
    std::unique_ptr<History> history;
    std::unique_ptr<Change> change;  // belongs to `history`; null: nothing is recorded
};

}  // namespace permora
