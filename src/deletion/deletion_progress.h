// DeletionProgress: how far a secure deletion has come, for whoever waits for it.
#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/api/base.h"
#include "platform/file_operation_pace.h"

namespace permora {

// What there is to delete. The sums stop at the largest number.
struct DeletionSize {
    ULONGLONG bytes = 0;    // of contents, each of which is overwritten once
    ULONGLONG objects = 0;  // files, folders, and what has no contents
};

struct DeletionState {
    std::optional<int> percent;  // nothing while it is not known how much there is
    std::string text;            // "42 %, about 3 minutes left"
};

// Bytes and objects both count, since many small files take time too. Items are counted one after another
// (AddItem), before the first is deleted. Any thread.
class DeletionProgress {
  public:
    using Time = FileOperationPace::Time;

    // How much of the next item has been found so far.
    void Counting(const DeletionSize& soFar);
    // The next item has this size. Nothing: it is not known, and neither is the total from here on.
    void AddItem(const std::optional<DeletionSize>& size);
    // Everything is counted, and the first item is deleted next.
    void Start();

    void Overwritten(ULONGLONG bytes);
    void Deleted();
    // The next item is done with, whatever has become of it: from now on, what could not be deleted does not
    // count as left.
    void EndItem();

    // The deletion waits for its user; that time does not count. GoOn ends it.
    void Pause();
    void GoOn();

    // `now` never goes back. The time left changes every other second at most.
    DeletionState Look(Time now);

  private:
    std::string TimeLeft(Time now);

    std::mutex guard;
    std::vector<DeletionSize> ends;  // by item: the size of all up to it
    std::size_t endedItems = 0;
    DeletionSize counted;  // of `ends` and the item that is being counted
    FileOperationProgress progress;
    FileOperationPace pace;
    bool isCounting = true;
    bool isTotalKnown = true;
    bool isPaused = false;
    std::string timeLeft;  // as shown; empty: nothing is claimed
    std::optional<Time> timeLeftSince;
};

}  // namespace permora
